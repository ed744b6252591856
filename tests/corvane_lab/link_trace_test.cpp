#include "corvane_lab/link_trace.h"

#include <gtest/gtest.h>

#include "corvane_lab/compare_why.h"
#include "corvane_lab/hand_truth.h"

namespace corvane::lab {
namespace {

using test::HandTruth;
using test::Steady;

// Parts of seconds count as much as they last; where nothing is heard a link is none.
TEST(LinkTraceTest, CountsWhatALinkGivesWhileItLasts) {
  std::vector<float> dies = Steady(10, 100);
  dies[8] = dies[9] = 0;
  const Truth truth = HandTruth({dies, Steady(10, 200)});
  const PolicyTrace trace{{{{0, 1}, {2500, kNoLink}, {4000, 0}}, {}}};
  const TraceScore score = ScoreTrace(truth, trace);
  EXPECT_NEAR(score.worth[0], 2.5 * 200 + 4 * 100, 0.01);
  EXPECT_NEAR(score.worth[1], 2.5 * 100 + 4 * 100, 0.01);
  EXPECT_NEAR(score.disconnectedSeconds, 1.5 + 2.0, 0.001);
}

TEST(LinkTraceTest, TellsMovesAndPingPongsApart) {
  const Truth truth = HandTruth({Steady(600, 100), Steady(600, 100), Steady(600, 100)});
  const auto score = [&](std::vector<LinkChange> links) {
    return ScoreTrace(truth, {{std::move(links), {}}});
  };
  const TraceScore back = score({{0, 0}, {10'000, kNoLink}, {11'600, 1}, {100'000, 0}});
  EXPECT_EQ(back.moves, 2);
  EXPECT_EQ(back.pingPongs, 1);
  const TraceScore late = score({{0, 0}, {11'600, 1}, {132'000, 0}});
  EXPECT_EQ(late.pingPongs, 0) << "after two minutes it may have been right to go back";
  const TraceScore round = score({{0, 0}, {11'600, 1}, {20'000, 2}, {30'000, 0}});
  EXPECT_EQ(round.moves, 3);
  EXPECT_EQ(round.pingPongs, 0);
  const TraceScore mended = score({{0, 0}, {11'600, kNoLink}, {18'000, 0}});
  EXPECT_EQ(mended.moves, 0) << "a link that comes back is no move";
}

TEST(LinkTraceTest, BlamesWhatHappensInPhasesOfTraffic) {
  Truth truth = HandTruth({Steady(60, 100), Steady(60, 100)});
  for (std::size_t second = 20; second < 40; ++second) truth.adapters[0].busy[second] = 1;
  // It left just before the phase, and came back in it; of two scans in it one was without a link.
  const PolicyTrace trace{
      {{{0, 0}, {19'900, kNoLink}, {21'500, 1}, {30'000, 0}}, {5'000, 20'000, 39'999, 80'000}}};
  const TraceScore score = ScoreTrace(truth, trace);
  EXPECT_EQ(score.movesInPhases, 1);
  EXPECT_EQ(score.scans, 3);
  EXPECT_EQ(score.scansInPhases, 1);
  EXPECT_EQ(truth.TrafficPhases(), 1);
}

TEST(LinkTraceTest, TwoAdaptersOnOneAccessPointHaveHalfEach) {
  Truth truth = HandTruth({Steady(10, 100), Steady(10, 60)});
  truth.adapters.push_back(truth.adapters[0]);
  const PolicyTrace together{{{{0, 0}}, {}}, {{{0, 0}}, {}}};
  const PolicyTrace apart{{{{0, 0}}, {}}, {{{0, 1}}, {}}};
  EXPECT_NEAR(ScoreTrace(truth, together).worth[0], 1000.0, 0.01);
  EXPECT_NEAR(ScoreTrace(truth, apart).worth[0], 1600.0, 0.01);
  EXPECT_NEAR(RatesOf(truth, together, 1)[4], 50.0, 0.01);
}

RoundNote Note(std::uint64_t endedMs, RoundStep step, std::vector<RoundNote::Entry> entries) {
  RoundNote note;
  note.beganMs = endedMs > 100 ? endedMs - 100 : 0;
  note.endedMs = endedMs;
  note.step = step;
  note.score = 50;
  note.entries = std::move(entries);
  return note;
}

// What is missed is all told, each second by the round that held then.
TEST(CompareWhyTest, TheCausesSumToWhatIsMissed) {
  Truth truth = HandTruth({Steady(40, 100), Steady(40, 200)});
  truth.adapters[0].busy[30] = 1;
  PolicyRun run;
  run.trace = {{{{0, 0}}, {}}};
  run.rounds = {{Note(10'000, RoundStep::kNoQualifier, {{1, 55, CandidateStanding::kPercentShort}}),
                 Note(20'000, RoundStep::kOnBest, {{1, 45, std::nullopt}}),
                 Note(30'000, RoundStep::kLinkBusy, {{1, 70, CandidateStanding::kReady}})}};
  const PolicyTrace oracle{{{{0, 1}}, {}}};
  const auto causes = WhyBehind(truth, run, oracle);
  ASSERT_EQ(causes.size(), 4u);
  EXPECT_EQ(causes.at("no round yet").seconds, 10);
  EXPECT_EQ(causes.at("no-qualifier, percent-short").seconds, 10);
  EXPECT_EQ(causes.at("on-best, scored-lower").seconds, 10);
  EXPECT_EQ(causes.at("link-busy (traffic) after on-best, scored-lower").seconds, 10);
  double points = 0.0;
  for (const auto& [cause, loss] : causes) points += loss.points;
  EXPECT_NEAR(points, 50.0, 0.01);
}

// Where it is right but not alone, no round of its own is to blame.
TEST(CompareWhyTest, TellsWhatTheOtherAdapterTakes) {
  Truth truth = HandTruth({Steady(10, 100), Steady(10, 60)});
  truth.adapters.push_back(truth.adapters[0]);
  PolicyRun run;
  run.trace = {{{{0, 0}}, {}}, {{{0, 0}}, {}}};
  run.rounds = {{}, {Note(500, RoundStep::kOnBest, {{1, 40, std::nullopt}})}};
  const auto causes = WhyBehind(truth, run, {{{{0, 0}}, {}}, {{{0, 1}}, {}}});
  EXPECT_EQ(causes.at("shared with the other adapter").seconds, 10);
  EXPECT_EQ(causes.at("on-best, scored-lower").seconds, 10);
}

// While a round moves the adapter, the round that has yet to end tells why there is no link.
TEST(CompareWhyTest, TellsAMoveFromALostLink) {
  const Truth truth = HandTruth({Steady(20, 100), Steady(20, 200)});
  PolicyRun run;
  run.trace = {{{{0, 0}, {5'000, kNoLink}, {8'000, 0}, {15'000, kNoLink}}, {}}};
  RoundNote move = Note(9'000, RoundStep::kConnected, {});
  move.beganMs = 4'900;
  move.moves = true;
  run.rounds = {{Note(1'000, RoundStep::kRipening, {{1, 70, CandidateStanding::kRipening}}), move,
                 Note(15'500, RoundStep::kCountsDisconnects, {})}};
  const auto causes = WhyBehind(truth, run, {{{{0, 1}}, {}}});
  EXPECT_EQ(causes.at("moving").seconds, 3);
  EXPECT_EQ(causes.at("ripening, ripening").seconds, 4);
  EXPECT_EQ(causes.at("no link: counts-disconnects, unheard").seconds, 5);
}

}  // namespace
}  // namespace corvane::lab
