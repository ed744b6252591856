#include "engine/engine_bits.h"

#include <span>

#include "foundation/format.h"

namespace corvane {

namespace {

struct BitName {
  std::uint32_t bit;
  const char16_t* name;
};

constexpr BitName kClassNames[] = {
    {adapter_class::kWired, u"wired"},
    {adapter_class::kWireless, u"wireless"},
    {adapter_class::kPrivateQueries, u"private-queries"},
    {adapter_class::kTunnel, u"tunnel"},
    {0x10, u"wired-1"},
    {0x20, u"wired-2"},
    {0x40, u"wired-3"},
    {0x80, u"wireless-2"},
    {0x100, u"wireless-1"},
    {0x200, u"5-gbit"},
    {adapter_class::kGenericWireless, u"generic-wireless"},
    {adapter_class::kWifiDirect, u"wifi-direct"},
    {0x1000, u"10-gbit"},
    {adapter_class::kNotManaged, u"not-managed"},
    {adapter_class::kManaged, u"managed"},
    {adapter_class::kOwnWired, u"own-wired"},
    {adapter_class::kPpp, u"ppp"},
    {adapter_class::kOwnGenericWireless, u"own-generic-wireless"},
    {adapter_class::kMobile, u"mobile"},
    {adapter_class::k11ad, u"802.11ad"},
    {adapter_class::kLogMeIn, u"logmein"},
    {0x400000, u"wired-5"},
    {0x800000, u"wired-5-variant"},
    {0x1000000, u"wired-4"},
    {adapter_class::kOwnGeneralWireless, u"own-wireless"},
    {adapter_class::kDriverTooOld, u"driver-too-old"},
};
constexpr BitName kStateNames[] = {
    {slot_state::kUp, u"up"},
    {slot_state::kDown, u"down"},
    {slot_state::kPpp, u"ppp"},
    {slot_state::kNotManaged, u"not-managed"},
};
constexpr BitName kNetworkNames[] = {
    {network_flag::kPublic, u"public"},
    {network_flag::kPrivate, u"private"},
    {network_flag::kDomain, u"domain"},
    {network_flag::kInternet, u"internet"},
};
constexpr BitName kChangeNames[] = {
    {change::kAddresses, u"addresses"}, {change::kDown, u"down"},       {change::kMoved, u"moved"},
    {change::kSpeed, u"speed"},         {change::kNetwork, u"network"},
};
constexpr BitName kEngineNames[] = {
    {engine_state::kNoDevice, u"no-device"},  {engine_state::kControlFailed, u"control-failed"},
    {engine_state::kHandshake, u"handshake"}, {engine_state::kDeviceHeld, u"device-held"},
    {engine_state::kDriverReady, u"ready"},   {engine_state::kRefused, u"refused"},
    {engine_state::kNotYet, u"not-yet"},
};

WString Words(std::uint32_t bits, std::span<const BitName> names) {
  WString words;
  const auto add = [&words](WStringView word) {
    if (!words.empty()) words += u' ';
    words += word;
  };
  for (const BitName& one : names) {
    if ((bits & one.bit) == 0) continue;
    add(one.name);
    bits &= ~one.bit;
  }
  if (bits != 0) add(Format(u"0x%x", bits));
  return words.empty() ? u"-" : words;
}

}  // namespace

WString ClassFlagWords(std::uint32_t flags) { return Words(flags, kClassNames); }
WString SlotStateWords(std::uint8_t state) { return Words(state, kStateNames); }
WString NetworkFlagWords(std::uint32_t flags) { return Words(flags, kNetworkNames); }
WString ChangeBitWords(std::uint32_t bits) { return Words(bits, kChangeNames); }
WString EngineStateWords(std::uint32_t state) { return Words(state, kEngineNames); }

}  // namespace corvane
