#include "wlan/switch_rate.h"

#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

constexpr std::uint64_t kPeriodMs = 60000;
constexpr std::size_t kMinutesKept = 3;
constexpr std::int32_t kTooManyInOneMinute = 3;
constexpr int kActiveMinutesInARow = 3;
constexpr std::uint64_t kSwitchLog = DBG(16) | DBG(17);

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

void CWlanInterface::IncSwitchAttempt() {
  const SwitchRate::Step step = m_SwitchRate.CountAttempt(Os().clock.GetTickCount64());
  LOG_ADAPTER(m_Adapter.Idx(), kSwitchLog,
              u"[%i] CWlanInterface::IncSwitchAttempt(): [%s] attempts: %lu\n", m_Adapter.Idx(),
              step == SwitchRate::Step::kInitPeriod  ? u"INIT-PERIOD"
              : step == SwitchRate::Step::kNewPeriod ? u"NEW-PERIOD"
                                                     : u"SAME-PERIOD",
              m_SwitchRate.m_SwitchAttempts);
  if (step == SwitchRate::Step::kNewPeriod) ProcessSwitchesPerMin();
}

void CWlanInterface::RollSwitchPeriod() {
  if (m_SwitchRate.Roll(Os().clock.GetTickCount64())) ProcessSwitchesPerMin();
}

void CWlanInterface::ProcessSwitchesPerMin() {
  std::vector<std::int32_t>& minutes = m_SwitchRate.m_SwitchesPerMinList;
  if (minutes.empty()) return;
  if (!ShowsFlapping(minutes)) {
    if (minutes.size() == 1) {
      LOG_ADAPTER(m_Adapter.Idx(), kSwitchLog,
                  u"[%i] CWlanInterface::ProcessSwitchesPerMin(): single entry: %i SPM [too "
                  u"small/ignore]\n",
                  m_Adapter.Idx(), minutes.front());
      return;
    }
    WString text;
    for (const std::int32_t switches : minutes)
      text += Format(text.empty() ? u"%i" : u", %i", switches);
    LOG_ADAPTER(
        m_Adapter.Idx(), kSwitchLog,
        u"[%i] CWlanInterface::ProcessSwitchesPerMin(): DO NOTHING: [m_SwitchesPerMinList.size() = "
        u"%zu] '%s'\n",
        m_Adapter.Idx(), minutes.size(), text);
    return;
  }
  m_Adapter.Config()->ResolveUp_APScoreDeltaThreshold(TakeScoreDiffSummary());
  minutes.clear();
}

}  // namespace corvane
