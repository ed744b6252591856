#pragma once
#include <cstdint>

#include "platform/clock_api.h"

namespace corvane::platform::sim {

class Scheduler;

// The clock of the simulated PC: virtual time, with a start of its own for ticks and for wall time.
class SimClock final : public ClockApi {
 public:
  // What the machine has been up for when a run starts.
  static constexpr ULONGLONG kUptimeMs = 600'000;

  // `startTime` in seconds since 1970.
  SimClock(Scheduler& scheduler, std::uint64_t startTime)
      : m_Scheduler(scheduler), m_StartTime(startTime) {}

  ULONGLONG GetTickCount64() override;
  void GetSystemTimeAsFileTime(FILETIME* now) override;

  // Moves the ticks by so many milliseconds against virtual time, also backwards; no wait is moved.
  void SetTickOffset(std::int64_t milliseconds) { m_TickOffsetMs = milliseconds; }
  // Moves wall time, as somebody does who sets the machine's clock.
  void SetWallOffset(std::int64_t milliseconds) { m_WallOffsetMs = milliseconds; }

 private:
  std::uint64_t NowMs();

  Scheduler& m_Scheduler;
  const std::uint64_t m_StartTime;
  std::int64_t m_TickOffsetMs = 0;
  std::int64_t m_WallOffsetMs = 0;
};

}  // namespace corvane::platform::sim
