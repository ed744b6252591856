#pragma once
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

}  // namespace corvane::lab
