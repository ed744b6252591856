#include <gmock/gmock.h>

#include "corvane_lab/commands.h"
#include "support/source_dir.h"

namespace corvane::lab {
namespace {

using testing::HasSubstr;

std::string Explain(const std::string& at, std::vector<std::string> more = {}) {
  std::vector<std::string> words{test::SourceDir() + "/worlds/eight-hours.json", "--at", at};
  words.insert(words.end(), more.begin(), more.end());
  testing::internal::CaptureStdout();
  EXPECT_EQ(ExplainCommand(words), 0);
  return testing::internal::GetCapturedStdout();
}

// A round that ends early is followed by the next one at the same instant.
TEST(ExplainCommandTest, TellsOfTheRoundThatRunsAtThatTime) {
  EXPECT_THAT(Explain("6m", {"--adapter", "0"}), HasSubstr("a VPN is up"));
  const std::string first = Explain("3s");
  EXPECT_THAT(first, HasSubstr("adapter 0, round 1, "));
  EXPECT_THAT(first, HasSubstr("adapter 1 has begun no round")) << "the second worker starts later";
  EXPECT_THAT(Explain("2m", {"--adapter", "0", "--json"}), HasSubstr(R"(,"terms":"SIGQ()"));
}

}  // namespace
}  // namespace corvane::lab
