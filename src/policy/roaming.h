#pragma once
#include "policy/roaming_rules.h"
#include "policy/round.h"

namespace corvane {

// The roam test of a round's connection for an entry of the adapter's model.
bool IsRoam(const Round& round, const CWlanBssEntry& target);

}  // namespace corvane
