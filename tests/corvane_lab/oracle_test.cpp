#include "corvane_lab/oracle.h"

#include <gtest/gtest.h>

#include "corvane_lab/hand_truth.h"

namespace corvane::lab {
namespace {

using test::HandTruth;
using test::Steady;

double Worth(const Truth& truth, const PolicyTrace& trace, Measure measure = Measure::kRate) {
  return ScoreTrace(truth, trace).worth[static_cast<std::size_t>(measure)];
}

// 1.6 s without a link, then the rest of ten seconds at 200: 8.4 * 200 = 1680.
TEST(OracleTest, PaysForAMoveAndGoesWhereMoreIsToBeHad) {
  const Truth truth = HandTruth({Steady(10, 100), Steady(10, 200)});
  const PolicyTrace trace = OracleTrace(truth, {0}, Measure::kRate);
  EXPECT_NEAR(Worth(truth, trace), 1680.0, 0.1);
  ASSERT_EQ(trace[0].links.size(), 3u);
  EXPECT_EQ(trace[0].links[1].ms, 0u);
  EXPECT_EQ(trace[0].links[2].ms, kMoveMs);
  EXPECT_EQ(trace[0].links[2].accessPoint, 1);
}

TEST(OracleTest, StaysWhereTheMoveWouldCostMore) {
  const Truth truth = HandTruth({Steady(10, 100), Steady(10, 115)});
  EXPECT_EQ(OracleTrace(truth, {0}, Measure::kRate)[0].links.size(), 1u);
  // Of what is useful there is nothing to be gained above 100 Mbps.
  const Truth fast = HandTruth({Steady(60, 100), Steady(60, 900)});
  EXPECT_EQ(OracleTrace(fast, {0}, Measure::kUseful)[0].links.size(), 1u);
  EXPECT_EQ(OracleTrace(fast, {0}, Measure::kRate)[0].links.size(), 3u);
}

TEST(OracleTest, LeavesNoLivingLinkInTrafficNorReachesIntoIt) {
  Truth truth = HandTruth({Steady(60, 100), Steady(60, 200)});
  for (std::size_t second = 1; second < 20; ++second) truth.adapters[0].busy[second] = 1;
  const PolicyTrace trace = OracleTrace(truth, {0}, Measure::kRate);
  ASSERT_EQ(trace[0].links.size(), 3u);
  EXPECT_EQ(trace[0].links[1].ms, 20'000u);
  EXPECT_EQ(ScoreTrace(truth, trace).movesInPhases, 0);
}

TEST(OracleTest, LeavesADeadLinkInTraffic) {
  std::vector<float> dies = Steady(60, 500);
  for (std::size_t second = 10; second < 60; ++second) dies[second] = 0;
  Truth truth = HandTruth({dies, Steady(60, 50)});
  truth.adapters[0].busy.assign(60, 1);
  const PolicyTrace trace = OracleTrace(truth, {0}, Measure::kRate);
  ASSERT_EQ(trace[0].links.size(), 3u);
  EXPECT_EQ(trace[0].links[1].ms, 10'000u);
  EXPECT_EQ(ScoreTrace(truth, trace).movesInPhases, 0) << "that link was dead";
}

// Without a link the best that can be had at once is taken, though traffic then holds it there.
TEST(OracleTest, DoesNotWaitWithoutALink) {
  std::vector<float> late = Steady(60, 500);
  for (std::size_t second = 0; second < 5; ++second) late[second] = 0;
  Truth truth = HandTruth({late, Steady(60, 50)});
  truth.adapters[0].busy.assign(60, 1);
  const PolicyTrace trace = OracleTrace(truth, {kNoLink}, Measure::kRate);
  ASSERT_EQ(trace[0].links.size(), 1u);
  EXPECT_EQ(trace[0].links[0].ms, kMoveMs);
  EXPECT_EQ(trace[0].links[0].accessPoint, 1);
}

TEST(OracleTest, GoesOnlyWhereItIsLetIn) {
  Truth truth = HandTruth({Steady(30, 50), Steady(30, 500)});
  truth.adapters[0].letsIn[1].assign(30, 0);
  EXPECT_EQ(OracleTrace(truth, {0}, Measure::kRate)[0].links.size(), 1u);
}

// Both would rather be on the first; together they have more apart.
TEST(OracleTest, TwoAdaptersDoNotShareWhereTheyNeedNot) {
  Truth truth = HandTruth({Steady(60, 200), Steady(60, 150)});
  truth.adapters.push_back(truth.adapters[0]);
  const PolicyTrace trace = OracleTrace(truth, {0, 0}, Measure::kRate);
  EXPECT_NE(trace[0].At(30'000), trace[1].At(30'000));
  EXPECT_NEAR(Worth(truth, trace), 60 * 200 + 58.4 * 150, 1.0 + 1.6 * 150)
      << "one moves at once, and the other has the first alone";
}

}  // namespace
}  // namespace corvane::lab
