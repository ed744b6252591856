#pragma once
// The field experiment: its fixed dates and what is due at a time. Pure.

#include "platform/types.h"

namespace corvane {

// Whether `now` (UTC) is not earlier than the end of the experiment's first or second part, 18:00
// UTC on 2019-10-17 and on 2019-10-31. 0; -1 for a time that is none, with *after left alone.
int IsAfterEOP1(const platform::SYSTEMTIME& now, bool* after);
int IsAfterEOP2(const platform::SYSTEMTIME& now, bool* after);

enum class PilotStep {
  kFirstSurvey,  // before the first deadline
  kEngine,       // between the two
  kEnd,          // after both: the experiment is over, and the last survey due
};
PilotStep PilotStepAt(const platform::SYSTEMTIME& now);

}  // namespace corvane
