// Candidates: the counters that ripen, and the tests of readiness.

#include <algorithm>

#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/round_watch.h"
#include "policy/standing_suggestion.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

CandidateMargins Margins(const CQUAYInterfaceConfig& config) {
  return {config.m_LQCThreshold, config.m_APScoreThreshold,
          CGlobalConfigContainer::GetInstance().m_ScoreDiffPct};
}

// One pass over the list on behalf of IncrementCandidateCounters.
class CounterPass {
 public:
  CounterPass(CWlanInterface& adapter, const MacAddress& connected, std::int32_t current)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_pConfig(adapter.Config()),
        m_Margins(Margins(*m_pConfig)),
        m_Connected(connected),
        m_Current(current),
        m_Required(CGlobalQUAYPolicy::RequiredCandidateCount()),
        m_bMonitorMode(CGlobalQUAYPolicy::IsMonitorMode(*m_pConfig)) {}

  void Visit(const CSmartPointer<CWlanBssEntry>& entry) {
    RoundWatches::Standing(m_Idx, *entry, Judge(entry));
  }

  const CSmartPointer<CWlanBssEntry>& LastQualifier() const { return m_LastQualifier; }
  const CandidateSummary& Summary() const { return m_Summary; }
  bool AnyReady() const { return m_bAnyReady; }
  bool MetThreshold() const { return m_bMetThreshold; }
  const CandidateMargins& GetMargins() const { return m_Margins; }

 private:
  CandidateStanding Judge(const CSmartPointer<CWlanBssEntry>& entry) {
    const std::int32_t score = entry->GetScore(false);
    const CandidateInputs in{
        score,
        m_Current,
        entry->GetLQ(),
        entry->IsArbitraryEligible(),
        entry->GetBssid() == m_Connected,
        entry->m_last_reason_code == platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE};
    const CandidateVerdict verdict = JudgeCandidate(in, m_Margins);
    if (verdict.lostClaim) ClearUnclaimed(*entry, score);
    if (verdict.standing == CandidateStanding::kConnectedBss) ClearConnected(*entry);
    if (verdict.standing == CandidateStanding::kUnavailable) ClearUnavailable(*entry);
    if (verdict.standing != CandidateStanding::kQualified) {
      return verdict.lostClaim ? CandidateStanding::kNotBetter : verdict.standing;
    }
    if (IsTakenElsewhere(*entry)) return CandidateStanding::kTakenElsewhere;

    m_LastQualifier = entry;
    if (PassesPointTest(score, m_Current, m_Margins.scoreThreshold)) Widen(score - m_Current);
    if (m_bMonitorMode && entry->GetCandidate() > m_Required) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"_[%i]IncrementCandidateCounters: NO BUMP CANDIDATE(%i): SSID %s %s [center %u] "
                  u"score: %i vs %i\n",
                  m_Idx, entry->m_candidate_counter, entry->m_SSIDW, entry->m_BSSIDText,
                  entry->GetFrequencyKhz(), score, m_Current);
    } else {
      Bump(*entry, score);
    }
    ReserveIfNearlyRipe(*entry);
    if (!CGlobalQUAYPolicy::IsCandidateReady(&m_Adapter, entry.get(), m_Current))
      return CandidateStanding::kRipening;
    m_bAnyReady = true;
    return CandidateStanding::kReady;
  }

  // --- An entry that has lost its claim starts anew; one that is merely not good enough in this
  // round keeps its count.
  void ClearUnclaimed(CWlanBssEntry& entry, std::int32_t score) {
    LOG_ADAPTER(m_Idx, kCandidateDetailLog,
                u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center "
                u"%u] due to: "
                u"%i <= %i\n",
                m_Idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
                entry.GetFrequencyKhz(), score, m_Current);
    entry.m_candidate_counter = 0;
  }

  void ClearConnected(CWlanBssEntry& entry) {
    LOG_ADAPTER(
        m_Idx, kCandidateDetailLog,
        u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center %u] "
        u"[CURRENT AP BSSID!]\n",
        m_Idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
        entry.GetFrequencyKhz());
    entry.m_candidate_counter = 0;
  }

  void ClearUnavailable(CWlanBssEntry& entry) {
    LOG_ADAPTER(m_Idx, kCandidateDetailLog,
                u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center "
                u"%u] [BAD prev "
                u"reason-code %i]\n",
                m_Idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
                entry.GetFrequencyKhz(), entry.m_last_reason_code);
    entry.m_candidate_counter = 0;
  }

  bool IsTakenElsewhere(CWlanBssEntry& entry) {
    if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Adapter))
      return false;
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"[%i] IncrementCandidateCounters: SKIP candidate(connected on other IF): %s, %s, current "
        u"counter=%i",
        m_Idx, entry.m_SSIDW, entry.m_BSSIDText, entry.m_candidate_counter);
    return true;
  }

  void Widen(std::int32_t difference) {
    m_Summary.min = m_bMetThreshold ? std::min(m_Summary.min, difference) : difference;
    m_Summary.max = m_bMetThreshold ? std::max(m_Summary.max, difference) : difference;
    m_bMetThreshold = true;
  }

  // An access point on the allow list that the user has been asked about need not ripen anew.
  bool IsOpenAllowedSuggestion(const CWlanBssEntry& entry) const {
    return CGlobalConfigContainer::GetInstance().m_bAllowlistEnabled &&
           IsAllowed(m_pConfig->m_Allowlist.Rows(), entry.m_SSIDW, entry.GetBssid()) &&
           IsOpenSuggestion(ReadStandingSuggestion(*m_pConfig), entry.m_SSIDW, entry.m_BSSIDText,
                            m_pConfig->m_ForceAutoConnect, m_Adapter.IsConnected());
  }

  void Bump(CWlanBssEntry& entry, std::int32_t score) {
    const std::int32_t before = entry.m_candidate_counter;
    const std::int32_t counter = entry.IncrementCandidate(
        ForcedCount(m_Current, m_Required, IsOpenAllowedSuggestion(entry)));
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"_[%i]IncrementCandidateCounters: [AllowStaleDecision=%i] %s CANDIDATE(%i, before=%i): "
        u"SSID %s %s [center %u] score: %i vs %i\n",
        m_Idx, 0, counter != 0 ? u"BUMPED" : u"_FAILED_ BUMP", counter, before, entry.m_SSIDW,
        entry.m_BSSIDText, entry.GetFrequencyKhz(), score, m_Current);
  }

  void ReserveIfNearlyRipe(CWlanBssEntry& entry) {
    MacAddress reserved;
    if (m_Adapter.GetReservation(&reserved) || entry.GetCandidate() < m_Required - 1) return;
    m_Adapter.TakeReservation(entry.GetBssid());
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"[%i] IncrementCandidateCounters: RESERVING CANDIDATE: %s, %s, current counter=%i",
                m_Idx, entry.m_SSIDW, entry.m_BSSIDText, entry.m_candidate_counter);
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const CandidateMargins m_Margins;
  const MacAddress m_Connected;
  const std::int32_t m_Current;
  const std::int32_t m_Required;
  const bool m_bMonitorMode;
  CSmartPointer<CWlanBssEntry> m_LastQualifier;
  CandidateSummary m_Summary;
  bool m_bMetThreshold = false;
  bool m_bAnyReady = false;
};

}  // namespace

std::int32_t CGlobalQUAYPolicy::RequiredCandidateCount() {
  return RequiredCount(CWifiClientContainer::GetInstance().GetCount());
}

bool CGlobalQUAYPolicy::IsMonitorMode(const CQUAYInterfaceConfig& config) {
  return CGlobalConfigContainer::GetInstance().m_bMonitorWhileDisabled && !IsEnabled(config);
}

bool CGlobalQUAYPolicy::IsEnabled(const CQUAYInterfaceConfig& config) {
  return config.m_Enabled && CGlobalConfigContainer::GetInstance().m_bServiceEnable;
}

bool CGlobalQUAYPolicy::IsCandidateReady(CWlanInterface* pIf, CWlanBssEntry* pbssEntry,
                                         std::int32_t current_score) {
  if (!pIf) {
    LOG_DEBUG(kNullInterfaceLog, u"IsCandidateReady: pIf is NULL!\n");
    return false;
  }
  if (!pbssEntry) {
    LOG_DEBUG(kNullInterfaceLog, u"IsCandidateReady: pbssEntry is NULL!\n");
    return false;
  }
  const ReadinessInputs in{pbssEntry->GetLQ(), pbssEntry->GetCandidate(), RequiredCandidateCount(),
                           pbssEntry->GetScore(false), current_score};
  return IsReady(in, Margins(*pIf->Config()));
}

bool CGlobalQUAYPolicy::IncrementCandidateCounters(CWlanInterface* pIf,
                                                   const MacAddress& connected_bssid,
                                                   const BssEntryList& entries,
                                                   std::int32_t current_score,
                                                   CSmartPointer<CWlanBssEntry>* last_qualifier,
                                                   CandidateSummary* summary) {
  CounterPass pass(*pIf, connected_bssid, current_score);
  for (const auto& entry : entries) pass.Visit(entry);
  pIf->AddScoreDiffSummary(pass.Summary());
  if (!pass.MetThreshold()) {
    LOG_ADAPTER(
        pIf->GetConfigIdx(), kPolicyLog,
        u"[%i] IncrementCandidateCounters: _NO_ Candidate met Score difference threshold [%i "
        u"points & %lu percent] <<<=====************************",
        pIf->GetConfigIdx(), static_cast<std::int32_t>(pass.GetMargins().scoreThreshold),
        pass.GetMargins().scorePercent);
  }
  *last_qualifier = pass.LastQualifier();
  *summary = pass.Summary();
  return pass.AnyReady();
}

bool CGlobalQUAYPolicy::IsBetterCandidatePossible(CWlanInterface* pIf, const BssEntryList& entries,
                                                  std::int32_t current_score) {
  const CandidateMargins margins = Margins(*pIf->Config());
  for (const auto& entry : entries) {
    if (entry->GetLQ() < margins.qualityThreshold) continue;
    if (!PassesPointTest(entry->GetScore(false), current_score, margins.scoreThreshold)) continue;
    if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(entry.get(), pIf))
      return true;
    LOG_ADAPTER(
        pIf->GetConfigIdx(), kPolicyLog,
        u"[%i] IsBetterCandidatePossible: SKIP candidate(connected on other IF): %s, %s, current "
        u"counter=%i",
        pIf->GetConfigIdx(), entry->m_SSIDW, entry->m_BSSIDText, entry->m_candidate_counter);
  }
  return false;
}

bool CGlobalQUAYPolicy::IsConnectedToSuggestedBest_ETW(CWlanInterface* pIf,
                                                       const BssEntryList& entries,
                                                       const WString& ssid, const MacAddress& bssid,
                                                       CSmartPointer<CWlanBssEntry>* entry) {
  entry->reset();
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  const WString bssidText = MacText(bssid);
  if (!config->m_Etw.GetMemo().HasAp(ssid, bssidText)) {
    LOG_ADAPTER(idx, kPolicyLog, u"[%i] IsConnectedToSuggestedBest_ETW: %s != %s, return false",
                idx, config->m_Etw.GetSuggestedNetworkText(), bssidText);
    return false;
  }
  if (entries.empty()) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i] IsConnectedToSuggestedBest_ETW: BssEntriesList.size() <= 0, return false",
                idx);
    return false;
  }
  if (entries.front()->m_SSIDW == ssid && entries.front()->GetBssid() == bssid) {
    *entry = entries.front();
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i] IsConnectedToSuggestedBest_ETW: Found ETW BssEntry in front(), return true",
                idx);
    return true;
  }
  const auto found = std::find_if(entries.begin() + 1, entries.end(),
                                  [&](const auto& one) { return one->GetBssid() == bssid; });
  if (found == entries.end()) {
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"[%i] IsConnectedToSuggestedBest_ETW: Failed to find BssEntry in list, return false", idx);
    return false;
  }
  *entry = *found;
  LOG_ADAPTER(idx, kPolicyLog,
              u"[%i] IsConnectedToSuggestedBest_ETW: Found ETW BssEntry in list, return true", idx);
  return true;
}

}  // namespace corvane
