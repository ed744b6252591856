#pragma once
#include <cstdint>

namespace corvane {

// Whether the score of the connected access point is on the rise. Pure.
struct ScoreStreak {
  std::uint32_t rises = 0;  // in a row, the newest report included
  bool improving = false;   // one jump of two points, or two rises in a row
};
// `rise` is the newest score less the one reported before it, `rises` the streak so far.
ScoreStreak NextScoreStreak(std::uint32_t rises, std::int32_t rise);

}  // namespace corvane
