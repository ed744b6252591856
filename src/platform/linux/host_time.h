#pragma once
#include <chrono>

#include "platform/types.h"

namespace corvane::platform::linux_host {

// The time of the host's machine: the monotonic clock, run `speed` times faster than life. Safe for
// use from every thread.
class HostTime {
 public:
  using RealClock = std::chrono::steady_clock;

  explicit HostTime(double speed) : m_Speed(speed), m_Start(RealClock::now()) {}

  double Speed() const { return m_Speed; }
  // Machine time since this object was made.
  std::chrono::nanoseconds SinceStart() const {
    const std::chrono::nanoseconds real = RealClock::now() - m_Start;
    return m_Speed == 1.0 ? real : Scaled(real, m_Speed);
  }
  // What a wait of so many milliseconds of the machine takes in life.
  std::chrono::nanoseconds RealDuration(DWORD milliseconds) const {
    return Scaled(std::chrono::milliseconds(milliseconds), 1.0 / m_Speed);
  }

 private:
  static std::chrono::nanoseconds Scaled(std::chrono::nanoseconds time, double factor) {
    return std::chrono::nanoseconds(
        static_cast<std::int64_t>(static_cast<double>(time.count()) * factor));
  }

  const double m_Speed;
  const RealClock::time_point m_Start;
};

}  // namespace corvane::platform::linux_host
