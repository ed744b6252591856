#pragma once
// Attempts to switch, counted by the minute. Pure state: the owner gives the time.

#include <cstdint>
#include <vector>

namespace corvane {

struct SwitchRate {
  enum class Step { kInitPeriod, kNewPeriod, kSamePeriod };

  std::uint32_t m_SwitchAttempts = 0;              // in the present minute
  std::uint64_t m_switch_period_start = 0;         // tick, 0 before the first attempt
  std::vector<std::int32_t> m_SwitchesPerMinList;  // finished minutes, newest first, at most 3

  // One attempt. After kNewPeriod a finished minute has entered the list.
  Step CountAttempt(std::uint64_t now);
  // A walk without an attempt; true when a finished minute has entered the list.
  bool Roll(std::uint64_t now);

 private:
  void FinishMinute();
};

// True when the finished minutes show flapping: the newest single one has 3 or more, or, of two or
// three, one has 3 or more or all three have at least 1.
bool ShowsFlapping(const std::vector<std::int32_t>& switchesPerMin);

}  // namespace corvane
