// A world out of captured beacons, one JSON object a line.

#include <algorithm>
#include <optional>

#include "platform/sim/element_facts.h"
#include "platform/sim/world_json.h"
#include "platform/sim/world_loader.h"
#include "platform/sim/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr double kUnknownDbm = -60.0;

// Nothing for a line whose frequency is not known. Members that only a reader wants are passed
// over.
std::optional<AccessPoint> ReadLine(const std::string& line, const std::string& place) {
  const JsonText text(line, place);
  JsonFields fields{JsonNode(text)};
  AccessPoint out;
  out.bssid = fields.Need("bssid").MacAddress();
  const JsonNode hex = fields.Need("ie_hex");
  std::string bytes;
  if (!ReadHex(hex.Text(), &bytes)) hex.Fail("wants pairs of hexadecimal digits");
  double dbm = kUnknownDbm;
  if (const auto rssi = fields.Find("rssi_dbm"); rssi && !rssi->Value().IsNull())
    dbm = rssi->Number(-120.0, 0.0);
  const JsonNode frequency = fields.Need("freq_mhz");
  if (frequency.Value().IsNull()) return std::nullopt;

  out.frequencyMhz = static_cast<ULONG>(frequency.Integer(2000, 7200));
  out.elements.assign(bytes.begin(), bytes.end());
  out.ssid = SsidOf(out.elements);
  out.phy = PhyOf(out.elements, out.frequencyMhz);
  out.security = SecurityOf(out.elements);
  constexpr WORD kEss = 0x0001, kPrivacy = 0x0010;
  out.capability = static_cast<WORD>(kEss | (out.security.Enabled() ? kPrivacy : 0));
  out.track = {{0, dbm}};
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

World WorldFromAir(const std::string& jsonlText, const std::string& fileName) {
  World world;
  world.name = fileName;
  world.adapters.push_back(ListeningAdapter());
  std::size_t number = 0;
  for (std::size_t from = 0; from < jsonlText.size();) {
    const std::size_t to = std::min(jsonlText.find('\n', from), jsonlText.size());
    const std::string line = jsonlText.substr(from, to - from);
    from = to + 1;
    ++number;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const auto heard = ReadLine(line, fileName + ": line " + std::to_string(number));
    if (!heard) continue;
    const auto earlier =
        std::find_if(world.accessPoints.begin(), world.accessPoints.end(),
                     [&](const AccessPoint& known) { return known.bssid == heard->bssid; });
    if (earlier == world.accessPoints.end()) {
      world.accessPoints.push_back(*heard);
    } else {
      *earlier = *heard;
    }
  }
  return world;
}

}  // namespace corvane::platform::sim
