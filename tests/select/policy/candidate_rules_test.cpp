#include "select/policy/candidate_rules.h"

#include <gtest/gtest.h>

#include "platform/wlan_types.h"

namespace corvane {
namespace {

TEST(CandidateMargin, PercentFailsOnlyBetweenZeroAndTheLimit) {
  struct Case {
    std::int32_t score, current;
    bool passes;
  };
  for (const Case& c : {Case{60, 50, true},    // exactly 20 percent
                        Case{59, 50, false},   // 18
                        Case{50, 50, false},   // 0
                        Case{40, 50, true},    // below: left to the point margin
                        Case{0, 0, true}, Case{30, 0, true},
                        Case{119, 100, false}, Case{120, 100, true},
                        Case{10, -1, true}}) {
    EXPECT_EQ(PassesPercentTest(c.score, c.current, 20), c.passes) << c.score << " vs " << c.current;
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

TEST(CandidateAdmission, OpenDeniedNamelessAndUnprofiledNetworksStayOut) {
  const AdmissionInputs good{false, false, false, platform::DOT11_AUTH_ALGO_RSNA_PSK, true, false};
  EXPECT_TRUE(IsAdmitted(good));
  auto in = good;
  in.onSystemDenyList = true;
  EXPECT_FALSE(IsAdmitted(in));
  in = good, in.denied = true;
  EXPECT_FALSE(IsAdmitted(in));
  in = good, in.ssidEmpty = true;
  EXPECT_FALSE(IsAdmitted(in));
  in = good, in.authAlgorithm = platform::DOT11_AUTH_ALGO_80211_OPEN;
  EXPECT_FALSE(IsAdmitted(in));
  in = good, in.hasUsableProfile = false;
  EXPECT_FALSE(IsAdmitted(in));
  in.hasTempProfile = true;
  EXPECT_TRUE(IsAdmitted(in));
}

TEST(CandidateOrder, EachStepDecidesBeforeTheNext) {
  const CandidateRank privateWeak{true, 0, 10, 40}, publicStrong{false, 0, 90, 90};
  EXPECT_TRUE(RanksBelow(publicStrong, privateWeak, true));
  EXPECT_TRUE(RanksBelow(privateWeak, publicStrong, false));
  const CandidateRank wanted{false, 1, 5, 50}, better{false, 0, 80, 50};
  EXPECT_TRUE(RanksBelow(better, wanted, true));
  const CandidateRank louder{false, 0, 80, 51};
  EXPECT_TRUE(RanksBelow(better, louder, true));
  EXPECT_FALSE(RanksBelow(louder, louder, true));
}

}  // namespace
}  // namespace corvane
