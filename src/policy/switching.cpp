// Leaving a connection for a better access point, or suggesting it.

#include "policy/connect_attempt.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/roaming.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint32_t kInhibitAfterPopupMs = 5000;

// One walk down the sorted list, from the head.
class Switch {
 public:
  Switch(CWlanInterface& adapter, const BssEntryList& entries, std::int32_t score,
         const ConnectionFacts& facts)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_pConfig(adapter.Config()),
        m_Entries(entries),
        m_Score(score),
        m_Facts(facts) {}

  bool Run() {
    Step step = Step::kNext;
    for (std::size_t i = 0; i < m_Entries.size() && step == Step::kNext; ++i) {
      if (IsTarget(*m_Entries[i])) step = Take(*m_Entries[i], static_cast<std::int32_t>(i));
    }
    if (!m_bAttempted && step != Step::kSuggested) m_Adapter.RollSwitchPeriod();
    return step != Step::kNext;
  }

 private:
  enum class Step { kNext, kSettled, kSuggested };

  bool IsTarget(CWlanBssEntry& entry) {
    const MacAddress mac = entry.GetBssid();
    const bool ready = CGlobalQUAYPolicy::IsCandidateReady(&m_Adapter, &entry, m_Score);
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Adapter)) {
      LOG_ADAPTER(m_Idx, kPolicyLog, u"\n[%i][%s] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", m_Idx,
                  ready ? u"_AVOID[READY]_" : u"_AVOID_", entry.m_SSIDW, MAC_ARGS(mac));
      return false;
    }
    if (!ready) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i][NO-READY/SKIP-THIS] IF-STATE: %i [CONNECTED to diff SSID %s][CANDIDATE "
                  u"%s(center %u), counter %i][%0.2lf mbps]\n",
                  m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, entry.m_SSIDW,
                  entry.GetFrequencyKhz(), entry.PeekCandidate(), m_Adapter.GetTrafficMbps());
      return false;
    }
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"\n[%i] IF-STATE: %i [CONNECTED to diff SSID %s {%02x-%02x-%02x-%02x-%02x-%02x} vs "
        u"preferred %s(center %u)][Scores %i(new) > %i(old)? FTZ %i][%0.2lf mbps]\n",
        m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid),
        entry.m_SSIDW, entry.GetFrequencyKhz(), entry.GetScore(false), m_Score, 0,
        m_Adapter.GetTrafficMbps());
    m_pConfig->m_force_scan_counter = 0;
    return true;
  }

  Step Take(CWlanBssEntry& entry, std::int32_t position) {
    const MacAddress mac = entry.GetBssid();
    if (CGlobalQUAYPolicy::IsMonitorMode(*m_pConfig)) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"[%i] [DISABLED IN MONITOR MODE] SwitchConnectionToBest: _NO_ Connect/Suggest: %s "
          u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Idx, entry.m_SSIDW, MAC_ARGS(mac));
      RoundWatches::Step(m_Idx, RoundStep::kMonitorMode, &entry);
      return Step::kSettled;
    }
    if (mac == m_Facts.bssid) {
      LOG_ADAPTER(m_Idx, kPolicyLog, u"[%i] [__ALREADY?__] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  m_Idx, entry.m_SSIDW, MAC_ARGS(mac));
      RoundWatches::Step(m_Idx, RoundStep::kAlreadyThere, &entry);
      m_pConfig->SetConnectedNetwork(NetworkDisplayName(m_Facts.ssid, entry.m_Channel),
                                     m_Facts.ssid, entry.m_BSSIDText);
      return Step::kSettled;
    }
    const SuggestionMode mode = ModeOf(*m_pConfig);
    const bool roam = IsRoam(&m_Adapter, &entry, m_Facts.ssid) && !IsVetoed(entry, mode);
    const MoveWay way = WayOfSwitch(mode, roam, m_pConfig->IsRoamingEnabled());
    if (way == MoveWay::kConnect) return Connect(entry, roam) ? Step::kSettled : Step::kNext;
    Suggest(entry, position, way);
    return Step::kSuggested;
  }

  // While the suggestion of this very access point is open, the user decides.
  bool IsVetoed(const CWlanBssEntry& entry, const SuggestionMode& mode) {
    if (!IsSuggested(*m_pConfig, entry.m_SSIDW, entry.m_BSSIDText)) return false;
    const MacAddress mac = entry.GetBssid();
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"[%i] [ABORT ROAMING-SWITCH ON CURRENT %s SUGGESTION] %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                m_Idx, mode.popup ? u"POPUP" : u"ETW", entry.m_SSIDW, MAC_ARGS(mac));
    return true;
  }

  void Suggest(CWlanBssEntry& entry, std::int32_t position, MoveWay way) {
    const MacAddress mac = entry.GetBssid();
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"[%i] Clearing candidate counters & suggesting: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
        m_Idx, entry.m_SSIDW, MAC_ARGS(mac));
    m_Adapter.ClearAllCandidateCounters("BEFORE PASSIVE SUGGEST");

    const ApSummary suggested = SummaryOf(entry);
    const ApSummary current = SummaryOfConnection(m_Adapter, m_Facts, m_Score);
    const bool byEvent = way == MoveWay::kSuggestByEvent;
    const bool accepted =
        byEvent ? AskByEvent(entry, suggested, current) : AskByPopup(entry, suggested, current);
    RoundWatches::Step(m_Idx, StepOfSuggestion(byEvent, accepted), &entry);
    if (!accepted) return;
    m_Adapter.IncSwitchAttempt();
    RememberSuggestion(m_Adapter, entry, position);
    LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "[Adapter", m_Idx,
              "] SUGGEST AP: Current = ", BriefText(current),
              ", Suggestion: ", BriefText(suggested));
  }

  bool AskByEvent(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, m_pConfig->m_APScoreThreshold);
    return percent.shown && SuggestByEvent(*m_pConfig, entry, percent.percent, m_Facts.quality,
                                           ShortApSummary(suggested), ShortApSummary(current));
  }

  bool AskByPopup(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, 0);
    const bool accepted =
        percent.shown && SuggestByPopup(*m_pConfig, entry, percent.percent, m_Facts.quality,
                                        m_pConfig->m_LQCThreshold, ShortApSummary(suggested),
                                        ShortApSummary(current));
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"[%i] CGlobalQUAYPolicy::SwitchConnectionToBest: [***INHIBIT QUAY 5000 ***]\n",
                m_Idx);
    m_pConfig->Set_InhibitQUAY(kInhibitAfterPopupMs, "sw-pop");
    m_Adapter.TakeReservation(entry.GetBssid());
    return accepted;
  }

  SuggestionPercent Percent(std::int32_t score, std::uint32_t minimumPoints) const {
    return PercentOf(score, m_Score, minimumPoints,
                     CGlobalConfigContainer::GetInstance().m_ScoreDiffPct);
  }

  bool Connect(CWlanBssEntry& entry, bool roam) {
    const MacAddress mac = entry.GetBssid();
    m_bAttempted = true;
    m_Adapter.IncSwitchAttempt();
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"[%i] [roam=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", m_Idx, roam,
                entry.m_SSIDW, MAC_ARGS(mac));
    const ApSummary before = SummaryOfConnection(m_Adapter, m_Facts, m_Score);
    RoundWatches::Step(m_Idx, RoundStep::kSwitch, &entry);
    const ConnectOutcome outcome = TryConnectCounted(m_Adapter, *m_pConfig, entry, "switch");
    if (outcome.failed) {
      entry.m_candidate_counter = 0;
      m_Adapter.ReleaseReservation(mac);
      return false;
    }
    if (!outcome.connected) return true;
    CountMove(roam);
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"[%i] [roam=%i] Success connecting to %s [STATs: failed=%i, good=%i]\n", m_Idx,
                roam, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
    PublishConnection(m_Adapter, *m_pConfig, entry);
    const ApSummary after = SummaryOf(entry, m_Adapter);
    LogInfo(
        Format(u"[Adapter%i] AUTOSWITCH: %s --> %s", m_Idx, BriefText(before), BriefText(after)));
    NotifyConnectionChange(m_Adapter, *m_pConfig, u"Autoswitch", LongApSummary(after),
                           LongApSummary(before));
    return true;
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const BssEntryList& m_Entries;
  const std::int32_t m_Score;
  const ConnectionFacts& m_Facts;
  bool m_bAttempted = false;
};

}  // namespace

bool CGlobalQUAYPolicy::SwitchConnectionToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                               std::int32_t current_score,
                                               const ConnectionFacts& facts) {
  return Switch(*pIf, entries, current_score, facts).Run();
}

}  // namespace corvane
