#pragma once
#include <string>

#include "platform/sim/world/world.h"
#include "record/recording.h"

namespace corvane::lab {

// The world that a recording tells of. Each access point is heard as it was, with gaps where it was
// not, and sends the elements that it sent; the network list, the settings, the traffic, VPN and
// mains are what they were, clients send their orders again, and what somebody else connected is
// connected again. What the service itself did is left out: it decides anew.
platform::sim::World WorldOfRecording(const Recording& run);

// The recording in a file: the run in it that lasts longest. Of "air.jsonl", what came before it
// ("air.1.jsonl" beside it) is read first. Throws std::runtime_error with file and line.
Recording LoadRecording(const std::string& file);

}  // namespace corvane::lab
