#include "platform/sim/devices/sim_machine.h"

#include <algorithm>
#include <cstring>

#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_text.h"

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
  return HeardDbm(world, adapter, world.accessPoints[accessPoint], m_Sent[accessPoint].fixedDbm,
                  Position(), loop.NowMs(), seed);
}

void SimMachine::FixSignal(std::size_t accessPoint, std::optional<double> dbm) {
  m_Sent[accessPoint].fixedDbm = dbm;
}

const SimMachine::Elements& SimMachine::ElementsOf(std::size_t accessPoint, bool named) const {
  if (const Elements* sent = SentAt(world.accessPoints[accessPoint], loop.NowMs())) return *sent;
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
  sent.nameless =
      ap.hidden ? std::make_shared<const std::vector<BYTE>>(CarryNoSsid(ap.elements)) : sent.named;
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
  network.name = network.description = FromUtf8(ap.ssid);
  world.networks.push_back(std::move(network));
  return world.networks.size() - 1;
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

void CopyText(std::u16string_view text, char16_t* out, std::size_t chars) {
  const std::size_t length = std::min(text.size(), chars - 1);
  std::copy_n(text.data(), length, out);
  out[length] = 0;
}

}  // namespace corvane::platform::sim
