#include "wlan/switch_rate.h"

namespace corvane {

namespace {

constexpr std::uint64_t kPeriodMs = 60000;
constexpr std::size_t kMinutesKept = 3;
constexpr std::int32_t kTooManyInOneMinute = 3;
constexpr int kActiveMinutesInARow = 3;

}  // namespace

void SwitchRate::FinishMinute() {
  m_SwitchesPerMinList.insert(m_SwitchesPerMinList.begin(),
                              static_cast<std::int32_t>(m_SwitchAttempts));
  if (m_SwitchesPerMinList.size() > kMinutesKept) m_SwitchesPerMinList.resize(kMinutesKept);
}

SwitchRate::Step SwitchRate::CountAttempt(std::uint64_t now) {
  Step step = Step::kSamePeriod;
  if (m_switch_period_start == 0) {
    step = Step::kInitPeriod;
  } else if (now - m_switch_period_start >= kPeriodMs) {
    step = Step::kNewPeriod;
    FinishMinute();
  }
  if (step == Step::kSamePeriod) {
    ++m_SwitchAttempts;
  } else {
    m_switch_period_start = now;
    m_SwitchAttempts = 1;
  }
  return step;
}

bool SwitchRate::Roll(std::uint64_t now) {
  const bool runs = m_switch_period_start != 0;
  if (runs && now - m_switch_period_start < kPeriodMs) return false;
  if (runs) {
    FinishMinute();
    m_SwitchAttempts = 0;
  }
  m_switch_period_start = now;
  return runs;
}

bool ShowsFlapping(const std::vector<std::int32_t>& switchesPerMin) {
  int active = 0;
  for (const std::int32_t switches : switchesPerMin) {
    if (switches >= 1) ++active;
    if (switches >= kTooManyInOneMinute || active >= kActiveMinutesInARow) return true;
  }
  return false;
}

}  // namespace corvane
