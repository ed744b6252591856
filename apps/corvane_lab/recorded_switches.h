#pragma once
#include <cstdint>
#include <utility>
#include <vector>

#include "record/recording.h"

namespace corvane::lab {

// When something came (true) and went, by what rounds saw of it: in the middle between the
// beginnings of the round that saw the one and of the next that saw the other.
using RecordedSwitches = std::vector<std::pair<std::uint64_t, bool>>;  // ms

RecordedSwitches VpnSwitches(const Recording& run);
RecordedSwitches WiredSwitches(const Recording& run);
RecordedSwitches AirplaneSwitches(const Recording& run);

}  // namespace corvane::lab
