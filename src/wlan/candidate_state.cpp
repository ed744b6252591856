// What the adapter keeps of its candidates: counters, summaries, score of the connection.

#include <algorithm>

#include "foundation/log_lines.h"
#include "wlan/score_streak.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

constexpr std::uint64_t kCandidateLog = DBG(16) | DBG(37);
constexpr std::int32_t kForcedScansMax = 3;
constexpr std::size_t kSummariesKept = 120;

}  // namespace

void CWlanInterface::ClearAllCandidateCounters(const char* reason) {
  LOG_ADAPTER(m_Adapter.Idx(), kCandidateLog,
              u"[%i] CWlanInterface::ClearAllCandidateCounters(): [[[[ %S ]]]]\n", m_Adapter.Idx(),
              reason);
  const CCritSecLock guard(ObjectLock());
  m_Claim.Drop();
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entry->m_candidate_counter = 0;
  }
}

void CWlanInterface::DecrementAllCandidateCounters() {
  const CSmartPointer<CQUAYInterfaceConfig> config = m_Adapter.Config();
  const CCritSecLock guard(ObjectLock());
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

void CWlanInterface::NotifyCurrentNetworkScore(std::int32_t score, const MacAddress& bssid) {
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

void CWlanInterface::AddScoreDiffSummary(const CandidateSummary& summary) {
  m_score_diff_summaries.push_back(summary);
  while (m_score_diff_summaries.size() > kSummariesKept) m_score_diff_summaries.pop_front();
}

CandidateSummary CWlanInterface::TakeScoreDiffSummary() {
  CandidateSummary widest;
  if (!m_score_diff_summaries.empty()) widest = m_score_diff_summaries.front();
  for (const CandidateSummary& one : m_score_diff_summaries) {
    widest.min = std::min(widest.min, one.min);
    widest.max = std::max(widest.max, one.max);
  }
  m_score_diff_summaries.clear();
  return widest;
}

void CWlanInterface::SetBTPenalty(std::int32_t value) {
  const CCritSecLock guard(ObjectLock());
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (!entry->IsIn5GHzRange()) entry->m_BTPenalty = value;
    }
  }
}

}  // namespace corvane
