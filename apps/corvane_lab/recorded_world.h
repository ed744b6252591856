#pragma once
#include <string>
#include <vector>

#include "platform/sim/world/world.h"
#include "record/recording.h"

namespace corvane::lab {

// The world that a recording tells of. Each access point is heard as it was, with gaps where it was
// not, and sends the elements that it sent; the network list, the settings, the traffic, VPN and
// mains are what they were, clients send their orders again. What the service itself did is left
// out: it decides anew.
enum class RecordedOthers {
  kAsRecorded,   // what somebody else connected is connected again, at its time
  kAsTheyWould,  // the system connects the adapters by itself, when they have no connection
};
platform::sim::World WorldOfRecording(const Recording& run,
                                      RecordedOthers others = RecordedOthers::kAsRecorded);

// The files of a recording, oldest first: of "air.jsonl" also what came before it, "air.1.jsonl"
// beside it. Throws std::runtime_error with the file and the reason.
std::vector<RecordingPart> RecordingParts(const std::string& file);
// The run that lasts longest.
const Recording& LongestOf(const std::vector<Recording>& runs);
// That run of the recording in a file. Throws std::runtime_error with file and line.
Recording LoadRecording(const std::string& file);

}  // namespace corvane::lab
