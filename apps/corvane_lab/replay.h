#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "platform/sim/world/world.h"
#include "record/recording.h"

namespace corvane::lab {

// A round that decided otherwise than the recorded one, and what about its inputs was different.
struct ReplayDifference {
  std::uint64_t ms = 0;  // when the recorded round ended
  int adapter = 0;
  std::string recorded, replayed, why;
};

struct ReplayResult {
  std::uint64_t rounds = 0, roundsSame = 0;  // recorded ones that the replay has one beside
  std::uint64_t unmatched = 0;               // and those that it has not
  // Of access points that both rounds weighed.
  std::uint64_t scores = 0, scoresSame = 0;
  std::vector<ReplayDifference> differences;  // of the decisions
};

// Whether two recordings are decided upon alike, whatever their access points are called: how many
// rounds and scores were held against each other, and the first that is unlike, in words.
struct SameRounds {
  std::uint64_t rounds = 0, scores = 0;
  std::string unlike;
};
SameRounds CompareReplays(const Recording& one, const Recording& other);

// Runs the service over the world that was made of a recording, and holds each recorded round
// against the one of the replay that ended nearest to it, within half a round (5 s). The decisions
// are the same when one of those within that time decided so: how long a scan or a connect takes is
// not recorded.
ReplayResult Replay(const Recording& run, const platform::sim::World& world, std::uint64_t seed);

}  // namespace corvane::lab
