#include <gmock/gmock.h>

#include <chrono>
#include <map>
#include <utility>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/round_record.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string ExplainWorld(const std::string& world, const std::string& at,
                         std::vector<std::string> more = {}) {
  std::vector<std::string> words{test::SourceDir() + "/worlds/" + world + ".json", "--at", at};
  words.insert(words.end(), more.begin(), more.end());
  testing::internal::CaptureStdout();
  EXPECT_EQ(ExplainCommand(words), 0);
  return testing::internal::GetCapturedStdout();
}

std::string Explain(const std::string& at, std::vector<std::string> more = {}) {
  return ExplainWorld("eight-hours", at, std::move(more));
}

// A round that ends early is followed by the next one at the same instant.
TEST(ExplainCommandTest, TellsOfTheRoundThatRunsAtThatTime) {
  EXPECT_THAT(Explain("6m", {"--adapter", "0"}), HasSubstr("a VPN is up"));
  const std::string first = Explain("3s");
  EXPECT_THAT(first, HasSubstr("adapter 0, round 1, "));
  EXPECT_THAT(first, HasSubstr("adapter 1 has begun no round")) << "the second worker starts later";
  EXPECT_THAT(Explain("2m", {"--adapter", "0", "--json"}), HasSubstr(R"(,"terms":"SIGQ()"));
}

// The first round of no length whose successor begins at once, and that one's end.
struct InstantOfTwoRounds {
  int adapter = -1;
  std::uint64_t atMs = 0;
  std::uint64_t endMs = 0;
  std::map<int, RoundRecord> before = {};

  static void Take(const RoundRecord& round, void* context) {
    auto& self = *static_cast<InstantOfTwoRounds*>(context);
    const RoundRecord before = std::exchange(self.before[round.adapter], round);
    if (self.adapter >= 0 || round.number < 2 || before.beganMs != before.endedMs) return;
    if (before.endedMs != round.beganMs || round.beganMs == round.endedMs) return;
    self.adapter = round.adapter;
    self.atMs = round.beganMs;
    self.endMs = round.endedMs;
  }
};

TEST(ExplainCommandTest, ReachesEachRoundOfAnInstant) {
  InstantOfTwoRounds instant;
  {
    const Arguments arguments({test::SourceDir() + "/worlds/eight-hours.json"}, {}, {});
    AirReport air;
    const platform::sim::World world = WorldOf(arguments, &air);
    platform::sim::SimulatedPc pc(world);
    RoundRecorder recorder(pc, world, false, &InstantOfTwoRounds::Take, &instant);
    ServiceRun service(pc);
    service.Start();
    for (int minute = 0; minute < 480 && instant.adapter < 0; ++minute)
      pc.RunFor(std::chrono::minutes(1));
  }
  ASSERT_GE(instant.adapter, 0);
  const std::string text =
      Explain(std::to_string(instant.atMs) + "ms", {"--adapter", std::to_string(instant.adapter)});
  const auto seconds = [](std::uint64_t ms) {
    return FormatA("%.3lf s", static_cast<double>(ms) / 1000.0);
  };
  const std::string from = "from " + seconds(instant.atMs) + " to ";
  EXPECT_THAT(text, HasSubstr(from + seconds(instant.atMs)));
  EXPECT_THAT(text, HasSubstr(from + seconds(instant.endMs)));
}

TEST(ExplainCommandTest, TellsThatTheSystemHasConnected) {
  const std::string system = "The system made the connection, not the service";
  for (const char* mode : {"autoswitch", "event", "popup"})
    EXPECT_THAT(ExplainWorld("cold-start", "90s", {"--mode", mode}), HasSubstr(system));
  EXPECT_THAT(ExplainWorld("cold-start", "10m5s"), Not(HasSubstr(system))) << "it has no link";
  EXPECT_THAT(ExplainWorld("home", "10s"), Not(HasSubstr(system)));
}

TEST(ExplainCommandTest, TellsSinceWhenTheMoveOfAnotherHolds) {
  const std::string held = "No switch since 117.505 s, when the service saw that somebody else had";
  EXPECT_THAT(ExplainWorld("driver-roams", "118s"), HasSubstr(held)) << "the round that sees it";
  EXPECT_THAT(ExplainWorld("driver-roams", "3m"), HasSubstr(held)) << "the second roam is no start";
  EXPECT_THAT(ExplainWorld("driver-roams", "1m"), Not(HasSubstr("No switch since")));
}

TEST(ExplainCommandTest, AScoreOfMinusOneIsNone) {
  EXPECT_EQ(ScoreText(-1), "not scored yet");
  EXPECT_EQ(ScoreText(0), "score 0");
}

}  // namespace
}  // namespace corvane::lab
