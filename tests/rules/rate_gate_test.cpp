#include "rules/rate_gate.h"

#include <gtest/gtest.h>

#include "wlan/score_streak.h"

namespace corvane {
namespace {

constexpr RateGates kStart{0.06, 0.04};

TEST(RateGate, IsLearnedOnlyInsideItsSpanAndAboveSixtyPercent) {
  const TrickleMeasure noisy{31.0, 61.0, 0.05, 0.05};
  const auto learns = [&](double age, double percent) {
    TrickleMeasure measure = noisy;
    measure.ageSecs = age, measure.percentAboveLow = percent;
    return LearnRateGates(measure, kStart, kStart).learned.has_value();
  };
  EXPECT_FALSE(learns(30.0, 61.0));
  EXPECT_TRUE(learns(30.001, 61.0));
  EXPECT_TRUE(learns(85.0, 61.0));
  EXPECT_FALSE(learns(85.001, 61.0));
  EXPECT_FALSE(learns(31.0, 60.0));
}

TEST(RateGate, GrowsWithTheMeanUpToItsLimits) {
  struct Case {
    double mean, high, low;
  };
  for (const Case& c :
       {Case{0.05, 0.08, 0.06},                               // low + 0.03 is cut at 0.08
        Case{0.04, 0.078, 0.048}, Case{0.09, 0.08, 0.07}}) {  // both at their limits
    const auto learned = LearnRateGates({40.0, 80.0, c.mean, 0.05}, kStart, kStart).learned;
    ASSERT_TRUE(learned) << c.mean;
    EXPECT_NEAR(learned->high, c.high, 1e-12) << c.mean;
    EXPECT_NEAR(learned->low, c.low, 1e-12) << c.mean;
  }
  // Neither gate would rise: nothing is stored.
  EXPECT_FALSE(LearnRateGates({40.0, 80.0, 0.02, 0.05}, kStart, kStart).learned);
  EXPECT_FALSE(LearnRateGates({40.0, 80.0, 0.09, 0.05}, {0.08, 0.07}, kStart).learned);
}

TEST(RateGate, SettlesOnAQuietConnectionThatLearnedNothing) {
  const TrickleMeasure quiet{35.001, 10.0, 0.02, 0.04};
  EXPECT_TRUE(LearnRateGates(quiet, kStart, kStart).settled);
  TrickleMeasure early = quiet, late = quiet, busy = quiet, noisy = quiet;
  early.ageSecs = 35.0;
  late.ageSecs = 85.001;
  busy.rate = 0.0401;
  noisy.percentAboveLow = 61.0, noisy.mean = 0.05;  // learns in the same poll
  EXPECT_FALSE(LearnRateGates(early, kStart, kStart).settled);
  EXPECT_FALSE(LearnRateGates(late, kStart, kStart).settled);
  EXPECT_FALSE(LearnRateGates(busy, kStart, kStart).settled);
  EXPECT_FALSE(LearnRateGates(noisy, kStart, kStart).settled);
  EXPECT_FALSE(LearnRateGates(quiet, {0.07, 0.05}, kStart).settled);
}

TEST(ScoreStreak, OneJumpOfTwoOrTwoRisesInARowCountAsImproving) {
  const auto fires = [](std::initializer_list<std::int32_t> scores) {
    std::uint32_t rises = 0;
    const std::int32_t* last = nullptr;
    bool improving = false;
    for (const std::int32_t& score : scores) {
      if (last) {
        const ScoreStreak next = NextScoreStreak(rises, score - *last);
        rises = next.rises;
        improving = next.improving;
      }
      last = &score;
    }
    return improving;  // after the last score
  };
  EXPECT_TRUE(fires({50, 51, 52}));
  EXPECT_FALSE(fires({50, 51}));
  EXPECT_TRUE(fires({50, 52}));
  EXPECT_FALSE(fires({50, 51, 51, 52}));
  EXPECT_FALSE(fires({50, 51, 40, 41}));
}

}  // namespace
}  // namespace corvane
