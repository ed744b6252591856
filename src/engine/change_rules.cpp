#include "engine/change_rules.h"

#include <cstring>

#include "engine/engine_bits.h"
#include "engine/gateway_slots.h"

namespace corvane {

namespace {

std::uint32_t Ip4Change(const LBSlotBefore& before, std::uint32_t old, const LBAddressBlock& now) {
  if (!now.onLinkLocal && now.ip4 == old) return before.status == 0 ? change::kAddresses : 0;
  if (!before.up || before.status == 0) return change::kAddresses;
  return before.IsSteered() ? change::kMoved | change::kAddresses : 0;
}

std::uint32_t Ip6Change(const LBSlotBefore& before, const LBAddressesBefore& old,
                        const LBAddressBlock& now) {
  if (IsZero(now.global)) {
    return before.IsSteered() && old.anyCounted && !IsZero(old.global)
               ? change::kMoved | change::kAddresses
               : 0;
  }
  if (before.up && std::memcmp(now.global, old.global, sizeof(LBIp6)) == 0) return 0;
  return (before.IsSteered() ? change::kMoved : 0) | change::kAddresses;
}

}  // namespace

LBAddressChange AddressChange(const LBSlotBefore& before, const LBAddressesBefore& old,
                              const LBAddressBlock& now) {
  if (!now.HasAny()) return {before.IsSteered() ? change::kMoved : 0, !before.up};
  const std::uint32_t ip4 = now.ip4 != 0 ? Ip4Change(before, old.ip4, now) : 0;
  return {ip4 | Ip6Change(before, old, now), false};
}

std::uint32_t NoGatewayChange(const LBSlotBefore& before, std::uint32_t bits) {
  return before.IsSteered() ? change::kMoved : bits;
}

std::uint32_t GatewayChange(const LBSlotBefore& before, std::uint8_t gateway, std::uint32_t bits) {
  if (!before.up || before.gateway == gateway) return bits;
  return bits | change::kAddresses | (before.gateway != kNoIndex ? change::kMoved : 0);
}

std::uint32_t DownChange(const LBSlotBefore& before, bool notManaged) {
  if (before.up) return before.gateway != kNoIndex ? change::kDown : 0;
  return before.status == 0 && !notManaged ? change::kDown : 0;
}

std::uint32_t NetworkChange(const LBWlanNetwork& before, const LBWlanNetwork& now) {
  std::uint32_t bits = 0;
  if (std::memcmp(before.ssid, now.ssid, now.ssidLength) != 0) {
    bits = change::kMoved;
  } else if (before.ssidLength != now.ssidLength) {
    bits = change::kMoved | change::kAddresses;
  }
  if (before.quality != now.quality) bits |= change::kSpeed;
  return bits;
}

bool BeginsAnew(const LBUpdateEnd& end) {
  return (end.bits & change::kMoved) != 0 && (end.slotState & slot_state::kNotManaged) == 0 &&
         (end.oldState & slot_state::kUp) != 0 && (end.entryState & slot_state::kUp) != 0;
}

}  // namespace corvane
