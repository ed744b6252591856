#include "rules/choice_rules.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(RedNetworks, TwoOfThemAskForScansUnlessSomeAreAskedForAlready) {
  EXPECT_EQ(JudgeRedNetworks(1, 0), RedNetworks::kFew);
  EXPECT_EQ(JudgeRedNetworks(2, 0), RedNetworks::kForceScans);
  EXPECT_EQ(JudgeRedNetworks(2, 1), RedNetworks::kAlreadyForced);
}

TEST(ScoreReport, IsDueAfterTheSleepAndNeverBeforeTenSeconds) {
  EXPECT_FALSE(IsScoreReportDue(109'999, 100'000, 1000));
  EXPECT_TRUE(IsScoreReportDue(110'000, 100'000, 1000));
  EXPECT_FALSE(IsScoreReportDue(129'999, 100'000, 30'000));
  EXPECT_TRUE(IsScoreReportDue(130'000, 100'000, 30'000));
}

TEST(StaleRound, NeedsEveryCondition) {
  EXPECT_TRUE(IsStale({false, true, true, true}));
  EXPECT_FALSE(IsStale({true, true, true, true}));
  EXPECT_FALSE(IsStale({false, false, true, true}));
  EXPECT_FALSE(IsStale({false, true, false, true}));
  EXPECT_FALSE(IsStale({false, true, true, false}));
}

TEST(StaleRound, LooksForFasterScansOnlyAboveThirtySeconds) {
  EXPECT_EQ(ActOnStaleRound(true, 300), StaleAction::kDecide);
  EXPECT_EQ(ActOnStaleRound(false, 30), StaleAction::kSkip);
  EXPECT_EQ(ActOnStaleRound(false, 31), StaleAction::kFastScan);
}

TEST(Emergency, FiresOnlyArmedWeakAndWithoutScansUnderWay) {
  const EmergencyInputs weak{true, false, true, true, 0};
  EXPECT_EQ(JudgeEmergency(weak), Emergency::kForceScans);
  auto in = weak;
  in.forcedScans = 1;
  EXPECT_EQ(JudgeEmergency(in), Emergency::kAlreadyForced);
  in = weak, in.connected = false;
  EXPECT_EQ(JudgeEmergency(in), Emergency::kNone);
  in = weak, in.goodQuality = true;
  EXPECT_EQ(JudgeEmergency(in), Emergency::kNone);
  in = weak, in.enabled = false;
  EXPECT_EQ(JudgeEmergency(in), Emergency::kNone);
  in = weak, in.armed = false;
  EXPECT_EQ(JudgeEmergency(in), Emergency::kNone);
}

TEST(LastSuggestion, StandsOnlyAtItsPlace) {
  const WString same = u"02-00-00-00-00-01", other = u"02-00-00-00-00-02";
  EXPECT_EQ(CheckSuggestion(-1, nullptr, same), SuggestionCheck::kNone);
  EXPECT_EQ(CheckSuggestion(0, &same, same), SuggestionCheck::kStands);
  EXPECT_EQ(CheckSuggestion(0, &other, same), SuggestionCheck::kDisplaced);
  EXPECT_EQ(CheckSuggestion(3, nullptr, same), SuggestionCheck::kGone);
}

TEST(DenyDeferral, WaitsUpToItsTickAndIsOverBehindIt) {
  EXPECT_EQ(JudgeDenyDeferral(0, 500), DenyDeferral::kNone);
  EXPECT_EQ(JudgeDenyDeferral(500, 500), DenyDeferral::kWait);
  EXPECT_EQ(JudgeDenyDeferral(500, 501), DenyDeferral::kOver);
}

TEST(WeekSinceInstallation, StartsAtOneAndSurvivesAClockSetBack) {
  EXPECT_EQ(WeekSince(1000, 1000 + 604'799), 1u);
  EXPECT_EQ(WeekSince(1000, 1000 + 604'800), 2u);
  EXPECT_EQ(WeekSince(1000, 10), 1u);
}

}  // namespace
}  // namespace corvane
