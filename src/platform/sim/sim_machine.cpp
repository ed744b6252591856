#include "platform/sim/sim_machine.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "platform/sim/beacon_builder.h"
#include "platform/sim/radio_model.h"

namespace corvane::platform::sim {

namespace {

// Adapters without an interface index of their own get the free ones from here on.
constexpr DWORD kFirstIfIndex = 4;

void NumberInterfaces(World* world) {
  std::vector<DWORD> taken;
  for (const Adapter& adapter : world->adapters) taken.push_back(adapter.ifIndex);
  for (const OtherAdapter& adapter : world->otherAdapters) taken.push_back(adapter.ifIndex);
  DWORD next = kFirstIfIndex;
  const auto number = [&](DWORD* ifIndex) {
    if (*ifIndex != 0) return;
    while (std::ranges::find(taken, next) != taken.end()) ++next;
    *ifIndex = next++;
  };
  for (Adapter& adapter : world->adapters) number(&adapter.ifIndex);
  for (OtherAdapter& adapter : world->otherAdapters) number(&adapter.ifIndex);
}

}  // namespace

SimMachine::SimMachine(const World& start, std::uint64_t theSeed, SimDeviceLoop& theLoop)
    : loop(theLoop), seed(theSeed), world(start), m_Sent(start.accessPoints.size()) {
  NumberInterfaces(&world);
  for (std::size_t i = 0; i < m_Sent.size(); ++i) Renew(i);
}

Point SimMachine::Position() const { return PositionAt(world.path, loop.NowMs()); }

std::optional<double> SimMachine::SignalFor(const Adapter& adapter, std::size_t accessPoint) const {
  const AccessPoint& ap = world.accessPoints[accessPoint];
  const std::uint64_t now = loop.NowMs();
  if (!IsAlive(ap, now)) return std::nullopt;
  if (std::ranges::find(adapter.bands, BandOf(ap.frequencyMhz)) == adapter.bands.end()) {
    return std::nullopt;
  }
  const std::optional<double>& fixed = m_Sent[accessPoint].fixedDbm;
  const double dbm = fixed ? *fixed : SignalDbm(world, ap, Position(), now, seed);
  if (dbm < adapter.sensitivityDbm) return std::nullopt;
  return dbm;
}

void SimMachine::FixSignal(std::size_t accessPoint, std::optional<double> dbm) {
  m_Sent[accessPoint].fixedDbm = dbm;
}

const SimMachine::Elements& SimMachine::ElementsOf(std::size_t accessPoint, bool named) const {
  return named ? m_Sent[accessPoint].named : m_Sent[accessPoint].nameless;
}

void SimMachine::SetLoad(std::size_t accessPoint, int stations, int utilisation) {
  SetQbssLoad(&world.accessPoints[accessPoint].elements, stations, utilisation);
  Renew(accessPoint);
}

void SimMachine::Renew(std::size_t accessPoint) {
  const AccessPoint& ap = world.accessPoints[accessPoint];
  Sent& sent = m_Sent[accessPoint];
  sent.named = std::make_shared<const std::vector<BYTE>>(ap.elements);
  sent.nameless = ap.hidden ? std::make_shared<const std::vector<BYTE>>(CarryNoSsid(ap.elements))
                            : sent.named;
}

std::optional<std::size_t> SimMachine::FindAccessPoint(const Mac& bssid) const {
  for (std::size_t i = 0; i < world.accessPoints.size(); ++i) {
    if (world.accessPoints[i].bssid == bssid) return i;
  }
  return std::nullopt;
}

std::size_t SimMachine::NetworkOf(std::size_t accessPoint) {
  const AccessPoint& ap = world.accessPoints[accessPoint];
  if (ap.network >= 0) return static_cast<std::size_t>(ap.network);
  for (std::size_t i = 0; i < world.networks.size(); ++i) {
    if (world.networks[i].ssid == ap.ssid) return i;
  }
  Network network;
  network.ssid = ap.ssid;
  network.name = network.description = SsidText(ap.ssid);
  world.networks.push_back(std::move(network));
  return world.networks.size() - 1;
}

std::u16string SsidText(std::string_view ssid) {
  std::u16string text;
  for (std::size_t i = 0; i < ssid.size();) {
    const auto lead = static_cast<unsigned char>(ssid[i]);
    const std::size_t extra = lead < 0xC2 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF5 ? 3 : 0;
    std::uint32_t code = extra == 0 ? lead : lead & (0x3Fu >> extra);
    std::size_t used = 0;
    while (used < extra && i + used + 1 < ssid.size() &&
           (static_cast<unsigned char>(ssid[i + used + 1]) & 0xC0) == 0x80) {
      ++used;
      code = code << 6 | (static_cast<unsigned char>(ssid[i + used]) & 0x3Fu);
    }
    const bool whole = used == extra;
    if (!whole) code = lead;
    if (code >= 0x10000) {
      text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
      text += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    } else {
      text += static_cast<char16_t>(code);
    }
    i += whole ? extra + 1 : 1;
  }
  return text;
}

DOT11_SSID ToDot11(std::string_view ssid) {
  DOT11_SSID out;
  out.uSSIDLength = static_cast<ULONG>(std::min(ssid.size(), sizeof out.ucSSID));
  std::memcpy(out.ucSSID, ssid.data(), out.uSSIDLength);
  return out;
}

std::string FromDot11(const DOT11_SSID& ssid) {
  const std::size_t length = std::min<std::size_t>(ssid.uSSIDLength, sizeof ssid.ucSSID);
  return std::string(reinterpret_cast<const char*>(ssid.ucSSID), length);
}

std::string MacText(const Mac& mac) {
  char text[18];
  std::snprintf(text, sizeof text, "%02x-%02x-%02x-%02x-%02x-%02x", mac[0], mac[1], mac[2], mac[3],
                mac[4], mac[5]);
  return text;
}

std::u16string GuidText(const GUID& guid) {
  char text[39];
  std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1,
                guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3],
                guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
  return std::u16string(text, text + std::strlen(text));
}

void CopyText(std::u16string_view text, char16_t* out, std::size_t chars) {
  const std::size_t length = std::min(text.size(), chars - 1);
  std::copy_n(text.data(), length, out);
  out[length] = 0;
}

}  // namespace corvane::platform::sim
