#pragma once
#include "platform/clock_api.h"

namespace corvane::platform::windows {

class WindowsClock final : public ClockApi {
 public:
  ULONGLONG GetTickCount64() override;
  void GetSystemTimeAsFileTime(FILETIME* now) override;
};

}  // namespace corvane::platform::windows
