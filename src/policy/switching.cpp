// Leaving a connection for a better access point, or suggesting it.

#include "policy/connect_attempt.h"
#include "policy/decisions.h"
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
  Switch(const Round& round, std::int32_t score) : m_Round(round), m_Score(score) {}

  bool Run() {
    Step step = Step::kNext;
    for (std::size_t i = 0; i < m_Round.candidates.size() && step == Step::kNext; ++i) {
      if (IsTarget(*m_Round.candidates[i]))
        step = Take(*m_Round.candidates[i], static_cast<std::int32_t>(i));
    }
    if (!m_bAttempted && step != Step::kSuggested) m_Round.adapter.RollSwitchPeriod();
    return step != Step::kNext;
  }

 private:
  enum class Step { kNext, kSettled, kSuggested };

  bool IsTarget(CWlanBssEntry& entry) {
    const MacAddress mac = entry.GetBssid();
    const bool ready = IsCandidateReady(m_Round, entry, m_Score);
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Round.adapter)) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog, u"\n[%i][%s] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  m_Round.idx, ready ? u"_AVOID[READY]_" : u"_AVOID_", entry.m_SSIDW,
                  MAC_ARGS(mac));
      return false;
    }
    if (!ready) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i][NO-READY/SKIP-THIS] IF-STATE: %i [CONNECTED to diff SSID %s][CANDIDATE "
                  u"%s(center %u), counter %i][%0.2lf mbps]\n",
                  m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
                  entry.m_SSIDW, entry.GetFrequencyKhz(), entry.PeekCandidate(),
                  m_Round.adapter.GetTrafficMbps());
      return false;
    }
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"\n[%i] IF-STATE: %i [CONNECTED to diff SSID %s {%02x-%02x-%02x-%02x-%02x-%02x} vs "
        u"preferred %s(center %u)][Scores %i(new) > %i(old)? FTZ %i][%0.2lf mbps]\n",
        m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
        MAC_ARGS(m_Round.facts.bssid), entry.m_SSIDW, entry.GetFrequencyKhz(),
        entry.GetScore(false), m_Score, 0, m_Round.adapter.GetTrafficMbps());
    m_Round.config->m_force_scan_counter = 0;
    return true;
  }

  Step Take(CWlanBssEntry& entry, std::int32_t position) {
    const MacAddress mac = entry.GetBssid();
    if (m_Round.settings.IsMonitorMode()) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] [DISABLED IN MONITOR MODE] SwitchConnectionToBest: _NO_ Connect/Suggest: %s "
          u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Round.idx, entry.m_SSIDW, MAC_ARGS(mac));
      RoundWatches::Step(m_Round.idx, RoundStep::kMonitorMode, &entry);
      return Step::kSettled;
    }
    if (mac == m_Round.facts.bssid) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] [__ALREADY?__] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", m_Round.idx,
                  entry.m_SSIDW, MAC_ARGS(mac));
      RoundWatches::Step(m_Round.idx, RoundStep::kAlreadyThere, &entry);
      m_Round.config->SetConnectedNetwork(NetworkDisplayName(m_Round.facts.ssid, entry.m_Channel),
                                          m_Round.facts.ssid, entry.m_BSSIDText);
      return Step::kSettled;
    }
    const SuggestionMode mode = m_Round.Mode();
    const bool roam = IsRoam(m_Round, entry) && !IsVetoed(entry, mode);
    const MoveWay way = WayOfSwitch(mode, roam, m_Round.settings.roaming);
    if (way == MoveWay::kConnect) return Connect(entry, roam) ? Step::kSettled : Step::kNext;
    Suggest(entry, position, way);
    return Step::kSuggested;
  }

  // While the suggestion of this very access point is open, the user decides.
  bool IsVetoed(const CWlanBssEntry& entry, const SuggestionMode& mode) {
    if (!IsSuggested(m_Round, entry)) return false;
    const MacAddress mac = entry.GetBssid();
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] [ABORT ROAMING-SWITCH ON CURRENT %s SUGGESTION] %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                m_Round.idx, mode.popup ? u"POPUP" : u"ETW", entry.m_SSIDW, MAC_ARGS(mac));
    return true;
  }

  void Suggest(CWlanBssEntry& entry, std::int32_t position, MoveWay way) {
    const MacAddress mac = entry.GetBssid();
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"[%i] Clearing candidate counters & suggesting: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
        m_Round.idx, entry.m_SSIDW, MAC_ARGS(mac));
    m_Round.adapter.ClearAllCandidateCounters("BEFORE PASSIVE SUGGEST");

    const ApSummary suggested = SummaryOf(entry);
    const ApSummary current = SummaryOfConnection(m_Round.adapter, m_Round.facts, m_Score);
    const bool byEvent = way == MoveWay::kSuggestByEvent;
    const bool accepted =
        byEvent ? AskByEvent(entry, suggested, current) : AskByPopup(entry, suggested, current);
    RoundWatches::Step(m_Round.idx, StepOfSuggestion(byEvent, accepted), &entry);
    if (!accepted) return;
    m_Round.adapter.IncSwitchAttempt();
    RememberSuggestion(m_Round.adapter, entry, position);
    LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "[Adapter", m_Round.idx,
              "] SUGGEST AP: Current = ", BriefText(current),
              ", Suggestion: ", BriefText(suggested));
  }

  bool AskByEvent(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, m_Round.config->m_APScoreThreshold);
    return percent.shown &&
           SuggestByEvent(*m_Round.config, entry, percent.percent, m_Round.facts.quality,
                          ShortApSummary(suggested), ShortApSummary(current));
  }

  bool AskByPopup(CWlanBssEntry& entry, const ApSummary& suggested, const ApSummary& current) {
    const SuggestionPercent percent = Percent(suggested.score, 0);
    const bool accepted =
        percent.shown && SuggestByPopup(*m_Round.config, entry, percent.percent,
                                        m_Round.facts.quality, m_Round.settings.qualityThreshold,
                                        ShortApSummary(suggested), ShortApSummary(current));
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] CGlobalQUAYPolicy::SwitchConnectionToBest: [***INHIBIT QUAY 5000 ***]\n",
                m_Round.idx);
    m_Round.config->Set_InhibitQUAY(kInhibitAfterPopupMs, "sw-pop");
    m_Round.adapter.TakeReservation(entry.GetBssid());
    return accepted;
  }

  SuggestionPercent Percent(std::int32_t score, std::uint32_t minimumPoints) const {
    return PercentOf(score, m_Score, minimumPoints, m_Round.settings.scorePercent);
  }

  bool Connect(CWlanBssEntry& entry, bool roam) {
    const MacAddress mac = entry.GetBssid();
    m_bAttempted = true;
    m_Round.adapter.IncSwitchAttempt();
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] [roam=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", m_Round.idx,
                roam, entry.m_SSIDW, MAC_ARGS(mac));
    const ApSummary before = SummaryOfConnection(m_Round.adapter, m_Round.facts, m_Score);
    RoundWatches::Step(m_Round.idx, RoundStep::kSwitch, &entry);
    const ConnectOutcome outcome = TryConnectCounted(m_Round, entry, "switch");
    if (outcome.failed) {
      entry.m_candidate_counter = 0;
      m_Round.adapter.ReleaseReservation(mac);
      return false;
    }
    if (!outcome.connected) return true;
    CountMove(roam);
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"[%i] [roam=%i] Success connecting to %s [STATs: failed=%i, good=%i]\n",
                m_Round.idx, roam, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
    PublishConnection(m_Round.adapter, *m_Round.config, entry);
    const ApSummary after = SummaryOf(entry, m_Round.adapter);
    LogInfo(Format(u"[Adapter%i] AUTOSWITCH: %s --> %s", m_Round.idx, BriefText(before),
                   BriefText(after)));
    NotifyConnectionChange(m_Round.adapter, *m_Round.config, u"Autoswitch", LongApSummary(after),
                           LongApSummary(before));
    return true;
  }

  const Round& m_Round;
  const std::int32_t m_Score;
  bool m_bAttempted = false;
};

}  // namespace

bool SwitchConnectionToBest(const Round& round, std::int32_t current) {
  return Switch(round, current).Run();
}

}  // namespace corvane
