#include "platform/linux/host_clock.h"

#include <time.h>

namespace corvane::platform::linux_host {

namespace {

using std::chrono::duration_cast;
using std::chrono::nanoseconds;

constexpr std::uint64_t kUnitsFrom1601To1970 = 116'444'736'000'000'000;  // of 100 ns

nanoseconds Read(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return std::chrono::seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
}

}  // namespace

HostClock::HostClock(const HostTime& time)
    : m_Time(time), m_UpTime(Read(CLOCK_BOOTTIME)), m_Wall(Read(CLOCK_REALTIME)) {}

ULONGLONG HostClock::GetTickCount64() {
  const auto ticks = duration_cast<std::chrono::milliseconds>(m_UpTime + m_Time.SinceStart());
  return static_cast<ULONGLONG>(ticks.count());
}

void HostClock::GetSystemTimeAsFileTime(FILETIME* now) {
  const nanoseconds wall =
      m_Time.Speed() == 1.0 ? Read(CLOCK_REALTIME) : m_Wall + m_Time.SinceStart();
  const std::uint64_t units = kUnitsFrom1601To1970 + static_cast<std::uint64_t>(wall.count()) / 100;
  now->dwLowDateTime = static_cast<DWORD>(units);
  now->dwHighDateTime = static_cast<DWORD>(units >> 32);
}

}  // namespace corvane::platform::linux_host
