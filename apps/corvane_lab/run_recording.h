#pragma once
#include <string>
#include <vector>

#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/world.h"
#include "record/recording.h"

namespace corvane::lab {

// What the service of a run records of it, taken out of the simulated PC.

// The service records from its start on; up to as many million bytes.
void SetRecording(platform::sim::World* world, unsigned megabytes);
// Its files, the older one first; none when there is no recording.
std::vector<RecordingPart> RecordingOf(platform::sim::SimulatedPc& pc);
// What is wrong with it, if the program were killed at this moment: too large or, with `read`, not
// to be read. Empty when all is well.
std::string RecordingTrouble(platform::sim::SimulatedPc& pc, unsigned megabytes, bool read);

}  // namespace corvane::lab
