#pragma once
// Beacons and probe responses captured off the air, one JSON object a line.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

struct CapturedBeacon {
  std::string id;
  Mac bssid{};                   // all zero where the frame had none
  std::optional<ULONG> freqMhz;  // centre frequency; none when it is not known
  std::optional<double> rssiDbm;
  bool wild = false;                   // a reading was out of all range, and is left out
  std::vector<std::uint8_t> elements;  // as captured, without fixed fields and FCS
};

// Reads one line; members that it does not use may hold anything. Receivers report signals and
// frequencies that cannot be: such a reading counts as none. Throws WorldError, which names the
// place given, for a line that is not understood.
CapturedBeacon ReadCapturedBeacon(const std::string& line, const std::string& place);

// Calls visit(line, place) for each line that is not blank; the place is "file: line n".
template <class Visit>
void ForEachCapturedLine(const std::string& jsonlText, const std::string& fileName, Visit&& visit) {
  std::size_t number = 0;
  for (std::size_t from = 0; from < jsonlText.size();) {
    const std::size_t to = std::min(jsonlText.find('\n', from), jsonlText.size());
    const std::string line = jsonlText.substr(from, to - from);
    from = to + 1;
    ++number;
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;
    visit(line, fileName + ": line " + std::to_string(number));
  }
}

}  // namespace corvane::platform::sim
