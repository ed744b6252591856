#include "service/pilot_schedule.h"

#include <gtest/gtest.h>

#include "support/platform_test.h"

namespace corvane::test {

using platform::SYSTEMTIME;

class PilotSchedule : public PlatformTest {};

TEST_F(PilotSchedule, ChangesAtItsTwoDeadlines) {
  const std::pair<SYSTEMTIME, PilotStep> cases[] = {
      {{2019, 10, 4, 17, 17, 59, 59, 999}, PilotStep::kFirstSurvey},
      {{2019, 10, 4, 17, 18, 0, 0, 0}, PilotStep::kEngine},
      {{2019, 10, 4, 31, 17, 59, 59, 999}, PilotStep::kEngine},
      {{2019, 10, 4, 31, 18, 0, 0, 0}, PilotStep::kEnd},
      {{2026, 1, 4, 1, 0, 0, 0, 0}, PilotStep::kEnd},
  };
  for (const auto& [now, step] : cases) {
    EXPECT_EQ(PilotStepAt(now), step)
        << now.wMonth << "-" << now.wDay << " " << now.wHour << ":" << now.wMinute;
  }
}

TEST_F(PilotSchedule, ATimeThatIsNoneDecidesNothing) {
  SYSTEMTIME none{2026, 13, 0, 40, 25, 0, 0, 0};
  bool after = false;
  EXPECT_EQ(IsAfterEOP2(none, &after), -1);
  EXPECT_FALSE(after);
  EXPECT_EQ(PilotStepAt(none), PilotStep::kFirstSurvey);
}

}  // namespace corvane::test
