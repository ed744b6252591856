#include <gmock/gmock.h>

#include "corvane_lab/commands.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;
using testing::Not;

// In the first seconds neither the access point nor its score is known.
TEST(RunCommandTest, SaysInWordsWhatIsNotKnownYet) {
  const auto run = [](const std::string& world) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(RunCommand({test::SourceDir() + "/worlds/" + world + ".json", "--for", "5s"}), 0);
    return testing::internal::GetCapturedStdout();
  };
  const std::string cold = run("cold-start"), home = run("home");
  EXPECT_THAT(cold, HasSubstr("is connected to an access point that is not known yet"));
  EXPECT_THAT(home, HasSubstr("is connected to Home 02-50-00-00-02-05, not scored yet"));
  for (const std::string& text : {cold, home}) {
    EXPECT_THAT(text, Not(HasSubstr("00-00-00-00-00-00")));
    EXPECT_THAT(text, Not(HasSubstr("score -1")));
  }
}

}  // namespace
}  // namespace corvane::lab
