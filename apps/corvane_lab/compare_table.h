#pragma once
#include <string>
#include <vector>

#include "corvane_lab/world_result.h"

namespace corvane::lab {

// One line for each policy over all worlds. Shares are means over the worlds, in percent; the other
// figures are sums.
struct PolicySum {
  PolicyResult sum;        // its shares are the means
  double worstRate = 0.0;  // the lowest share of the rate in any world
  std::string worstWorld;
  double movesPerHour = 0.0;
};
std::vector<PolicySum> SumUp(const std::vector<WorldResult>& results);

// The tables as text. `results` holds one world at least, all with the same policies.
std::string PolicyTable(const std::vector<WorldResult>& results);
// The share of the rate, by kind of world.
std::string KindTable(const std::vector<WorldResult>& results);
// The `count` worlds in which a policy has the lowest share, with the greatest cause where known.
std::string WorstTable(const std::vector<WorldResult>& results, const std::string& policy,
                       std::size_t count);
// What a policy misses, by cause, greatest first: points of the oracle's rate, mean over worlds.
std::string WhyTable(const std::vector<WorldResult>& results, const std::string& policy);
// What the service did that it must not, a line each; empty for nothing.
std::string TroubleText(const std::vector<WorldResult>& results);
// The sums as one JSON object.
std::string SumJson(const std::vector<WorldResult>& results);

}  // namespace corvane::lab
