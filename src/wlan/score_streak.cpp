#include "wlan/score_streak.h"

namespace corvane {

ScoreStreak NextScoreStreak(std::uint32_t rises, std::int32_t rise) {
  constexpr std::uint32_t kRisesInARow = 2;
  constexpr std::int32_t kJump = 2;
  const std::uint32_t streak = rise >= 1 ? rises + 1 : 0;
  return {streak, streak >= kRisesInARow || rise >= kJump};
}

}  // namespace corvane
