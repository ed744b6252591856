#pragma once
#include "platform/sim/world/driver_part.h"
#include "platform/sim/world/world_json.h"

namespace corvane::platform::sim {

// The members of the load-balance driver, of a world or of an entry of its timeline.
void TakeDriver(JsonFields& fields, DriverPart* out);
DriverPart ReadDriver(const JsonNode& node);

}  // namespace corvane::platform::sim
