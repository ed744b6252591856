// The choice: when a decision happens, not which access point wins.

#include <algorithm>
#include <set>

#include "config/settings/global_config_container.h"
#include "core/log/log.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "select/policy/policy.h"
#include "select/policy/policy_text.h"

namespace corvane {

namespace {

constexpr std::uint64_t kChoiceLog = DBG(16) | DBG(17);
constexpr std::int32_t kForcedScans = 3;
constexpr std::size_t kRedNetworksForScan = 2;
constexpr std::uint32_t kScoreReportFloorMs = 10000;
constexpr std::uint32_t kShortScanIntervalSecs = 30;
constexpr std::uint32_t kDisconnectsForDecision = 30;
constexpr std::uint32_t kDisconnectStepNoDelay = 1;
constexpr std::uint32_t kDisconnectStep = 10;
constexpr std::uint32_t kWeekSecs = 604800;

// The facts of one choice, with the state asked from the platform at each use: it may change between
// two questions.
class Choice {
 public:
  Choice(CWlanInterface& adapter, const BssEntryList& entries, const ConnectionFacts& facts)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_pConfig(adapter.Config()),
        m_Entries(entries),
        m_Facts(facts),
        m_bEnabled(CGlobalQUAYPolicy::IsEnabled(*m_pConfig)) {}

  void Run() {
    if (!m_bEnabled) LogDisabled();
    if (m_Entries.empty()) {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:BssEntriesList [SORTED LIST] is empty... abort! [%s]",
                  m_Idx, m_Facts.ssid);
      return;
    }
    if (IsRoamingInhibited()) return;
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
  int ServiceEnabled() const { return CGlobalConfigContainer::GetInstance().m_bServiceEnable; }
  int RoamingEnabled() const { return m_pConfig->IsRoamingEnabled(); }
  int GatewayRoaming() const { return m_pConfig->IsGatewayRoaming(); }

  void LogDisabled() const {
    LOG_ADAPTER(m_Idx, kChoiceLog,
                u"\n[%i][Pilot=%i][_DISABLED MODE_][ENABLED %i/%i][ROAM-E %i/%i]\n", m_Idx,
                CGlobalConfigContainer::GetInstance().m_bEnablePilot.load(), m_pConfig->m_Enabled.load(),
                ServiceEnabled(), RoamingEnabled(), GatewayRoaming());
  }

  bool IsRoamingInhibited() const {
    const std::uint64_t since = m_pConfig->GetRoamingInhibitTick();
    if (since == 0) return false;
    LOG_ADAPTER(m_Idx, kChoiceLog,
                u"\n[%i] [SKIP CHOICE] - ROAMING INHIBITED %I64u ticks [age: %0.2lf secs][disconnected "
                u"%0.2lf secs]\n",
                m_Idx, since, static_cast<double>(m_pConfig->GetRoamingInhibitAgeMs()) / 1000.0,
                static_cast<double>(m_Adapter.GetDisconnectedAgeMs()) / 1000.0);
    return true;
  }

  // A disconnected adapter whose surroundings have changed asks for fresh scans.
  void CountRedNetworks() {
    if (IsStateConnected()) return;
    std::set<WStringView> red;
    for (const auto& entry : m_Entries) {
      if (entry->m_unscanned_count > 0) red.insert(entry->m_SSIDW);
    }
    const std::int32_t forced = m_pConfig->m_force_scan_counter;
    if (red.size() < kRedNetworksForScan) {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[ONLY %u RED NETWORK(s) FOUND] F-COUNTER = %i\n", m_Idx,
                  red.size(), forced);
    } else if (forced != 0) {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] F-COUNTER already %i\n", m_Idx,
                  red.size(), forced);
    } else {
      m_pConfig->m_force_scan_counter = kForcedScans;
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] SET F-COUNTER to 3\n", m_Idx,
                  red.size());
    }
  }

  void ReportScore() {
    if (!IsStateConnected()) return;
    const std::uint64_t now = Now();
    const std::uint64_t due = std::max(m_pConfig->GetMainLoopSleepMs(), kScoreReportFloorMs);
    if (now - m_Adapter.m_last_score_notify_tick < due) return;
    m_Adapter.NotifyCurrentNetworkScore(
        m_Adapter.GetScoreFromBssEntry(m_Facts.ssid, m_Facts.bssid, true), m_Facts.bssid);
    m_Adapter.m_last_score_notify_tick = now;
  }

  // Without a fresh scan there is nothing to decide for a good connection; at most a burst of scans is
  // asked for.
  bool SkipStaleRound() {
    if (m_Adapter.IsScanFresh() || !IsStateConnected() || !HasGoodQuality() || !m_bEnabled) return false;
    if (CGlobalConfigContainer::GetInstance().m_bULScan) return false;
    const std::uint32_t interval = m_pConfig->GetScanIntervalSecs();
    if (interval > kShortScanIntervalSecs) {
      CGlobalQUAYPolicy::EnabledFastScan_connected(&m_Adapter, m_Entries, m_Facts);
    }
    LOG_ADAPTER(m_Idx, kChoiceLog,
                u"\n[%i][Pilot=%i][SKIP CHOICE & STALE: scanLoop %i][interval %lu, F-COUNTER %i, %I64u "
                u"secs][ifstate %i][LQ %lu >= %lu][ENABLED %i/%i][ROAM-E %i/%i]\n",
                m_Idx, CGlobalConfigContainer::GetInstance().m_bEnablePilot.load(), m_Adapter.IsScanFresh(),
                interval, m_pConfig->m_force_scan_counter.load(), Now() / 1000,
                m_Adapter.GetInterfaceState(), m_Facts.quality, m_pConfig->m_LQCThreshold.load(),
                m_pConfig->m_Enabled.load(), ServiceEnabled(), RoamingEnabled(), GatewayRoaming());
    return true;
  }

  // A connection gone weak asks for scans, once until it recovers.
  void RaiseEmergency() {
    if (!IsStateConnected() || HasGoodQuality() || !m_bEnabled || !m_Adapter.m_emergency_armed) return;
    const std::int32_t forced = m_pConfig->m_force_scan_counter;
    if (forced == 0) {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < %lu] "
                  u"CALLING SetForceScanCounter(3)\n",
                  m_Idx, m_Adapter.GetInterfaceState(), m_Facts.ssid, m_Facts.quality,
                  m_pConfig->m_LQCThreshold.load());
      m_pConfig->m_force_scan_counter = kForcedScans;
      m_Adapter.m_emergency_armed = false;
    } else {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < %lu] "
                  u"F-COUNT %i already nonzero\n",
                  m_Idx, m_Adapter.GetInterfaceState(), m_Facts.ssid, m_Facts.quality,
                  m_pConfig->m_LQCThreshold.load(), forced);
    }
  }

  void LogChoice() const {
    auto& global = CGlobalConfigContainer::GetInstance();
    const std::uint32_t week = (platform::UnixSecondsNow() - global.m_InstallTime) / kWeekSecs + 1;
    LOG_ADAPTER(m_Idx, kChoiceLog,
                u"\n[%i][Pilot=%i][IF-State %i][wk %i][%s][LQ %lu vs %lu][ENABLED %i/%i][ROAM-E %i/%i]"
                u"[ALLOWSTALE=%i]\n",
                m_Idx, global.m_bEnablePilot.load(), m_Adapter.GetInterfaceState(), week,
                m_pConfig->IsAutoswitch() ? u"MAKE CHOICE" : u"MAKE CHOICE - PASSIVE", m_Facts.quality,
                m_pConfig->m_LQCThreshold.load(), m_pConfig->m_Enabled.load(), ServiceEnabled(),
                RoamingEnabled(), GatewayRoaming(), 0);
  }

  void DecideConnected() {
    const std::int32_t state = m_Adapter.GetInterfaceState();
    if (state == platform::wlan_interface_state_connected) {
      m_Adapter.m_consec_disconnects = 0;
      CGlobalQUAYPolicy::MakeChoice_connected(&m_Adapter, m_Entries, m_Facts);
    } else {
      m_Adapter.RollSwitchPeriod();
      LOG_ADAPTER(m_Idx, kChoiceLog, u"\n[%i] INTERFACE STATE: %i [no normal decision check]..............\n",
                  m_Idx, state);
    }
  }

  void DecideDisconnected() {
    m_Adapter.RollSwitchPeriod();
    m_Adapter.m_consec_disconnects += m_pConfig->m_no_delay ? kDisconnectStepNoDelay : kDisconnectStep;
    const std::uint32_t count = m_Adapter.m_consec_disconnects;
    if (count >= kDisconnectsForDecision) {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _CALLING_ MakeChoice_disconnected() [consec discon %lu "
                  u"== %lu]\n",
                  m_Idx, count, count);
      CGlobalQUAYPolicy::MakeChoice_disconnected(&m_Adapter, m_Entries);
    } else {
      LOG_ADAPTER(m_Idx, kChoiceLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice: _DEFER_ MakeChoice_disconnected() [consec discon %lu < "
                  u"%lu]\n",
                  m_Idx, count, kDisconnectsForDecision);
    }
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const BssEntryList& m_Entries;
  const ConnectionFacts& m_Facts;
  const bool m_bEnabled;
};

}  // namespace

void CGlobalQUAYPolicy::MakeChoice(CWlanInterface* pIf, const BssEntryList& entries,
                                   const ConnectionFacts& facts) {
  Choice(*pIf, entries, facts).Run();
}

void CGlobalQUAYPolicy::MakeChoice_disconnected(CWlanInterface* pIf, const BssEntryList& entries) {
  if (!pIf) {
    LOG_DEBUG(DBG(18), u"MakeChoice_disconnected: pIf is NULL!\n");
    return;
  }
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  pIf->ClearAllCandidateCounters("TOP OF MakeChoice_disconnected");
  if (!IsEnabled(*config)) {
    LOG_ADAPTER(idx, kChoiceLog, u"[%i]Interface is disconnected, but _WE ARE DISABLED_: %i/%i\n", idx,
                config->m_Enabled.load(), CGlobalConfigContainer::GetInstance().m_bServiceEnable.load());
    return;
  }
  if (!config->m_ForceAutoConnect && !config->m_network_switching) {
    LOG_ADAPTER(idx, kChoiceLog,
                u"[%i]Interface is disconnected with Networking Switching is disabled ... do nothing\n", idx);
    return;
  }
  ConnectToBestNoDebounce(pIf, entries, !config->m_ForceAutoConnect);
}

}  // namespace corvane
