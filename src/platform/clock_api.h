#pragma once
#include "platform/types.h"

namespace corvane::platform {

// Ticks and wall time. Safe for use from every thread.
class ClockApi {
 public:
  virtual ~ClockApi() = default;
  virtual ULONGLONG GetTickCount64();                   // milliseconds since the machine started
  virtual void GetSystemTimeAsFileTime(FILETIME* now);  // UTC, 100 ns units since 1601
};

// Calendar conversions, pure. False for a date out of range.
bool FileTimeToSystemTime(const FILETIME& time, SYSTEMTIME* out);
bool SystemTimeToFileTime(const SYSTEMTIME& time, FILETIME* out);

// UTC now, and seconds since 1970.
SYSTEMTIME SystemTimeNow();
std::uint32_t UnixSecondsNow();

}  // namespace corvane::platform
