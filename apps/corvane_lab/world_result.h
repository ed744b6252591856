#pragma once
#include <array>
#include <map>
#include <string>
#include <vector>

#include "corvane_lab/compare_why.h"
#include "corvane_lab/policy_run.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

// What one policy came to in one world.
struct PolicyResult {
  std::string name;
  std::array<double, 3> share{};  // percent of the oracle's worth, by Measure
  double phaseShare = 100.0;      // percent of the oracle's rate in phases of traffic
  double disconnectedSeconds = 0.0;
  int moves = 0, pingPongs = 0, movesInPhases = 0, scans = 0, scansInPhases = 0;
  std::string trouble;
  std::map<std::string, Loss> why;  // of the service, where that is asked for
};

struct WorldResult {
  std::string world, kind;             // "flat-2", "flat"
  std::size_t seconds = 0;             // of its story, times its adapters
  int phases = 0;                      // of traffic
  std::vector<PolicyResult> policies;  // the oracle first
};

struct ComparePlan {
  std::vector<ServiceProfile> profiles;
  bool peers = true, why = false;
  std::uint64_t seed = 1;
};

WorldResult CompareOn(const platform::sim::World& world, std::size_t seconds,
                      const ComparePlan& plan);

// One JSON object, and back. Throws std::runtime_error for a text that is none.
std::string ToJson(const WorldResult& result);
WorldResult WorldResultOf(const std::string& json);

}  // namespace corvane::lab
