#pragma once
#include "platform/clock_api.h"
#include "platform/linux/host_time.h"

namespace corvane::platform::linux_host {

// Ticks and wall time of the host. At speed 1 wall time is the system's, and follows it when it is
// set; at another speed it runs on from the system's at the start.
class HostClock final : public ClockApi {
 public:
  explicit HostClock(const HostTime& time);

  ULONGLONG GetTickCount64() override;
  void GetSystemTimeAsFileTime(FILETIME* now) override;

 private:
  const HostTime& m_Time;
  const std::chrono::nanoseconds m_UpTime;  // of the system at the start
  const std::chrono::nanoseconds m_Wall;    // since 1970, at the start
};

}  // namespace corvane::platform::linux_host
