#include "service/pilot_schedule.h"

#include <cstdint>

#include "foundation/log_lines.h"
#include "platform/clock_api.h"

namespace corvane {

namespace {

using platform::FILETIME;
using platform::SYSTEMTIME;

constexpr SYSTEMTIME kEndOfPart1{2019, 10, 4, 17, 18, 0, 0, 0};
constexpr SYSTEMTIME kEndOfPart2{2019, 10, 4, 31, 18, 0, 0, 0};

std::uint64_t Ticks(const FILETIME& time) {
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

int IsAfter(const char* operation, const SYSTEMTIME& now, const SYSTEMTIME& deadline, bool* after) {
  FILETIME left, right;
  if (!platform::SystemTimeToFileTime(now, &left)) {
    LOG_ERROR(
        u"-FATAL- | %S() - SystemTimeToFileTime(now...) FAILED, result unchanged, returning -1\n",
        operation);
    return -1;
  }
  if (!platform::SystemTimeToFileTime(deadline, &right)) {
    LOG_ERROR(
        u"-FATAL- | %S() - SystemTimeToFileTime(deadline...) FAILED, result unchanged, returning "
        u"-1\n",
        operation);
    return -1;
  }
  *after = Ticks(left) >= Ticks(right);
  return 0;
}

}  // namespace

int IsAfterEOP1(const SYSTEMTIME& now, bool* after) {
  return IsAfter("IsAfterEOP1", now, kEndOfPart1, after);
}

int IsAfterEOP2(const SYSTEMTIME& now, bool* after) {
  return IsAfter("IsAfterEOP2", now, kEndOfPart2, after);
}

PilotStep PilotStepAt(const SYSTEMTIME& now) {
  bool after1 = false, after2 = false;
  IsAfterEOP1(now, &after1);
  IsAfterEOP2(now, &after2);
  if (after2) return PilotStep::kEnd;
  return after1 ? PilotStep::kEngine : PilotStep::kFirstSurvey;
}

}  // namespace corvane
