#pragma once
#include <string_view>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// By which rules the service decides: "classic" or "balanced".
bool IsPolicyProfile(std::string_view name);
// Sets them in the world's registry, in the place of what it says of them. The name is one of both.
void SetPolicyProfile(World* world, std::string_view name);

}  // namespace corvane::platform::sim
