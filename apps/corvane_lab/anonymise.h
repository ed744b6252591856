#pragma once
#include <string>
#include <vector>

#include "record/recording.h"

namespace corvane::lab {

// The recording without the names and addresses in it: each network is "net-007" wherever it stood,
// each access point and adapter has another address, elements that no score reads are emptied. The
// order of names, "guest" in one, a number at its end, which addresses differ in the last byte
// alone, and what the adapters are (their drivers' words) stay as they were, for decisions may hang
// on them. One part, whatever there was before.
// Throws std::runtime_error as ReadRecording does.
std::string Anonymised(const std::vector<RecordingPart>& parts);

// Where six bytes in a row of a name or an address of the original stand in the other one, in
// words; empty when they do so nowhere.
std::string FindLeftover(const std::vector<Recording>& original,
                         const std::vector<Recording>& other);

}  // namespace corvane::lab
