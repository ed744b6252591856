#include "rules/candidate_rules.h"

#include <gtest/gtest.h>

#include "platform/wlan_types.h"

namespace corvane {
namespace {

TEST(CandidateMargin, PercentFailsOnlyBetweenZeroAndTheLimit) {
  struct Case {
    std::int32_t score, current;
    bool passes;
  };
  for (const Case& c : {Case{60, 50, true},   // exactly 20 percent
                        Case{59, 50, false},  // 18
                        Case{50, 50, false},  // 0
                        Case{40, 50, true},   // below: left to the point margin
                        Case{0, 0, true}, Case{30, 0, true}, Case{119, 100, false},
                        Case{120, 100, true}, Case{10, -1, true}}) {
    EXPECT_EQ(PassesPercentTest(c.score, c.current, 20), c.passes)
        << c.score << " vs " << c.current;
  }
}

TEST(CandidateMargin, ReadinessNeedsEveryTestAtItsLimit) {
  const CandidateMargins margins{70, 3, 20};
  const ReadinessInputs good{70, 2, 2, 18, 15};  // 3 points, 20 percent
  EXPECT_TRUE(IsReady(good, margins));
  auto weak = good, unripe = good, close = good, percent = good;
  weak.quality = 69;
  unripe.counter = 1;
  close.score = 17;
  percent.current = 50, percent.score = 59;
  EXPECT_FALSE(IsReady(weak, margins));
  EXPECT_FALSE(IsReady(unripe, margins));
  EXPECT_FALSE(IsReady(close, margins));
  EXPECT_FALSE(IsReady(percent, margins));
}

TEST(CandidateVerdict, EachRuleDecidesAtItsLimitAndInItsOrder) {
  using enum CandidateStanding;
  const CandidateMargins margins{70, 3, 20};
  struct Case {
    const char* name;
    CandidateInputs in;  // score, current, quality, arbitrary, connected BSS, unavailable
    CandidateStanding standing;
    bool lostClaim;
  };
  for (const Case& c : {
           Case{"at both margins", {18, 15, 70, false, false, false}, kQualified, false},
           Case{"a point short", {17, 15, 70, false, false, false}, kPercentShort, false},
           Case{
               "percent met, points short", {12, 10, 70, false, false, false}, kPointsShort, false},
           Case{"a percent short", {59, 50, 70, false, false, false}, kPercentShort, false},
           Case{"weak", {30, 15, 69, false, false, false}, kWeak, false},
           Case{"equal", {15, 15, 70, false, false, false}, kPercentShort, true},
           Case{"worse and weak", {10, 15, 69, false, false, false}, kWeak, true},
           Case{"worse passes the percent", {10, 15, 70, false, false, false}, kPointsShort, true},
           Case{"unavailable", {30, 15, 70, false, false, true}, kUnavailable, false},
           Case{"weak before unavailable", {30, 15, 69, false, false, true}, kWeak, false},
           Case{"connected one above its own score",
                {18, 15, 70, false, true, false},
                kConnectedBss,
                false},
           Case{"connected one, not above", {15, 15, 70, false, true, false}, kPercentShort, true},
           Case{"preferred, connected", {18, 15, 70, true, true, false}, kQualified, false},
           Case{"preferred, worse", {10, 15, 70, true, false, false}, kQualified, false},
           Case{"preferred, equal", {15, 15, 70, true, false, false}, kPercentShort, false},
           Case{"no score to compare with", {3, 0, 70, false, false, false}, kQualified, false},
           Case{"no score, points short", {2, 0, 70, false, false, false}, kPointsShort, false},
       }) {
    const CandidateVerdict verdict = JudgeCandidate(c.in, margins);
    EXPECT_EQ(verdict.standing, c.standing) << c.name;
    EXPECT_EQ(verdict.lostClaim, c.lostClaim) << c.name;
  }
}

TEST(CandidateCount, JumpsWithoutAScoreAndForAnOpenSuggestion) {
  EXPECT_EQ(ForcedCount(0, 3, false), 3);
  EXPECT_EQ(ForcedCount(1, 3, false), 0);
  EXPECT_EQ(ForcedCount(50, 2, true), 2);
  EXPECT_EQ(RequiredCount(1), 2);
  EXPECT_EQ(RequiredCount(0), 3);
  EXPECT_EQ(RequiredCount(2), 3);
}

TEST(CandidateCount, SuggestionStaysOpenUntilItIsTheConnection) {
  const StandingSuggestion open{true, u"Office", u"02-00-00-00-00-01", u"02-00-00-00-00-09"};
  EXPECT_TRUE(IsOpenSuggestion(open, u"Office", u"02-00-00-00-00-01", false, true));
  EXPECT_FALSE(IsOpenSuggestion(open, u"office", u"02-00-00-00-00-01", false, true));
  EXPECT_FALSE(IsOpenSuggestion(open, u"Office", u"02-00-00-00-00-02", false, true));
  StandingSuggestion unread = open;
  unread.known = false;
  EXPECT_FALSE(IsOpenSuggestion(unread, u"Office", u"02-00-00-00-00-01", false, true));
  StandingSuggestion taken = open;
  taken.connectedBssid = taken.bssid;
  EXPECT_FALSE(IsOpenSuggestion(taken, u"Office", u"02-00-00-00-00-01", false, false));
  EXPECT_FALSE(IsOpenSuggestion(taken, u"Office", u"02-00-00-00-00-01", true, true));
  EXPECT_TRUE(IsOpenSuggestion(taken, u"Office", u"02-00-00-00-00-01", true, false));
}

TEST(CandidateAdmission, OpenDeniedNamelessAndUnprofiledNetworksStayOut) {
  const AdmissionInputs good{false, false, false, platform::DOT11_AUTH_ALGO_RSNA_PSK, true, false};
  EXPECT_EQ(JudgeAdmission(good), CandidateStanding::kQualified);
  auto in = good;
  in.onSystemDenyList = true;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kFiltered);
  in = good, in.denied = true;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kDenied);
  in = good, in.ssidEmpty = true;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kUnnamed);
  in = good, in.authAlgorithm = platform::DOT11_AUTH_ALGO_80211_OPEN;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kOpen);
  in = good, in.hasUsableProfile = false;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kUnprofiled);
  in.hasTempProfile = true;
  EXPECT_EQ(JudgeAdmission(in), CandidateStanding::kQualified);
}

TEST(CandidateOrder, EachStepDecidesBeforeTheNext) {
  const CandidateRank privateWeak{true, 0, 10, 40}, publicStrong{false, 0, 90, 90};
  EXPECT_TRUE(RanksBelow(publicStrong, privateWeak, true));
  EXPECT_TRUE(RanksBelow(privateWeak, publicStrong, false));
  const CandidateRank wanted{false, 1, 5, 50}, better{false, 0, 80, 50};
  EXPECT_TRUE(RanksBelow(better, wanted, true));
  EXPECT_TRUE(RanksBelow(wanted, privateWeak, true));
  const CandidateRank louder{false, 0, 80, 51};
  EXPECT_TRUE(RanksBelow(better, louder, true));
  EXPECT_FALSE(RanksBelow(louder, louder, true));
}

}  // namespace
}  // namespace corvane
