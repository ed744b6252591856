#pragma once
// Beacons and probe responses captured off the air, one JSON object a line.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::platform::sim {

struct CapturedBeacon {
  std::string id;
  std::string bssid;                     // "aa-bb-cc-dd-ee-ff"
  std::optional<std::uint32_t> freqMhz;  // centre frequency; none when it is not known
  std::optional<int> rssiDbm;
  std::vector<std::uint8_t> elements;  // as captured, without fixed fields and FCS
};

// Reads one line. Throws std::invalid_argument with the reason for a line that is not understood;
// members that it does not use may hold anything.
CapturedBeacon ParseCapturedBeacon(std::string_view line);

}  // namespace corvane::platform::sim
