#include <gmock/gmock.h>

#include "corvane_lab/commands.h"
#include "corvane_lab/round_record.h"
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

// A round of no length and its successor run at the same instant.
TEST(ExplainCommandTest, ReachesEachRoundOfAnInstant) {
  const std::string text = Explain("1008600ms", {"--adapter", "1"});
  EXPECT_THAT(text, HasSubstr("from 1008.600 s to 1008.600 s"));
  EXPECT_THAT(text, HasSubstr("from 1008.600 s to 1009.600 s"));
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
