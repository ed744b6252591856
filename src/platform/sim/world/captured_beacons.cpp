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
  if (const auto rssi = fields.Find("rssi_dbm"); rssi && !rssi->Value().IsNull()) {
    out.rssiDbm = rssi->Number(-120.0, 0.0);
  }
  if (const JsonNode frequency = fields.Need("freq_mhz"); !frequency.Value().IsNull()) {
    out.freqMhz = static_cast<ULONG>(frequency.Integer(2000, 7200));
  }
  return out;
}

}  // namespace corvane::platform::sim
