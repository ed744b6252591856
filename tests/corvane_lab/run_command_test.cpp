#include <gmock/gmock.h>

#include "corvane_lab/commands.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string RunWorld(const std::string& world, std::vector<std::string> more) {
  more.insert(more.begin(), test::SourceDir() + "/worlds/" + world + ".json");
  testing::internal::CaptureStdout();
  EXPECT_EQ(RunCommand(more), 0);
  return testing::internal::GetCapturedStdout();
}

// In the first seconds neither the access point nor its score is known.
TEST(RunCommandTest, SaysInWordsWhatIsNotKnownYet) {
  const std::string cold = RunWorld("cold-start", {"--for", "5s"}),
                    home = RunWorld("home", {"--for", "5s"});
  EXPECT_THAT(cold, HasSubstr("is connected to an access point that is not known yet"));
  EXPECT_THAT(home, HasSubstr("is connected to Home 02-50-00-00-02-05, not scored yet"));
  for (const std::string& text : {cold, home}) {
    EXPECT_THAT(text, Not(HasSubstr("00-00-00-00-00-00")));
    EXPECT_THAT(text, Not(HasSubstr("score -1")));
  }
}

// An audit of no moves would say nothing.
TEST(RunCommandTest, TheTenMinutesHaveMovesToAudit) {
  testing::internal::CaptureStderr();
  const std::string text = RunWorld("ten-minutes", {"--seeds", "1-5", "--faults", "5"});
  testing::internal::GetCapturedStderr();
  EXPECT_THAT(text, HasSubstr("5 seeds, 0 bad; "));
  EXPECT_THAT(text, Not(HasSubstr(" 0 moves")));
}

TEST(RunCommandTest, ATrickleInTheBackgroundHoldsTheServiceStill) {
  const std::string text = RunWorld("trickle", {});
  EXPECT_THAT(text, HasSubstr("traffic or real-time audio runs"));
  EXPECT_THAT(text, Not(HasSubstr("connects to")));
}

TEST(RunCommandTest, TellsWhatTheClientsOfAWorldRead) {
  const std::string text = RunWorld("eight-hours", {"--for", "7m"});
  EXPECT_THAT(text, HasSubstr("client settings reads { \"status\":\"ok\", \"code\":0, "));
  EXPECT_THAT(text, HasSubstr("\"request\":{\"art\":\"...\",\"cmd\":\"UICommand\""));
  EXPECT_THAT(
      text, HasSubstr("client settings reads { \"status\":\"ok\", \"code\":0, \"log\":\"...\" }"));
  EXPECT_THAT(text, HasSubstr("\"code\":14, \"reason\":\"vpn\""));
  EXPECT_THAT(text, HasSubstr("client suite reads { \"evtNamespace\":\"Suite\", "));
  EXPECT_THAT(text, HasSubstr("\n  read by clients                "));
  EXPECT_THAT(RunWorld("home", {"--for", "10s"}), Not(HasSubstr("read by clients")));
}

}  // namespace
}  // namespace corvane::lab
