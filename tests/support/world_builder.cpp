#include "support/world_builder.h"

#include <algorithm>

#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_profile.h"
#include "platform/sim/world/world_text.h"

namespace corvane::test {

using namespace platform;

namespace {

constexpr char16_t kKey[] = u"secret";

}  // namespace

sim::Mac ApBssid(int number) {
  return {0x02, 0x50, 0, 0, static_cast<BYTE>(number >> 8), static_cast<BYTE>(number)};
}

WorldBuilder::WorldBuilder() { m_World.shadowingDb = 0.0; }

WorldBuilder& WorldBuilder::Adapter(std::u16string description) {
  const auto number = static_cast<BYTE>(m_World.adapters.size() + 1);
  sim::Adapter adapter;
  adapter.guid = GUID{0xADA90000, 0, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, number}};
  adapter.description = std::move(description);
  adapter.connectionName = u"Wi-Fi " + std::u16string(1, static_cast<char16_t>(u'0' + number));
  adapter.mac = {0x02, 0xAD, 0, 0, 0, number};
  adapter.ifIndex = 10u + number;
  adapter.phys = {dot11_phy_type_ofdm, dot11_phy_type_erp, dot11_phy_type_ht, dot11_phy_type_vht,
                  dot11_phy_type_he};
  m_World.adapters.push_back(std::move(adapter));
  return *this;
}

WorldBuilder& WorldBuilder::Ap(const Beacon& beacon, int number, double dbm) {
  sim::AccessPoint ap;
  ap.bssid = ApBssid(number);
  ap.elements = beacon.Bytes();
  ap.ssid = sim::SsidOf(ap.elements);
  ap.frequencyMhz = beacon.FrequencyMhz();
  ap.phy = sim::PhyOf(ap.elements, ap.frequencyMhz);
  ap.security = sim::SecurityOf(ap.elements);
  if (ap.security.Enabled()) {
    constexpr WORD kPrivacy = 0x0010;
    ap.capability |= kPrivacy;
    ap.security.key = kKey;
  }
  ap.track = {{0, dbm}};
  m_World.accessPoints.push_back(std::move(ap));
  return *this;
}

WorldBuilder& WorldBuilder::Signal(std::vector<sim::SignalPoint> track) {
  m_World.accessPoints.back().track = std::move(track);
  return *this;
}

WorldBuilder& WorldBuilder::Hidden() {
  m_World.accessPoints.back().hidden = true;
  return *this;
}

WorldBuilder& WorldBuilder::Profile(const std::string& ssid, bool autoConnect, bool nonBroadcast) {
  const auto found = std::find_if(m_World.accessPoints.begin(), m_World.accessPoints.end(),
                                  [&](const sim::AccessPoint& ap) { return ap.ssid == ssid; });
  sim::Profile profile;
  profile.ssid = ssid;
  profile.name = sim::FromUtf8(ssid);
  profile.autoConnect = autoConnect;
  profile.nonBroadcast = nonBroadcast;
  if (found != m_World.accessPoints.end()) profile.security = found->security;
  profile.xml = sim::ProfileXml(profile);
  m_World.profiles.push_back(std::move(profile));
  return *this;
}

WorldBuilder& WorldBuilder::Network(const std::string& ssid, LONG category, bool internet) {
  constexpr DWORD kIpv4Internet = 0x40, kIpv4LocalNetwork = 0x20;
  sim::Network network;
  network.name = network.description = sim::FromUtf8(ssid);
  network.ssid = ssid;
  network.category = category;
  network.internet = internet;
  network.connectivity = internet ? kIpv4Internet : kIpv4LocalNetwork;
  m_World.networks.push_back(std::move(network));
  return *this;
}

WorldBuilder& WorldBuilder::Connected(int number) {
  m_World.adapters.back().connectedTo = ApBssid(number);
  return *this;
}

WorldBuilder& WorldBuilder::Traffic(std::uint64_t fromMs, std::uint64_t toMs, double inMbps,
                                    int adapter) {
  m_World.traffic.push_back({.adapter = adapter, .span = {fromMs, toMs}, .inMbps = inMbps});
  return *this;
}

WorldBuilder& WorldBuilder::At(std::uint64_t ms, const std::string& action) {
  m_World.timeline.push_back(sim::ParseAction(action, m_World));
  m_World.timeline.back().atMs = ms;
  std::ranges::stable_sort(m_World.timeline, {}, &sim::Action::atMs);
  return *this;
}

WorldBuilder& WorldBuilder::AutoSwitch(int scanIntervalSecs, int adapter) {
  constexpr std::uint64_t kAfterStartMs = 8'000;  // the start puts the defaults there
  const std::string head =
      R"({"do": "registry", "adapter": )" + std::to_string(adapter) + R"(, "name": ")";
  At(kAfterStartMs, head + R"(PassiveSuggestMode", "dword": 0})");
  return At(kAfterStartMs,
            head + R"(ScanInterval", "dword": )" + std::to_string(scanIntervalSecs) + "}");
}

}  // namespace corvane::test
