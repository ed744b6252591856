#include "platform/sim/kernel/sim_clock.h"

#include "platform/sim/kernel/scheduler.h"

namespace corvane::platform::sim {

namespace {
constexpr std::uint64_t kStart1970Ms = 11'644'473'600'000;  // since 1601
}

// A thread that only reads the clock, waiting for a time that cannot come, is found here.
std::uint64_t SimClock::NowMs() {
  m_Scheduler.CountCall();
  if (m_Scheduler.Current().reportedSpinning) m_Scheduler.ThrowIfAbandoned();
  return m_Scheduler.NowMs();
}

ULONGLONG SimClock::GetTickCount64() {
  return kUptimeMs + NowMs() + static_cast<std::uint64_t>(m_TickOffsetMs);
}

void SimClock::GetSystemTimeAsFileTime(FILETIME* now) {
  const std::uint64_t ms =
      kStart1970Ms + m_StartTime * 1000 + NowMs() + static_cast<std::uint64_t>(m_WallOffsetMs);
  const std::uint64_t units = ms * 10'000;
  now->dwLowDateTime = static_cast<DWORD>(units);
  now->dwHighDateTime = static_cast<DWORD>(units >> 32);
}

}  // namespace corvane::platform::sim
