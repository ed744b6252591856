#include "wlan/switch_rate.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(SwitchRate, FlappingIsThreeInAMinuteOrThreeActiveMinutes) {
  struct Case {
    std::vector<std::int32_t> minutes;  // newest first
    bool flapping;
  };
  const Case cases[] = {{{}, false},        {{2}, false},      {{3}, true},
                        {{2, 2}, false},    {{0, 3}, true},    {{1, 0, 1}, false},
                        {{1, 1, 1}, true},  {{0, 0, 3}, true}, {{2, 2, 0}, false},
                        {{0, 1, 2}, false}, {{0, 0, 0}, false}};
  for (const Case& one : cases) {
    EXPECT_EQ(ShowsFlapping(one.minutes), one.flapping) << testing::PrintToString(one.minutes);
  }
}

TEST(SwitchRate, MinutesEnterTheListWhenTheyAreOver) {
  using Step = SwitchRate::Step;
  SwitchRate rate;
  EXPECT_EQ(rate.CountAttempt(5000), Step::kInitPeriod);
  EXPECT_EQ(rate.CountAttempt(64999), Step::kSamePeriod);
  EXPECT_FALSE(rate.Roll(64999));
  EXPECT_EQ(rate.CountAttempt(65000), Step::kNewPeriod);
  EXPECT_EQ(rate.m_SwitchesPerMinList, (std::vector<std::int32_t>{2}));
  EXPECT_EQ(rate.m_SwitchAttempts, 1u);

  EXPECT_TRUE(rate.Roll(125000));  // that attempt's minute
  EXPECT_TRUE(rate.Roll(185000));  // a quiet one
  EXPECT_EQ(rate.m_SwitchesPerMinList, (std::vector<std::int32_t>{0, 1, 2}));
  EXPECT_TRUE(rate.Roll(245000));
  EXPECT_EQ(rate.m_SwitchesPerMinList, (std::vector<std::int32_t>{0, 0, 1}));
}

TEST(SwitchRate, RollBeforeTheFirstAttemptOnlyStartsThePeriod) {
  SwitchRate rate;
  EXPECT_FALSE(rate.Roll(1000));
  EXPECT_TRUE(rate.m_SwitchesPerMinList.empty());
  EXPECT_EQ(rate.CountAttempt(2000), SwitchRate::Step::kSamePeriod);
  EXPECT_TRUE(rate.Roll(61000));
  EXPECT_EQ(rate.m_SwitchesPerMinList, (std::vector<std::int32_t>{1}));
}

}  // namespace
}  // namespace corvane
