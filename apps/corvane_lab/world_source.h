#pragma once
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

// The world that a command is to work on: a world file, or captured beacons with `--air`; with
// `--mode` its adapters act in that mode. Throws UsageError, and std::runtime_error for a file that
// cannot be read, with file and place.
platform::sim::World WorldOf(const Arguments& arguments);

// Every adapter acts in this mode ("autoswitch", "event", "popup") from its first seconds on,
// whatever the world says of it.
void SetMode(platform::sim::World* world, const std::string& mode);

}  // namespace corvane::lab
