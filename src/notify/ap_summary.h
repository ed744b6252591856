#pragma once
// The texts by which notifications and suggestions tell of an access point. Pure.

#include <cstdint>
#include <optional>

#include "foundation/text.h"

namespace corvane {

// Each UTF-16 unit as "\uXXXX", so that any SSID stands unharmed in a JSON string.
WString EscapeForJson(WStringView text);

// What the scan table knows of an access point beyond its connection.
struct ApSummaryDetails {
  std::uint32_t frequencyKHz = 0;  // centre
  std::int32_t rssi = 0;           // dBm
  bool muMimo = false;
  WString channelWidth;
  WString standard;         // class text such as "802.11ac"; "802.11" and "11" add no letters
  std::int32_t qLoad = -1;  // below 0: unknown
  std::uint32_t stationCount = 65535;  // 65535 and more: unknown
  std::uint32_t maxRateMbps = 0;
};

struct ApSummary {
  std::int32_t score = -1;
  WString bssid;  // text
  std::uint32_t quality = 0;
  std::uint32_t channel = 0;
  std::uint32_t txKbps = 0;
  std::uint32_t rxKbps = 0;
  WString ssid;                             // as it is; the texts escape it
  std::optional<ApSummaryDetails> details;  // nothing: not in the scan table
};

// "Score S, BSSID, SQ Q, Channel C, Max datarate R mbps, SSID"; the rate is "unknown" without
// details.
WString ShortApSummary(const ApSummary& ap);
// The same with link rates, band, RSSI and the rest.
WString LongApSummary(const ApSummary& ap);

}  // namespace corvane
