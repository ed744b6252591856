#include "corvane_lab/world_source.h"

#include <gmock/gmock.h>

#include "support/source_dir.h"

namespace corvane::lab {
namespace {

// Behind the command's output, where a reader still sees it.
TEST(AirReport, CountsWhatWasPassedOverAtTheEnd) {
  const Arguments arguments({"--air", test::SourceDir() + "/tests/data/beacons.jsonl"}, {"--air"},
                            {});
  {
    AirReport report;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(WorldOf(arguments, &report).accessPoints.empty());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    testing::internal::CaptureStderr();
  }
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("of 101 beacons, 1 with a reading out of range"));
}

TEST(AirReport, SaysNothingOfAWorldThatSomebodyWrote) {
  const Arguments arguments({test::SourceDir() + "/worlds/home.json"}, {"--air"}, {});
  testing::internal::CaptureStderr();
  {
    AirReport report;
    WorldOf(arguments, &report);
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
}  // namespace corvane::lab
