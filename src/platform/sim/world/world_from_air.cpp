// A world out of captured beacons, one JSON object a line.

#include <algorithm>

#include "platform/sim/world/captured_beacons.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/world_loader.h"

namespace corvane::platform::sim {

namespace {

constexpr double kUnknownDbm = -60.0;

AccessPoint AccessPointOf(const CapturedBeacon& heard) {
  AccessPoint out;
  out.bssid = heard.bssid;
  out.frequencyMhz = *heard.freqMhz;
  out.elements = heard.elements;
  out.ssid = SsidOf(out.elements);
  out.phy = PhyOf(out.elements, out.frequencyMhz);
  out.security = SecurityOf(out.elements);
  constexpr WORD kEss = 0x0001, kPrivacy = 0x0010;
  out.capability = static_cast<WORD>(kEss | (out.security.Enabled() ? kPrivacy : 0));
  out.track = {{0, heard.rssiDbm.value_or(kUnknownDbm)}};
  return out;
}

Adapter ListeningAdapter() {
  Adapter adapter;
  adapter.guid = GUID{0x7E1D0000, 0x0000, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 1}};
  adapter.description = u"Vantor Wi-Fi 6 AX100";
  adapter.connectionName = u"Wi-Fi";
  adapter.mac = {0x02, 0xAD, 0, 0, 0, 1};
  adapter.ifIndex = 10;
  adapter.phys = {dot11_phy_type_hrdsss, dot11_phy_type_ofdm, dot11_phy_type_erp,
                  dot11_phy_type_ht,     dot11_phy_type_vht,  dot11_phy_type_he};
  adapter.bands = {2, 5, 6};
  adapter.sensitivityDbm = -120;
  return adapter;
}

}  // namespace

World WorldFromAir(const std::string& jsonlText, const std::string& fileName, AirCount* count) {
  AirCount unused;
  AirCount& counted = count ? *count : unused;
  World world;
  world.name = fileName;
  world.adapters.push_back(ListeningAdapter());
  ForEachCapturedLine(jsonlText, fileName, [&](const std::string& line, const std::string& place) {
    const CapturedBeacon heard = ReadCapturedBeacon(line, place);
    ++counted.lines;
    if (heard.wild) ++counted.wild;
    if (!heard.freqMhz) ++counted.noFrequency;
    if (heard.bssid == Mac{}) ++counted.noBssid;
    if (!heard.freqMhz || heard.bssid == Mac{}) return;
    const auto earlier =
        std::find_if(world.accessPoints.begin(), world.accessPoints.end(),
                     [&](const AccessPoint& known) { return known.bssid == heard.bssid; });
    if (earlier == world.accessPoints.end()) {
      world.accessPoints.push_back(AccessPointOf(heard));
    } else {
      *earlier = AccessPointOf(heard);
    }
  });
  return world;
}

}  // namespace corvane::platform::sim
