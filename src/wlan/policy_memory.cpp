#include "wlan/policy_memory.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "wlan/score_streak.h"

namespace corvane {

namespace {

constexpr std::uint64_t kCandidateLog = DBG(16) | DBG(37);
constexpr std::uint64_t kSwitchLog = DBG(16) | DBG(17);
constexpr std::int32_t kForcedScansMax = 3;
constexpr std::size_t kSummariesKept = 120;

}  // namespace

void PolicyMemory::ClearAllCandidateCounters(const char* reason) {
  LOG_ADAPTER(m_Adapter.Idx(), kCandidateLog,
              u"[%i] CWlanInterface::ClearAllCandidateCounters(): [[[[ %S ]]]]\n", m_Adapter.Idx(),
              reason);
  const CCritSecLock guard(m_Lock);
  m_Claim.Drop();
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entry->m_candidate_counter = 0;
  }
}

void PolicyMemory::DecrementAllCandidateCounters() {
  const CSmartPointer<CQUAYInterfaceConfig> config = m_Adapter.Config();
  const CCritSecLock guard(m_Lock);
  m_Claim.Drop();
  bool lowered = false;
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->m_candidate_counter <= 0) continue;
      --entry->m_candidate_counter;
      lowered = true;
    }
  }
  const std::int32_t forced = config->m_force_scan_counter;
  if (!lowered || forced <= 0) return;
  const std::int32_t raised = std::min(forced + 1, kForcedScansMax);
  config->m_force_scan_counter = raised;
  LOG_ADAPTER(m_Adapter.Idx(), kCandidateLog,
              u"[%i] CWlanInterface::DecrementAllCandidateCounters(): SET F-COUTNER: %i --> %i\n",
              m_Adapter.Idx(), forced, raised);
}

void PolicyMemory::NotifyCurrentNetworkScore(std::int32_t score, const MacAddress& bssid) {
  if (bssid != m_last_notified_bssid) {
    m_score_rise_streak = 0;
  } else {
    const ScoreStreak streak = NextScoreStreak(m_score_rise_streak, score - m_last_notified_score);
    m_score_rise_streak = streak.rises;
    LOG_ADAPTER(m_Adapter.Idx(), kCandidateLog,
                u"[%i] CWlanInterface::NotifyCurrentNetworkScore: score %i --> %i, rises %lu %s\n",
                m_Adapter.Idx(), m_last_notified_score, score, streak.rises,
                streak.improving ? u"-- __**DECREMENTING** ALL CANDIDATE COUNTERS__"
                                 : u"-- NO CANDIDATE DECREMENT");
    if (streak.improving) DecrementAllCandidateCounters();
  }
  m_last_notified_score = score;
  m_last_notified_bssid = bssid;
}

void PolicyMemory::AddScoreDiffSummary(const CandidateSummary& summary) {
  m_score_diff_summaries.push_back(summary);
  while (m_score_diff_summaries.size() > kSummariesKept) m_score_diff_summaries.pop_front();
}

CandidateSummary PolicyMemory::TakeScoreDiffSummary() {
  CandidateSummary widest;
  if (!m_score_diff_summaries.empty()) widest = m_score_diff_summaries.front();
  for (const CandidateSummary& one : m_score_diff_summaries) {
    widest.min = std::min(widest.min, one.min);
    widest.max = std::max(widest.max, one.max);
  }
  m_score_diff_summaries.clear();
  return widest;
}

void PolicyMemory::IncSwitchAttempt() {
  const SwitchRate::Step step = m_SwitchRate.CountAttempt(Os().clock.GetTickCount64());
  LOG_ADAPTER(m_Adapter.Idx(), kSwitchLog,
              u"[%i] CWlanInterface::IncSwitchAttempt(): [%s] attempts: %lu\n", m_Adapter.Idx(),
              step == SwitchRate::Step::kInitPeriod  ? u"INIT-PERIOD"
              : step == SwitchRate::Step::kNewPeriod ? u"NEW-PERIOD"
                                                     : u"SAME-PERIOD",
              m_SwitchRate.m_SwitchAttempts);
  if (step == SwitchRate::Step::kNewPeriod) ProcessSwitchesPerMin();
}

void PolicyMemory::RollSwitchPeriod() {
  if (m_SwitchRate.Roll(Os().clock.GetTickCount64())) ProcessSwitchesPerMin();
}

void PolicyMemory::ProcessSwitchesPerMin() {
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
