#pragma once
#include <string>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// What decides whether a connect can succeed, apart from the radio. Pure.

// Whether both sides mean the same kind of security.
bool Agree(const Security& ours, const Security& theirs);
// An access point without a key of its own takes any.
bool KeyFits(const Security& ours, const Security& theirs);
// The reason for which the system's filters forbid the SSID, 0 for none: a deny list forbids what
// is on it; a permit list, where there is one, what is not.
DWORD FilterReason(const std::vector<Filter>& filters, const std::string& ssid);

}  // namespace corvane::platform::sim
