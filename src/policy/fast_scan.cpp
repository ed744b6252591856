// A connected adapter's rounds without fresh scan data: they bump no counters, but may ask for
// scans.

#include "policy/bss_entry_reports.h"
#include "policy/choice_rules.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/round_watch.h"
#include "policy/standing_suggestion.h"
#include "policy/suggesting.h"

namespace corvane {

namespace {

constexpr std::uint64_t kFastScanLog = DBG(3);

RoundStep StepOf(FastScan outcome) {
  switch (outcome) {
    case FastScan::kAlreadySuggested:
      return RoundStep::kAlreadySuggested;
    case FastScan::kBusy:
      return RoundStep::kLinkBusy;
    case FastScan::kNothingBetter:
      return RoundStep::kNothingBetter;
    case FastScan::kAlreadyForced:
    case FastScan::kForceScans:
      break;
  }
  return RoundStep::kBetterPossible;
}

class FastScanRound {
 public:
  FastScanRound(CWlanInterface& adapter, const BssEntryList& entries, const ConnectionFacts& facts)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_Mbps(adapter.GetTrafficMbps()),
        m_pConfig(adapter.Config()),
        m_Entries(entries),
        m_Facts(facts) {}

  void Run() {
    const bool alreadyBest =
        CGlobalQUAYPolicy::IsConnectedToBest(&m_Adapter, m_Entries, m_Facts, &m_pBest);
    if (!m_pBest) {
      LOG_ADAPTER(
          m_Idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i -- pBestCandidate is NULL!\n",
          m_Idx, State());
      return;
    }
    if (alreadyBest) {
      LOG_ADAPTER(
          m_Idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [already CONNECTED to preferred "
          u"AP "
          u"- SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO NOTHING\n",
          m_Idx, State(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid), m_Facts.quality, m_Mbps);
      RoundWatches::Step(m_Idx, RoundStep::kOnBest);
      return;
    }
    Act(JudgeFastScan(Gather()));
  }

 private:
  std::int32_t State() const { return m_Adapter.GetInterfaceStateForLog(); }

  FastScanInputs Gather() {
    FastScanInputs in;
    in.matchesSuggestion = MatchesSuggestion();
    std::int32_t score = m_Adapter.GetScoreFromBssEntry(m_Facts.ssid, m_Facts.bssid, false);
    if (score < 0 && !m_Facts.ssid.empty()) score = m_Adapter.m_backup_score;
    in.betterPossible = CGlobalQUAYPolicy::IsBetterCandidatePossible(&m_Adapter, m_Entries, score);
    in.openSuggestion =
        IsOpenSuggestion(ReadStandingSuggestion(*m_pConfig), m_pBest->m_SSIDW, m_pBest->m_BSSIDText,
                         m_pConfig->m_ForceAutoConnect, m_Adapter.IsConnected());
    if (in.openSuggestion) {
      LOG_ADAPTER(
          m_Idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected][BMLS=%i/IBP=1/LSOAL=1] IF-STATE: %i [CONNECTED to "
          u"%s, "
          u"Bitrate: %0.3lf] IGNORE BestMatchesLastSuggestion due to Suggest == Allowlist\n",
          m_Idx, in.matchesSuggestion, State(), m_Facts.ssid, m_Mbps);
    }
    in.linkBusy = IsLinkBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
                             m_pConfig->m_rate_gate_high);
    in.forcedScans = m_pConfig->m_force_scan_counter;
    return in;
  }

  bool MatchesSuggestion() {
    const SuggestionMode mode = ModeOf(*m_pConfig);
    if (mode.IsEventMode()) {
      CSmartPointer<CWlanBssEntry> unused;
      return CGlobalQUAYPolicy::IsConnectedToSuggestedBest_ETW(
          &m_Adapter, m_Entries, m_pBest->m_SSIDW, m_pBest->GetBssid(), &unused);
    }
    return mode.popup && m_pConfig->m_Popup.GetMemo().HasAp(m_pBest->m_SSIDW, m_pBest->m_BSSIDText);
  }

  void Act(FastScan outcome) {
    const std::int32_t forced = m_pConfig->m_force_scan_counter;
    RoundWatches::Step(m_Idx, StepOf(outcome), m_pBest.get());
    switch (outcome) {
      case FastScan::kAlreadySuggested:
        LOG_ADAPTER(
            m_Idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [not conn'd SAME/NO-REPEAT "
            u"pref-AP SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO "
            u"NOTHING\n",
            m_Idx, State(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid), m_Facts.quality, m_Mbps);
        return;
      case FastScan::kBusy:
        LOG_ADAPTER(
            m_Idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected][DEFERRED] IF-STATE: %i [CONNECTED to non preferred "
            u"SSID %s, HOWEVER Connected Bitrate too high: %0.3lf > %0.3lf] ...\n",
            m_Idx, State(), m_Facts.ssid, m_Mbps, m_pConfig->m_rate_gate_high.load());
        return;
      case FastScan::kNothingBetter:
        m_pConfig->m_force_scan_counter = 0;
        LOG_ADAPTER(
            m_Idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"!IsBetterCandidatePossible() - DO NOTHING %s\n",
            m_Idx, State(), m_Facts.ssid, m_Mbps,
            forced > 0 ? u"[Cleared F-COUNTER]" : u"[F-COUNTER already 0]");
        return;
      case FastScan::kAlreadyForced:
        LOG_ADAPTER(
            m_Idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"F-COUNT %i already nonzero\n",
            m_Idx, State(), m_Facts.ssid, m_Mbps, forced);
        return;
      case FastScan::kForceScans:
        LOG_ADAPTER(
            m_Idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"CALLING SetForceScanCounter(3)\n",
            m_Idx, State(), m_Facts.ssid, m_Mbps);
        m_pConfig->m_force_scan_counter = kForcedScans;
        return;
    }
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const double m_Mbps;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const BssEntryList& m_Entries;
  const ConnectionFacts& m_Facts;
  CSmartPointer<CWlanBssEntry> m_pBest;
};

}  // namespace

void CGlobalQUAYPolicy::EnabledFastScan_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                                  const ConnectionFacts& facts) {
  if (!pIf) {
    LOG_DEBUG(kNullInterfaceLog, u"EnabledFastScan_connected: pIf is NULL!\n");
    return;
  }
  FastScanRound(*pIf, entries, facts).Run();
}

void CGlobalQUAYPolicy::CheckEarlySuggestedBest(CWlanInterface* pIf, const BssEntryList& entries,
                                                const ConnectionFacts& facts) {
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  CSmartPointer<CWlanBssEntry> entry;
  if (!IsConnectedToSuggestedBest_ETW(pIf, entries, facts.ssid, facts.bssid, &entry) || !entry)
    return;
  LOG_ADAPTER(idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [EARLIER already CONNECTED to suggested AP - SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
              idx, pIf->GetInterfaceStateForLog(), facts.ssid, MAC_ARGS(facts.bssid), facts.quality,
              pIf->GetTrafficMbps());
  NotifyAlreadyBestAP(*entry, config->m_Etw, true);
  ReportSignalQuality(*config, *entry, facts.quality);
}

}  // namespace corvane
