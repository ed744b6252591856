// The choice: when a decision happens, not which access point wins.

#include <set>

#include "monitors/adapters_addresses.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/bss_entry_reports.h"
#include "policy/choice_rules.h"
#include "policy/decisions.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kDenyDeferMs = 10000;
constexpr std::uint32_t kDenySleepMs = 3000;

// The facts of one choice, with the state asked from the platform at each use: it may change
// between two questions.
class Choice {
 public:
  explicit Choice(const Round& round) : m_Round(round) {}

  void Run() {
    if (LeaveDeniedAp()) return;
    if (m_Round.candidates.empty()) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:BssEntriesList [SORTED LIST] is empty... "
                  u"abort! [%s]",
                  m_Round.idx, m_Round.facts.ssid);
      RoundWatches::Step(m_Round.idx, RoundStep::kNoCandidates);
      return;
    }
    if (IsRoamingInhibited()) return;
    CheckLastSuggestion();
    CountRedNetworks();
    ReportScore();
    if (!IsStateConnected() || m_Round.HasGoodQuality()) m_Round.adapter.m_emergency_armed = true;
    if (SkipStaleRound()) return;
    RaiseEmergency();
    LogChoice();
    if (IsStateConnected()) {
      DecideConnected();
    } else {
      DecideDisconnected();
    }
  }

 private:
  bool IsStateConnected() const {
    return m_Round.adapter.GetInterfaceState() == platform::wlan_interface_state_connected;
  }
  static std::uint64_t Now() { return Os().clock.GetTickCount64(); }

  // True when the connection was to a denied access point and has been ended.
  bool LeaveDeniedAp() {
    if (!m_Round.settings.IsEnabled()) {
      LogDisabled();
      return false;
    }
    if (!m_Round.facts.connected ||
        !IsDenied(m_Round.config->m_Denylist.Rows(), m_Round.facts.ssid, m_Round.facts.bssid)) {
      return false;
    }
    RoundWatches::Step(m_Round.idx, RoundStep::kDeniedLeft);
    try {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"\n[%i] IF-STATE: %i [Disconnecting DENYLIST AP: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
          MAC_ARGS(m_Round.facts.bssid));
      const WString name =
          NetworkDisplayName(m_Round.facts.ssid, m_Round.adapter.GetCurrentChannel());
      m_Round.adapter.DisconnectSynchronous(name);
      m_Round.config->SetString(value::kDisconnectedNetwork, name);
      m_Round.config->m_deny_defer_until = Now() + kDenyDeferMs;
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i] IF-STATE: %i - Extra sleep after Denylist disconnect...\n", m_Round.idx,
                  m_Round.adapter.GetInterfaceStateForLog());
      Os().threads.Sleep(kDenySleepMs);
      return true;
    } catch (const Exception& e) {
      LOG_ERROR(u"CGlobalQUAYPolicy::MakeChoice:[disconn denylist] Exception: %S, SSID=%s",
                e.what(), m_Round.facts.ssid);
    } catch (const std::exception& e) {
      LOG_ERROR(u"CGlobalQUAYPolicy::MakeChoice:[disconn denylist] std:exception: %S, SSID=%s",
                e.what(), m_Round.facts.ssid);
    }
    return false;
  }

  void LogDisabled() const {
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"\n[%i][Pilot=%i][_DISABLED MODE_][ENABLED %i/%i][ROAM-E %i/%i]\n", m_Round.idx,
                m_Round.settings.pilot, m_Round.settings.enabled, m_Round.settings.serviceEnabled,
                m_Round.settings.roaming, m_Round.settings.gatewayRoaming);
  }

  bool IsRoamingInhibited() const {
    const std::uint64_t since = m_Round.config->GetRoamingInhibitTick();
    if (since == 0) return false;
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"\n[%i] [SKIP CHOICE] - ROAMING INHIBITED %I64u ticks [age: %0.2lf secs][disconnected "
        u"%0.2lf secs]\n",
        m_Round.idx, since, static_cast<double>(m_Round.config->GetRoamingInhibitAgeMs()) / 1000.0,
        static_cast<double>(m_Round.adapter.GetDisconnectedAgeMs()) / 1000.0);
    RoundWatches::Step(m_Round.idx, RoundStep::kRoamingInhibit);
    return true;
  }

  // A suggestion stands as long as it keeps its place in the list; else it is withdrawn.
  void CheckLastSuggestion() {
    const std::int32_t position = m_Round.adapter.m_last_suggested_pos;
    const bool inList =
        position >= 0 && static_cast<std::size_t>(position) < m_Round.candidates.size();
    const WString* there =
        inList ? &m_Round.candidates[static_cast<std::size_t>(position)]->m_BSSIDText : nullptr;
    const SuggestionCheck check =
        CheckSuggestion(position, there, m_Round.adapter.m_last_suggested_bssid);
    if (check == SuggestionCheck::kNone || check == SuggestionCheck::kStands) return;
    RoundWatches::Step(m_Round.idx, RoundStep::kSuggestionWithdrawn);
    if (check == SuggestionCheck::kDisplaced) {
      m_Round.config->SetString(value::kSuggestedNetwork, u"");
      m_Round.config->SetString(value::kSuggestedNetworkSSID, u"");
      m_Round.config->SetString(value::kSuggestedNetworkBSSID, u"");
    }
    if (m_Round.settings.IsEventMode()) {
      MacAddress bssid{};
      CSmartPointer<CWlanBssEntry> entry;
      if (MacStringToBinary(u'-', m_Round.adapter.m_last_suggested_bssid, &bssid) &&
          m_Round.adapter.FindBssEntry(m_Round.adapter.m_last_suggested_ssid, bssid, &entry)) {
        NotifyAlreadyBestAP(*entry, m_Round.config->m_Etw, false);
      }
    }
    ForgetSuggestion(m_Round.adapter);
  }

  // A disconnected adapter whose surroundings have changed asks for fresh scans.
  void CountRedNetworks() {
    if (IsStateConnected()) return;
    std::set<WStringView> red;
    for (const auto& entry : m_Round.candidates) {
      if (entry->m_unscanned_count > 0) red.insert(entry->m_SSIDW);
    }
    const std::int32_t forced = m_Round.config->m_force_scan_counter;
    switch (JudgeRedNetworks(red.size(), forced)) {
      case RedNetworks::kFew:
        LOG_ADAPTER(
            m_Round.idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[ONLY %u RED NETWORK(s) FOUND] F-COUNTER = %i\n",
            m_Round.idx, red.size(), forced);
        return;
      case RedNetworks::kAlreadyForced:
        LOG_ADAPTER(
            m_Round.idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] F-COUNTER already %i\n",
            m_Round.idx, red.size(), forced);
        return;
      case RedNetworks::kForceScans:
        m_Round.config->m_force_scan_counter = kForcedScans;
        RoundWatches::Step(m_Round.idx, RoundStep::kSurroundingsChanged);
        LOG_ADAPTER(
            m_Round.idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] SET F-COUNTER to 3\n",
            m_Round.idx, red.size());
        return;
    }
  }

  void ReportScore() {
    if (!IsStateConnected()) return;
    const std::uint64_t now = Now();
    if (!IsScoreReportDue(now, m_Round.adapter.m_last_score_notify_tick,
                          m_Round.config->GetMainLoopSleepMs()))
      return;
    m_Round.adapter.NotifyCurrentNetworkScore(
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, true),
        m_Round.facts.bssid);
    m_Round.adapter.m_last_score_notify_tick = now;
  }

  // Without a fresh scan there is nothing to decide for a good connection; at most a burst of scans
  // is asked for.
  bool SkipStaleRound() {
    if (!IsStale({m_Round.adapter.IsScanFresh(), IsStateConnected(), m_Round.HasGoodQuality(),
                  m_Round.settings.IsEnabled()}))
      return false;
    if (m_Round.settings.IsEventMode()) {
      CheckEarlySuggestedBest(m_Round);
    }
    const std::uint32_t interval = m_Round.config->GetScanIntervalSecs();
    const StaleAction action = ActOnStaleRound(m_Round.settings.decideStale, interval);
    if (action == StaleAction::kDecide) return false;
    RoundWatches::Step(m_Round.idx, RoundStep::kStale);
    if (action == StaleAction::kFastScan) {
      EnabledFastScan_connected(m_Round);
    }
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"\n[%i][Pilot=%i][SKIP CHOICE & STALE: scanLoop %i][interval %lu, F-COUNTER %i, %I64u "
        u"secs][ifstate %i][LQ %lu >= %lu][ENABLED %i/%i][ROAM-E %i/%i]%s\n",
        m_Round.idx, m_Round.settings.pilot, m_Round.adapter.IsScanFresh(), interval,
        m_Round.config->m_force_scan_counter.load(),
        (Now() - m_Round.adapter.m_last_score_notify_tick) / 1000,
        m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.quality,
        m_Round.settings.qualityThreshold, m_Round.settings.enabled,
        m_Round.settings.serviceEnabled, m_Round.settings.roaming, m_Round.settings.gatewayRoaming,
        LastSuggestionText(true));
    return true;
  }

  // "" in autoswitch; else the last suggestion, with its SSID or without.
  WString LastSuggestionText(bool withSsid) const {
    if (!m_Round.settings.passive) return {};
    const WString ssid = withSsid ? m_Round.adapter.m_last_suggested_ssid + u" " : WString();
    return Format(u"[last %s: %s%s, pos: %i]", m_Round.settings.popup ? u"pop" : u"etw", ssid,
                  m_Round.adapter.m_last_suggested_bssid, m_Round.adapter.m_last_suggested_pos);
  }

  void RaiseEmergency() {
    const std::int32_t forced = m_Round.config->m_force_scan_counter;
    switch (
        JudgeEmergency({IsStateConnected(), m_Round.HasGoodQuality(), m_Round.settings.IsEnabled(),
                        m_Round.adapter.m_emergency_armed, forced})) {
      case Emergency::kNone:
        return;
      case Emergency::kForceScans:
        LOG_ADAPTER(
            m_Round.idx, kPolicyLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
            u"%lu] CALLING SetForceScanCounter(3)\n",
            m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
            m_Round.facts.quality, m_Round.settings.qualityThreshold);
        m_Round.config->m_force_scan_counter = kForcedScans;
        RoundWatches::Step(m_Round.idx, RoundStep::kWeakConnection);
        m_Round.adapter.m_emergency_armed = false;
        return;
      case Emergency::kAlreadyForced:
        LOG_ADAPTER(
            m_Round.idx, kPolicyLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
            u"%lu] F-COUNT %i already nonzero\n",
            m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
            m_Round.facts.quality, m_Round.settings.qualityThreshold, forced);
        return;
    }
  }

  void LogChoice() const {
    LOG_ADAPTER(
        m_Round.idx, kPolicyLog,
        u"\n[%i][Pilot=%i][IF-State %i][wk %i][%s][LQ %lu vs %lu][ENABLED %i/%i][ROAM-E %i/%i]"
        u"[ALLOWSTALE=%i]%s\n",
        m_Round.idx, m_Round.settings.pilot, m_Round.adapter.GetInterfaceStateForLog(),
        WeekSince(CGlobalConfigContainer::GetInstance().m_InstallTime, platform::UnixSecondsNow()),
        m_Round.settings.passive ? u"MAKE CHOICE - PASSIVE" : u"MAKE CHOICE", m_Round.facts.quality,
        m_Round.settings.qualityThreshold, m_Round.settings.enabled,
        m_Round.settings.serviceEnabled, m_Round.settings.roaming, m_Round.settings.gatewayRoaming,
        0, LastSuggestionText(false));
  }

  void DecideConnected() {
    const std::int32_t state = m_Round.adapter.GetInterfaceState();
    if (state == platform::wlan_interface_state_connected) {
      m_Round.adapter.m_consec_disconnects = 0;
      MakeChoice_connected(m_Round);
    } else {
      m_Round.adapter.RollSwitchPeriod();
      RoundWatches::Step(m_Round.idx, RoundStep::kStateUnclear);
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [no normal decision check]..............\n",
                  m_Round.idx, state);
    }
  }

  void DecideDisconnected() {
    m_Round.adapter.RollSwitchPeriod();
    if (WaitsAfterDeny()) {
      RoundWatches::Step(m_Round.idx, RoundStep::kDeniedJustLeft);
      return;
    }
    ResetReporter();
    // On battery a window runs out with its flag still on: it has no effect.
    m_Round.adapter.m_consec_disconnects +=
        DisconnectStep(m_Round.config->m_no_delay && m_Round.config->IsNoDelayOpen());
    const std::uint32_t count = m_Round.adapter.m_consec_disconnects;
    if (count >= kDisconnectsForDecision) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _CALLING_ MakeChoice_disconnected() "
                  u"[consec discon %lu "
                  u"== %lu]\n",
                  m_Round.idx, count, count);
      MakeChoice_disconnected(m_Round);
    } else {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _DEFER_ MakeChoice_disconnected() [consec "
                  u"discon %lu < "
                  u"%lu]\n",
                  m_Round.idx, count, kDisconnectsForDecision);
      RoundWatches::Step(m_Round.idx, RoundStep::kCountsDisconnects);
    }
  }

  bool WaitsAfterDeny() const {
    const std::uint64_t until = m_Round.config->m_deny_defer_until, now = Now();
    const DenyDeferral deferral = JudgeDenyDeferral(until, now);
    if (deferral == DenyDeferral::kWait) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRING DECISION due to "
                  u"prior Denylist "
                  u"disconnect, expire tick time=%I64u, now=%I64u",
                  m_Round.idx, until, now);
    } else if (deferral == DenyDeferral::kOver) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRMENT NOT ENFORCED... expire "
          u"time=%I64u, now=%I64u",
          m_Round.idx, until, now);
    }
    return deferral == DenyDeferral::kWait;
  }

  // What was said of the connection is over: the next one is reported anew.
  void ResetReporter() {
    if (m_Round.settings.IsEventMode()) m_Round.config->m_Etw.NotifyClearPreviousSignalQualityBAD();
    m_Round.config->m_Etw.ResetBest();
    m_Round.config->m_Etw.ResetQualityBad();
    m_Round.config->m_Etw.ResetQualityGood();
  }

  const Round& m_Round;
};

// A wired connection keeps the adapter quiet.
std::uint32_t CountConnectedLans() {
  const auto adapters = CAdaptersAddresses::CreateObject();
  adapters->Initialize();
  std::uint32_t total = 0, lans = 0;
  adapters->CountConnectedAdapters(&total, &lans);
  return lans;
}

}  // namespace

void MakeChoice(const Round& round) { Choice(round).Run(); }

void MakeChoice_disconnected(const Round& round) {
  const RoundSettings& settings = round.settings;
  round.adapter.ClearAllCandidateCounters("TOP OF MakeChoice_disconnected");
  if (!settings.IsEnabled()) {
    LOG_ADAPTER(round.idx, kPolicyLog,
                u"[%i]Interface is disconnected, but _WE ARE DISABLED_: %i/%i\n", round.idx,
                settings.enabled, settings.serviceEnabled);
    RoundWatches::Step(round.idx, RoundStep::kDisabled);
    return;
  }
  if (const std::uint32_t lans = CountConnectedLans(); lans >= 1) {
    LOG_ADAPTER(round.idx, kPolicyLog,
                u"[%i]Interface is disconnected, BUT we have %u CONNECTED LAN(s)... _____>>> do "
                u"nothing "
                u"<_____\n",
                round.idx, lans);
    RoundWatches::Step(round.idx, RoundStep::kWiredLan);
    return;
  }
  if (!settings.forceAutoConnect && !settings.networkSwitching) {
    LOG_ADAPTER(
        round.idx, kPolicyLog,
        u"[%i]Interface is disconnected with Networking Switching is disabled ... do nothing\n",
        round.idx);
    RoundWatches::Step(round.idx, RoundStep::kSwitchingOff);
    return;
  }
  ConnectToBestNoDebounce(round, !settings.forceAutoConnect);
}

}  // namespace corvane
