// The choice: when a decision happens, not which access point wins.

#include <set>

#include "monitors/adapters_addresses.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/bss_entry_reports.h"
#include "policy/choice_rules.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kDenyDeferMs = 10000;
constexpr std::uint32_t kDenySleepMs = 3000;

// The facts of one choice, with the state asked from the platform at each use: it may change
// between two questions.
class Choice {
 public:
  Choice(CWlanInterface& adapter, const BssEntryList& entries, const ConnectionFacts& facts)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_pConfig(adapter.Config()),
        m_Entries(entries),
        m_Facts(facts),
        m_Flags(*m_pConfig),
        m_Mode(ModeOf(*m_pConfig)),
        m_bEnabled(CGlobalQUAYPolicy::IsEnabled(*m_pConfig)) {}

  void Run() {
    if (LeaveDeniedAp()) return;
    if (m_Entries.empty()) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:BssEntriesList [SORTED LIST] is empty... "
                  u"abort! [%s]",
                  m_Idx, m_Facts.ssid);
      RoundWatches::Step(m_Idx, RoundStep::kNoCandidates);
      return;
    }
    if (IsRoamingInhibited()) return;
    CheckLastSuggestion();
    CountRedNetworks();
    ReportScore();
    if (!IsStateConnected() || HasGoodQuality()) m_Adapter.m_emergency_armed = true;
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
    return m_Adapter.GetInterfaceState() == platform::wlan_interface_state_connected;
  }
  bool HasGoodQuality() const { return m_Facts.quality >= m_pConfig->m_LQCThreshold; }
  static std::uint64_t Now() { return Os().clock.GetTickCount64(); }

  // True when the connection was to a denied access point and has been ended.
  bool LeaveDeniedAp() {
    if (!m_bEnabled) {
      LogDisabled();
      return false;
    }
    if (!m_Facts.connected ||
        !IsDenied(m_pConfig->m_Denylist.Rows(), m_Facts.ssid, m_Facts.bssid)) {
      return false;
    }
    RoundWatches::Step(m_Idx, RoundStep::kDeniedLeft);
    try {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"\n[%i] IF-STATE: %i [Disconnecting DENYLIST AP: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
          m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid));
      const WString name = NetworkDisplayName(m_Facts.ssid, m_Adapter.GetCurrentChannel());
      m_Adapter.DisconnectSynchronous(name);
      m_pConfig->SetString(value::kDisconnectedNetwork, name);
      m_pConfig->m_deny_defer_until = Now() + kDenyDeferMs;
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i] IF-STATE: %i - Extra sleep after Denylist disconnect...\n", m_Idx,
                  m_Adapter.GetInterfaceStateForLog());
      Os().threads.Sleep(kDenySleepMs);
      return true;
    } catch (const Exception& e) {
      LOG_ERROR(u"CGlobalQUAYPolicy::MakeChoice:[disconn denylist] Exception: %S, SSID=%s",
                e.what(), m_Facts.ssid);
    } catch (const std::exception& e) {
      LOG_ERROR(u"CGlobalQUAYPolicy::MakeChoice:[disconn denylist] std:exception: %S, SSID=%s",
                e.what(), m_Facts.ssid);
    }
    return false;
  }

  void LogDisabled() const {
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"\n[%i][Pilot=%i][_DISABLED MODE_][ENABLED %i/%i][ROAM-E %i/%i]\n", m_Idx,
                m_Flags.pilot, m_Flags.enabled, m_Flags.serviceEnabled, m_Flags.roaming,
                m_Flags.gatewayRoaming);
  }

  bool IsRoamingInhibited() const {
    const std::uint64_t since = m_pConfig->GetRoamingInhibitTick();
    if (since == 0) return false;
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"\n[%i] [SKIP CHOICE] - ROAMING INHIBITED %I64u ticks [age: %0.2lf secs][disconnected "
        u"%0.2lf secs]\n",
        m_Idx, since, static_cast<double>(m_pConfig->GetRoamingInhibitAgeMs()) / 1000.0,
        static_cast<double>(m_Adapter.GetDisconnectedAgeMs()) / 1000.0);
    RoundWatches::Step(m_Idx, RoundStep::kRoamingInhibit);
    return true;
  }

  // A suggestion stands as long as it keeps its place in the list; else it is withdrawn.
  void CheckLastSuggestion() {
    const std::int32_t position = m_Adapter.m_last_suggested_pos;
    const bool inList = position >= 0 && static_cast<std::size_t>(position) < m_Entries.size();
    const WString* there =
        inList ? &m_Entries[static_cast<std::size_t>(position)]->m_BSSIDText : nullptr;
    const SuggestionCheck check =
        CheckSuggestion(position, there, m_Adapter.m_last_suggested_bssid);
    if (check == SuggestionCheck::kNone || check == SuggestionCheck::kStands) return;
    RoundWatches::Step(m_Idx, RoundStep::kSuggestionWithdrawn);
    if (check == SuggestionCheck::kDisplaced) {
      m_pConfig->SetString(value::kSuggestedNetwork, u"");
      m_pConfig->SetString(value::kSuggestedNetworkSSID, u"");
      m_pConfig->SetString(value::kSuggestedNetworkBSSID, u"");
    }
    if (m_Mode.IsEventMode()) {
      MacAddress bssid{};
      CSmartPointer<CWlanBssEntry> entry;
      if (MacStringToBinary(u'-', m_Adapter.m_last_suggested_bssid, &bssid) &&
          m_Adapter.FindBssEntry(m_Adapter.m_last_suggested_ssid, bssid, &entry)) {
        NotifyAlreadyBestAP(*entry, m_pConfig->m_Etw, false);
      }
    }
    ForgetSuggestion(m_Adapter);
  }

  // A disconnected adapter whose surroundings have changed asks for fresh scans.
  void CountRedNetworks() {
    if (IsStateConnected()) return;
    std::set<WStringView> red;
    for (const auto& entry : m_Entries) {
      if (entry->m_unscanned_count > 0) red.insert(entry->m_SSIDW);
    }
    const std::int32_t forced = m_pConfig->m_force_scan_counter;
    switch (JudgeRedNetworks(red.size(), forced)) {
      case RedNetworks::kFew:
        LOG_ADAPTER(
            m_Idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[ONLY %u RED NETWORK(s) FOUND] F-COUNTER = %i\n",
            m_Idx, red.size(), forced);
        return;
      case RedNetworks::kAlreadyForced:
        LOG_ADAPTER(
            m_Idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] F-COUNTER already %i\n",
            m_Idx, red.size(), forced);
        return;
      case RedNetworks::kForceScans:
        m_pConfig->m_force_scan_counter = kForcedScans;
        RoundWatches::Step(m_Idx, RoundStep::kSurroundingsChanged);
        LOG_ADAPTER(
            m_Idx, kPolicyLog,
            u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] SET F-COUNTER to 3\n",
            m_Idx, red.size());
        return;
    }
  }

  void ReportScore() {
    if (!IsStateConnected()) return;
    const std::uint64_t now = Now();
    if (!IsScoreReportDue(now, m_Adapter.m_last_score_notify_tick, m_pConfig->GetMainLoopSleepMs()))
      return;
    m_Adapter.NotifyCurrentNetworkScore(
        m_Adapter.GetScoreFromBssEntry(m_Facts.ssid, m_Facts.bssid, true), m_Facts.bssid);
    m_Adapter.m_last_score_notify_tick = now;
  }

  // Without a fresh scan there is nothing to decide for a good connection; at most a burst of scans
  // is asked for.
  bool SkipStaleRound() {
    if (!IsStale({m_Adapter.IsScanFresh(), IsStateConnected(), HasGoodQuality(), m_bEnabled}))
      return false;
    if (m_Mode.IsEventMode()) {
      CGlobalQUAYPolicy::CheckEarlySuggestedBest(&m_Adapter, m_Entries, m_Facts);
    }
    const std::uint32_t interval = m_pConfig->GetScanIntervalSecs();
    const StaleAction action =
        ActOnStaleRound(CGlobalConfigContainer::GetInstance().m_bULScan, interval);
    if (action == StaleAction::kDecide) return false;
    RoundWatches::Step(m_Idx, RoundStep::kStale);
    if (action == StaleAction::kFastScan) {
      CGlobalQUAYPolicy::EnabledFastScan_connected(&m_Adapter, m_Entries, m_Facts);
    }
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"\n[%i][Pilot=%i][SKIP CHOICE & STALE: scanLoop %i][interval %lu, F-COUNTER %i, %I64u "
        u"secs][ifstate %i][LQ %lu >= %lu][ENABLED %i/%i][ROAM-E %i/%i]%s\n",
        m_Idx, m_Flags.pilot, m_Adapter.IsScanFresh(), interval,
        m_pConfig->m_force_scan_counter.load(), (Now() - m_Adapter.m_last_score_notify_tick) / 1000,
        m_Adapter.GetInterfaceStateForLog(), m_Facts.quality, m_pConfig->m_LQCThreshold.load(),
        m_Flags.enabled, m_Flags.serviceEnabled, m_Flags.roaming, m_Flags.gatewayRoaming,
        LastSuggestionText(true));
    return true;
  }

  // "" in autoswitch; else the last suggestion, with its SSID or without.
  WString LastSuggestionText(bool withSsid) const {
    if (!m_Mode.passive) return {};
    const WString ssid = withSsid ? m_Adapter.m_last_suggested_ssid + u" " : WString();
    return Format(u"[last %s: %s%s, pos: %i]", m_Mode.popup ? u"pop" : u"etw", ssid,
                  m_Adapter.m_last_suggested_bssid, m_Adapter.m_last_suggested_pos);
  }

  void RaiseEmergency() {
    const std::int32_t forced = m_pConfig->m_force_scan_counter;
    switch (JudgeEmergency(
        {IsStateConnected(), HasGoodQuality(), m_bEnabled, m_Adapter.m_emergency_armed, forced})) {
      case Emergency::kNone:
        return;
      case Emergency::kForceScans:
        LOG_ADAPTER(
            m_Idx, kPolicyLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
            u"%lu] CALLING SetForceScanCounter(3)\n",
            m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, m_Facts.quality,
            m_pConfig->m_LQCThreshold.load());
        m_pConfig->m_force_scan_counter = kForcedScans;
        RoundWatches::Step(m_Idx, RoundStep::kWeakConnection);
        m_Adapter.m_emergency_armed = false;
        return;
      case Emergency::kAlreadyForced:
        LOG_ADAPTER(
            m_Idx, kPolicyLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
            u"%lu] F-COUNT %i already nonzero\n",
            m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, m_Facts.quality,
            m_pConfig->m_LQCThreshold.load(), forced);
        return;
    }
  }

  void LogChoice() const {
    LOG_ADAPTER(
        m_Idx, kPolicyLog,
        u"\n[%i][Pilot=%i][IF-State %i][wk %i][%s][LQ %lu vs %lu][ENABLED %i/%i][ROAM-E %i/%i]"
        u"[ALLOWSTALE=%i]%s\n",
        m_Idx, m_Flags.pilot, m_Adapter.GetInterfaceStateForLog(),
        WeekSince(CGlobalConfigContainer::GetInstance().m_InstallTime, platform::UnixSecondsNow()),
        m_Mode.passive ? u"MAKE CHOICE - PASSIVE" : u"MAKE CHOICE", m_Facts.quality,
        m_pConfig->m_LQCThreshold.load(), m_Flags.enabled, m_Flags.serviceEnabled, m_Flags.roaming,
        m_Flags.gatewayRoaming, 0, LastSuggestionText(false));
  }

  void DecideConnected() {
    const std::int32_t state = m_Adapter.GetInterfaceState();
    if (state == platform::wlan_interface_state_connected) {
      m_Adapter.m_consec_disconnects = 0;
      CGlobalQUAYPolicy::MakeChoice_connected(&m_Adapter, m_Entries, m_Facts);
    } else {
      m_Adapter.RollSwitchPeriod();
      RoundWatches::Step(m_Idx, RoundStep::kStateUnclear);
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [no normal decision check]..............\n", m_Idx,
                  state);
    }
  }

  void DecideDisconnected() {
    m_Adapter.RollSwitchPeriod();
    if (WaitsAfterDeny()) {
      RoundWatches::Step(m_Idx, RoundStep::kDeniedJustLeft);
      return;
    }
    ResetReporter();
    // On battery a window runs out with its flag still on: it has no effect.
    m_Adapter.m_consec_disconnects +=
        DisconnectStep(m_pConfig->m_no_delay && m_pConfig->IsNoDelayOpen());
    const std::uint32_t count = m_Adapter.m_consec_disconnects;
    if (count >= kDisconnectsForDecision) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _CALLING_ MakeChoice_disconnected() "
                  u"[consec discon %lu "
                  u"== %lu]\n",
                  m_Idx, count, count);
      CGlobalQUAYPolicy::MakeChoice_disconnected(&m_Adapter, m_Entries);
    } else {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _DEFER_ MakeChoice_disconnected() [consec "
                  u"discon %lu < "
                  u"%lu]\n",
                  m_Idx, count, kDisconnectsForDecision);
      RoundWatches::Step(m_Idx, RoundStep::kCountsDisconnects);
    }
  }

  bool WaitsAfterDeny() const {
    const std::uint64_t until = m_pConfig->m_deny_defer_until, now = Now();
    const DenyDeferral deferral = JudgeDenyDeferral(until, now);
    if (deferral == DenyDeferral::kWait) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRING DECISION due to "
                  u"prior Denylist "
                  u"disconnect, expire tick time=%I64u, now=%I64u",
                  m_Idx, until, now);
    } else if (deferral == DenyDeferral::kOver) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRMENT NOT ENFORCED... expire "
          u"time=%I64u, now=%I64u",
          m_Idx, until, now);
    }
    return deferral == DenyDeferral::kWait;
  }

  // What was said of the connection is over: the next one is reported anew.
  void ResetReporter() {
    if (m_Mode.IsEventMode()) m_pConfig->m_Etw.NotifyClearPreviousSignalQualityBAD();
    m_pConfig->m_Etw.ResetBest();
    m_pConfig->m_Etw.ResetQualityBad();
    m_pConfig->m_Etw.ResetQualityGood();
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const BssEntryList& m_Entries;
  const ConnectionFacts& m_Facts;
  const RoundFlags m_Flags;
  const SuggestionMode m_Mode;
  const bool m_bEnabled;
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

void CGlobalQUAYPolicy::MakeChoice(CWlanInterface* pIf, const BssEntryList& entries,
                                   const ConnectionFacts& facts) {
  Choice(*pIf, entries, facts).Run();
}

void CGlobalQUAYPolicy::MakeChoice_disconnected(CWlanInterface* pIf, const BssEntryList& entries) {
  if (!pIf) {
    LOG_DEBUG(kNullInterfaceLog, u"MakeChoice_disconnected: pIf is NULL!\n");
    return;
  }
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  pIf->ClearAllCandidateCounters("TOP OF MakeChoice_disconnected");
  if (!IsEnabled(*config)) {
    LOG_ADAPTER(idx, kPolicyLog, u"[%i]Interface is disconnected, but _WE ARE DISABLED_: %i/%i\n",
                idx, config->m_Enabled.load(),
                CGlobalConfigContainer::GetInstance().m_bServiceEnable.load());
    RoundWatches::Step(idx, RoundStep::kDisabled);
    return;
  }
  if (const std::uint32_t lans = CountConnectedLans(); lans >= 1) {
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"[%i]Interface is disconnected, BUT we have %u CONNECTED LAN(s)... _____>>> do nothing "
        u"<_____\n",
        idx, lans);
    RoundWatches::Step(idx, RoundStep::kWiredLan);
    return;
  }
  if (!config->m_ForceAutoConnect && !config->m_network_switching) {
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"[%i]Interface is disconnected with Networking Switching is disabled ... do nothing\n",
        idx);
    RoundWatches::Step(idx, RoundStep::kSwitchingOff);
    return;
  }
  ConnectToBestNoDebounce(pIf, entries, !config->m_ForceAutoConnect);
}

}  // namespace corvane
