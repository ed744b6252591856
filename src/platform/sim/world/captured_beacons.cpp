#include "platform/sim/world/captured_beacons.h"

#include "platform/sim/world/world_json.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

CapturedBeacon ReadCapturedBeacon(const std::string& line, const std::string& place) {
  const JsonText text(line, place);
  JsonFields fields{JsonNode(text)};
  CapturedBeacon out;
  if (const auto id = fields.Find("id")) out.id = id->Text();
  out.bssid = fields.Need("bssid").MacAddress();
  const JsonNode hex = fields.Need("ie_hex");
  std::string bytes;
  if (!ReadHex(hex.Text(), &bytes)) hex.Fail("wants pairs of hexadecimal digits");
  out.elements.assign(bytes.begin(), bytes.end());
  const auto reading = [&out](const JsonNode& node, double least, double most) {
    std::optional<double> value;
    if (node.Value().IsNull()) return value;
    if (!node.Value().IsNumber()) node.Fail("wants a number or null");
    const double number = node.Value().GetDouble();
    (number >= least && number <= most) ? void(value = number) : void(out.wild = true);
    return value;
  };
  if (const auto rssi = fields.Find("rssi_dbm")) out.rssiDbm = reading(*rssi, -120.0, 0.0);
  if (const auto mhz = reading(fields.Need("freq_mhz"), 2000.0, 7200.0)) {
    out.freqMhz = static_cast<ULONG>(*mhz);
  }
  return out;
}

}  // namespace corvane::platform::sim
