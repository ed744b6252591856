#include "service/main_worker.h"

#include <algorithm>
#include <list>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "monitors/adapters_addresses.h"
#include "monitors/network_list_manager.h"
#include "monitors/power_window.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/policy.h"
#include "policy/round_watch.h"
#include "service/version.h"
#include "settings/global_config_container.h"
#include "store/process_flags.h"
#include "store/value_names.h"
#include "wlan/air_watch.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kLoopLog = DBG(31);
constexpr std::uint64_t kSleepLog = DBG(7) | DBG(25);

constexpr std::uint32_t kShutdownMs = 2000;
constexpr std::uint32_t kDestructorMs = 1000;
constexpr std::uint32_t kRadioOffMs = 3000;
constexpr std::uint32_t kRadioFailedMs = 2000;
constexpr std::uint32_t kDisabledSliceMs = 2000;
constexpr int kDisabledSlices = 5;
constexpr std::uint32_t kInhibitedMs = 1000;
constexpr std::uint32_t kVPNMs = 5000;
constexpr std::uint32_t kAirplaneMs = 3000;
constexpr std::uint32_t kNoDelayMs = 1000;
constexpr std::uint32_t kNormalSleepMs = 10000;
constexpr std::uint64_t kCredentialsTextMs = 60000;
constexpr std::uint64_t kRoamingInhibitDisconnectedMs = 30000;

// Who the adapter is and where it stands.
void LogAdapter(const CWlanInterface& adapter) {
  LOG_INFO(u"[%i]  Interface: %s %s %s", adapter.GetConfigIdx(), adapter.GetConnectionName(),
           adapter.GetGuidText(), adapter.GetDescription());
  adapter.Link().DumpIPAddresses();
  std::list<WString> networks;
  if (auto* const list = CNetworkListManager::Find())
    list->GetNetworkNamesForInterface(adapter.GetGuid(), &networks);
  for (const WString& name : networks) LOG_INFO(u"[%i]  Network: %s", adapter.GetConfigIdx(), name);
}

constexpr char16_t kRule[] =
    u"[%i]::::::::::::::::::::::::::::::::::::::::::::::::::::::::::[%s][%s]"
    u":::::::::::::::::::::::::::::::::::::::::::::::::::::::::::::::::\n";

void Sleep(std::uint32_t ms) { Os().threads.Sleep(ms); }

// A state that can't be read is no airplane mode.
bool IsAirplaneMode() {
  std::uint32_t mode = 0;
  return CQUAYInterfaceConfig::GetAirplaneMode(&mode) && mode == 1;
}

}  // namespace

CQUAYMainWorker::CQUAYMainWorker() : SmartObjEx("worker"), CThread("worker") {}

CQUAYMainWorker::~CQUAYMainWorker() { StopThread(kDestructorMs); }

void CQUAYMainWorker::Bind(int index, CWlanInterface* pInterface) {
  m_ConfigIdx = index;
  m_pInterface = pInterface;
  m_pConfig = pInterface ? pInterface->Config() : nullptr;
  m_pWokenInterface = m_pInterface;
}

void CQUAYMainWorker::RunThreadLoop() {
  ContainedAt("CQUAYMainWorker::RunThreadLoop", [this] { WorkThreadProc(); });
}

void CQUAYMainWorker::Shutdown() {
  const bool ended = StopThread(kShutdownMs);
  CPowerWindow::GetInstance().RemoveSubscriber(this);
  if (m_pConfig) {
    const CCritSecLock lock(m_pConfig->ObjectLock());
    if (!m_pConfig->SetString(value::kCandidatesCSV, u"")) {
      LOG_INFO(
          u"[%i] ===========> CQUAYMainWorker::Shutdown: [CLEAR LIST] SetRegistry_CandidatesCSV() "
          u"FAILED!\n",
          m_ConfigIdx);
    }
    if (!m_pConfig->SetString(value::kNONCandidatesCSV, u"")) {
      LOG_INFO(
          u"[%i] ===========> CQUAYMainWorker::Shutdown: [CLEAR LIST] "
          u"SetRegistry_NONCandidatesCSV() "
          u"FAILED!\n",
          m_ConfigIdx);
    }
    m_pConfig->SetVPNInhibited(false);
    m_pConfig->SetAirplaneInhibited(false);
    m_pConfig->SetRadioInhibited(false);
    m_pConfig->SetString(value::kProfiledNetworksInRangeJson, u"[]");
  }
  // A thread that was given up keeps what it works on until it has unwound, and this object with
  // it.
  if (!ended) return;
  m_Connection = {};
  m_pLastInterferenceEvent.reset();
  m_pInterface.reset();
  m_pConfig.reset();
}

void CQUAYMainWorker::OnResume() {
  m_bPowerResumeSeen = true;
  if (m_pWokenInterface) m_pWokenInterface->Link().ForgetLastConnectedSsid();
}

void CQUAYMainWorker::OnSuspend() { m_bPowerSuspendSeen = true; }

void CQUAYMainWorker::WorkThreadProc() {
  CPowerWindow::GetInstance().AddSubscriber(this);
  if (m_pInterface) {
    m_pConfig->SetString(value::kSuggestedNetwork, u"");
    m_pConfig->SetString(value::kProfiledNetworksInRangeJson, u"[]");
  }
  while (AwaitRadio()) {
    PrepareRunning();
    while (GoesOn() && !m_pInterface->IsRadioOff()) {
      RoundWatches::RoundBegins(m_ConfigIdx, *m_pInterface);
      const bool whole = RunRound();
      RoundWatches::RoundEnds(m_ConfigIdx);
      if (!whole) continue;
      SleepBetweenRounds();
      ++m_Round;
    }
    const bool ended = KillNudgeDialog();
    LOG_ADAPTER(m_ConfigIdx, DBG(8),
                u"[%i]CQUAYMainWorker::WorkThreadProc:[exit] KillNudgeDialog() %S", m_ConfigIdx,
                ended ? "SUCCESS" : "FAILED");
  }
  LOG_ADAPTER(m_ConfigIdx, kLoopLog, u"[%i]CQUAYMainWorker::WorkThreadProc: >>>>> [EXIT] <<<<<",
              m_ConfigIdx);
}

bool CQUAYMainWorker::AwaitRadio() {
  while (GoesOn()) {
    m_bNoDelayActive = false;
    m_pConfig->ClearStatusMessage(kStatusNeedCredentials);
    bool radioOn = false;
    bool answered = false;
    const auto ask = [&] {
      radioOn = IsRadioSeenOn();
      answered = true;
    };
    Contained(ask, [this](const Failure& failure) {
      LOG_ERROR(u"[%i]CQUAYMainWorker::WorkThreadProc:[early check loop] %S: %S%S", m_ConfigIdx,
                failure.Kind(), failure.what,
                failure.code == platform::ERROR_NOT_FOUND
                    ? ", ERROR_NOT_FOUND ==> set RadioOn = false"
                    : "");
    });
    if (radioOn) return true;
    if (!answered) {
      m_pConfig->SetRadioInhibited(true);
      TellRadioOff();
      Sleep(kRadioFailedMs);
      continue;
    }
    m_pConfig->SetDWORD(value::kRadioEnabled, 0);
    m_pConfig->SetStatusMessage(kStatusRadioDisabled);
    LOG_ADAPTER(
        m_ConfigIdx, kLoopLog,
        u"[%i]CQUAYMainWorker::WorkThreadProc:[early check loop] BAD RADIO STATE .... SLEEPING",
        m_ConfigIdx);
    m_pConfig->SetRadioInhibited(true);
    TellRadioOff();
    Sleep(kRadioOffMs);
  }
  return false;
}

void CQUAYMainWorker::TellRadioOff() const {
  RoundWatches::RoundBegins(m_ConfigIdx, *m_pInterface);
  RoundWatches::Step(m_ConfigIdx, RoundStep::kRadioOff);
  RoundWatches::RoundEnds(m_ConfigIdx);
}

bool CQUAYMainWorker::IsRadioSeenOn() {
  m_pInterface->DetermineInterfaceCapability();
  m_pInterface->EnumerateALLAPProfiles();
  platform::WLAN_RADIO_STATE state;
  m_pInterface->QueryRadioState(&state);
  m_pInterface->StoreRadioState(state);
  return !m_pInterface->IsRadioOff();
}

void CQUAYMainWorker::PrepareRunning() {
  m_pConfig->SetRadioInhibited(false);
  m_pConfig->ClearStatusMessage(kStatusRadioDisabled);
  m_pConfig->SetDWORD(value::kRadioEnabled, 1);
  m_pInterface->RefreshIPInfo();
  m_pInterface->DetermineInterfaceCapability();
  if (const log::Open open(m_ConfigIdx, kLoopLog); open) LogAdapter(*m_pInterface);
  m_forcedArbitrary.clear();
  m_pConfig->m_SelectArbitrary.LoadConfiguration(&m_forcedArbitrary);
  m_pConfig->m_Denylist.LoadFromFileAndRegistry(*m_pConfig);
  m_pConfig->m_Allowlist.LoadFromFileAndRegistry(*m_pConfig);
  m_Round = 0;
  LOG_ADAPTER(m_ConfigIdx, kLoopLog, kRule, m_ConfigIdx, kVersion, kBuildDate);
}

bool CQUAYMainWorker::RunRound() {
  RefreshSettings();
  if (IsHeldBack(IsBlockedByVPN())) return false;
  UpdateConnectionState();
  m_pInterface->Profile().OnRound({Os().clock.GetTickCount64(), m_Connection.connected,
                                   m_Connection.bssid, m_Connection.quality,
                                   m_pInterface->GetTrafficMbps()});
  const bool behind = CWifiClientContainer::GetInstance().IsBehindAnother(*m_pInterface);
  m_pInterface->NoteShared(behind ? m_Connection.bssid : MacAddress{});
  ReleaseRoamingInhibit();
  LatchToPrivate();
  CGlobalQUAYPolicy::UpdateAssociateLQPegging(m_pInterface.get(), m_Connection.connected,
                                              &m_Connection.quality, m_Connection.ssid,
                                              m_Connection.bssid, "LOOP");
  if (m_Connection.entry) {
    HandleQUAYSpecialEtwEvents(m_Connection.entry.get(), "LOOP");
    m_Connection.entry.reset();
  } else if (!m_pInterface->IsConnected()) {
    HandleQUAYSpecialEtwEvents(nullptr, "LOOP [disconnected]");
  }
  if (!PassesCheckPoint()) return false;
  const bool powerEvent = TakePowerEvents();
  Discover(powerEvent || m_Round == 0);
  m_pInterface->ApplyPreferredRows(m_forcedArbitrary);
  m_pInterface->ApplyDenyRows(m_pConfig->m_Denylist.Rows());
  if (!PassesCheckPoint()) return false;
  DecideUnderLock();
  LOG_ADAPTER(m_ConfigIdx, kLoopLog, kRule, m_ConfigIdx, kVersion, kBuildDate);
  return PassesCheckPoint();
}

// Airplane mode, a disabled adapter, the inhibit clock and a VPN, in this order.
bool CQUAYMainWorker::IsHeldBack(bool vpnBlock) {
  if (IsAirplaneMode()) {
    m_pConfig->SetAirplaneInhibited(true);
    LOG_ADAPTER(m_ConfigIdx, kLoopLog,
                u"[%i]CQUAYMainWorker::WorkThreadProc[LOOP] - AIRPLANE MODE - SLEEPING... "
                u"[__CLEARING ROAMING "
                u"INHIBIT__]",
                m_ConfigIdx);
    m_pConfig->ClearRoamingInhibit();
    RoundWatches::Step(m_ConfigIdx, RoundStep::kAirplaneMode);
    Sleep(kAirplaneMs);
    return true;
  }
  m_pConfig->SetAirplaneInhibited(false);
  if (!MayRun()) return true;
  if (m_pConfig->Get_InhibitQUAY(nullptr)) {
    RoundWatches::Step(m_ConfigIdx, RoundStep::kInhibited);
    SurgicalUpdateIfInhibited();
    if (m_pInterface->IsConnected()) ProbeLink();
    LOG_ADAPTER(
        m_ConfigIdx, DBG(30),
        u"[%i]CQUAYMainWorker::WorkThreadProc[LOOP] - INHIBITED %I64u ms, %S, SLEEPING [1000]",
        m_ConfigIdx, m_pConfig->GetInhibitRemainingMs(), m_pConfig->GetInhibitReason());
    Sleep(kInhibitedMs);
    return true;
  }
  if (vpnBlock) {
    HoldForVPN();
    return true;
  }
  m_pConfig->SetVPNInhibited(false);
  m_pConfig->ClearStatusMessage(kStatusVpn);
  return false;
}

// The place where a round stops that somebody has made pointless since it began.
bool CQUAYMainWorker::PassesCheckPoint() {
  const bool airplane = IsAirplaneMode();
  const bool inhibited = m_pConfig->Get_InhibitQUAY(nullptr);
  m_pConfig->SetAirplaneInhibited(airplane);
  if (!airplane && !inhibited) return true;
  RoundWatches::Step(m_ConfigIdx, RoundStep::kOvertaken);
  return false;
}

// One policy round at a time over all adapters.
void CQUAYMainWorker::DecideUnderLock() {
  const CCritSecLock lock(CGlobalConfigContainer::GetInstance().GetLock());
  LOG_ADAPTER(m_ConfigIdx, DBG(16) | DBG(31),
              u"\n[%i][EXECUTE POLICY][ROAM INHIBIT %I64u ticks %s]\n", m_ConfigIdx,
              m_pConfig->GetRoamingInhibitTick(),
              m_pConfig->GetRoamingInhibitTick() == 0 ? u"== 0" : u"> 0");
  CGlobalQUAYPolicy::ExecutePolicies(m_pInterface.get());
}

void CQUAYMainWorker::RefreshSettings() {
  const CCritSecLock lock(m_pConfig->ObjectLock());
  m_pConfig->RefreshFromRegistry();
  std::uint32_t detector = 0;  // a value that was taken away turns it off
  CGlobalConfigContainer::GetInstance().GetDWORD(value::kIDET, &detector);
  m_IDET = detector;
  m_pConfig->ClearStatusMessageIfOlder(kStatusNeedCredentials, kCredentialsTextMs);
  m_pInterface->RefreshNetworkAllowDenyFilters();
  const std::uint32_t scanMs = m_pConfig->GetScanIntervalSecs() * 1000;
  m_pConfig->Set_MainLoopSleepMs(std::min(scanMs, kNormalSleepMs));
  if (scanMs < kNormalSleepMs) {
    LOG_ADAPTER(m_ConfigIdx, kSleepLog,
                u"[%i]CQUAYMainWorker::WorkThreadProc: Set_MainLoopSleepMs(scan_interval_ms=%lu)",
                m_ConfigIdx, scanMs);
  }
  m_pConfig->m_Denylist.ReloadFromRegistry(*m_pConfig);
  m_pConfig->m_Denylist.ClearSuggestions(m_pConfig->m_Popup, m_pConfig->m_Etw);
  m_pConfig->m_Allowlist.ReloadFromRegistry(*m_pConfig);
}

// Looks for a VPN, for all who ask, and tells whether it holds this adapter.
bool CQUAYMainWorker::IsBlockedByVPN() {
  std::uint32_t ignore = 0;
  CGlobalConfigContainer::GetInstance().GetDWORD(value::kIgnoreVPN, &ignore);
  const auto adapters = CAdaptersAddresses::CreateObject();
  adapters->Initialize();
  const bool found = adapters->CountVPNAdapters() > 0;
  g_bVPNFound = found;
  return found && ignore == 0;
}

// A change of the access point would break the tunnel.
void CQUAYMainWorker::HoldForVPN() {
  RoundWatches::Step(m_ConfigIdx, RoundStep::kVpn);
  m_pConfig->SetVPNInhibited(true);
  m_pConfig->SetString(value::kSuggestedNetwork, u"");
  SurgicalUpdateIfInhibited(true);
  LOG_ADAPTER(m_ConfigIdx, kLoopLog,
              u"[%i]CQUAYMainWorker::WorkThreadProc[LOOP] - VPN-INHIBITED, SLEEPING [5000]",
              m_ConfigIdx);
  m_pConfig->SetStatusMessage(kStatusVpn);
  if (KillNudgeDialog()) {
    LOG_ADAPTER(m_ConfigIdx, DBG(8),
                u"[%i]CQUAYMainWorker::WorkThreadProc:[VPN] KillNudgeDialog() SUCCESS",
                m_ConfigIdx);
  }
  Sleep(kVPNMs);
}

// Both enable flags are on, or the adapter is to be watched while it is disabled.
bool CQUAYMainWorker::MayRun() {
  auto& global = CGlobalConfigContainer::GetInstance();
  const auto enabled = [&] { return m_pConfig->m_Enabled && global.m_bServiceEnable; };
  if (enabled()) return true;
  std::uint32_t watch = 0;
  if (global.m_bMonitorWhileDisabled && global.GetDWORD(value::kDBWMEnable, &watch) && watch != 0) {
    return true;
  }
  LOG_ADAPTER(m_ConfigIdx, kLoopLog,
              u"[%i]CQUAYMainWorker::WorkThreadProc[LOOP] - DISABLED - SLEEPING..., ENABLEs: adp "
              u"%i, svc %i",
              m_ConfigIdx, m_pConfig->m_Enabled.load(), global.m_bServiceEnable.load());
  RoundWatches::Step(m_ConfigIdx, RoundStep::kDisabled);
  for (int slice = 0; slice < kDisabledSlices && m_bRun && !enabled(); ++slice)
    Sleep(kDisabledSliceMs);
  return false;
}

void CQUAYMainWorker::ReleaseRoamingInhibit() {
  if (m_pConfig->GetRoamingInhibitTick() == 0) return;
  const std::uint64_t age = m_pInterface->Link().DisconnectedAgeMs();
  if (age <= kRoamingInhibitDisconnectedMs) return;
  LOG_ADAPTER(m_ConfigIdx, DBG(24),
              u"[%i] CQUAYMainWorker::WorkThreadProc[LOOP] - ROAMING INHIBITED, but disconnected "
              u"for %0.2lf "
              u"secs --->  CLEARING ROAMING INHIBIT!\n",
              m_ConfigIdx, static_cast<double>(age) / 1000.0);
  m_pConfig->ClearRoamingInhibit();
}

// On a private network the program keeps to it, if the user wants that.
void CQUAYMainWorker::LatchToPrivate() {
  if (m_Connection.connected && m_pConfig->m_LatchToPrivate &&
      m_pInterface->IsConnectedToPrivateNetwork()) {
    if (m_pConfig->m_network_switching.exchange(false))
      m_pConfig->SetStatusMessage(kStatusRestrictedToPrivate);
    return;
  }
  m_pConfig->ClearStatusMessage(kStatusRestrictedToPrivate);
  if (m_pConfig->m_network_switching_default) m_pConfig->m_network_switching = true;
}

bool CQUAYMainWorker::TakePowerEvents() {
  const bool resumed = m_bPowerResumeSeen.exchange(false);
  if (resumed) {
    LOG_ADAPTER(
        m_ConfigIdx, kLoopLog,
        u"\n~^~^~^~^~^~^~^~^~^~^~^~> [%i]CQUAYMainWorker::WorkThreadProc[LOOP] _POWER RESUME_ --> "
        u"force_scan = true & ClearNetworks [CLEARING ROAMING INHIBIT]\n",
        m_ConfigIdx);
    m_pConfig->m_bForcePopupOverride = false;
    LOG_ADAPTER(m_ConfigIdx, kLoopLog,
                u"[%i] CQUAYMainWorker::WorkThreadProc[LOOP] _POWER RESUME_ --> "
                u"SetForcePopupSuggestionOverride(false)\n",
                m_ConfigIdx);
    ForgetSurroundings();
    m_pInterface->ClearConnectedBssid();
    KillNudgeDialog();
  }
  const bool suspended = m_bPowerSuspendSeen.exchange(false);
  if (suspended) TellOutside(m_ConfigIdx, OutsideEvent::kSuspend);
  if (resumed) TellOutside(m_ConfigIdx, OutsideEvent::kResume);
  if (suspended) {
    ForgetSurroundings();
    m_pInterface->ClearConnectedBssid();
    LOG_ADAPTER(
        m_ConfigIdx, kLoopLog,
        u"\n~_~_~_~_~_~_~_~_~_~_~_> [%i]CQUAYMainWorker::WorkThreadProc[LOOP] _POWER SUSPEND_ --> "
        u"force_scan = true & ClearNetworks [CLEARING ROAMING INHIBIT]\n",
        m_ConfigIdx);
    KillNudgeDialog();
  }
  return resumed || suspended;
}

// What was seen so far counts for nothing any more, nor does what was made of it.
void CQUAYMainWorker::ForgetSurroundings() {
  m_pInterface->ClearNetworks();
  m_pConfig->SetString(value::kSuggestedNetwork, u"");
  m_pConfig->ClearRoamingInhibit();
}

void CQUAYMainWorker::Discover(bool force) {
  std::int32_t auxError = 0;
  if (m_pInterface->DiscoverNetworksSynchronous(force, m_Round == 0, &auxError) == 0) {
    m_pConfig->SetStatusMessage(kStatusNoProfileInRange);
  } else {
    m_pConfig->ClearStatusMessage(kStatusNoProfileInRange);
  }
  if (auxError == 0) return;
  LOG_ERROR(u"[%i][aux_error=%i] Scan/GetNetworkBssList() Error! -----> Clearing Networks <-----\n",
            m_ConfigIdx, auxError);
  KillNudgeDialog();
  ForgetSurroundings();
}

void CQUAYMainWorker::SleepBetweenRounds() {
  if (SleepWithoutDelay()) return;
  if (m_bNoDelayActive) {
    m_pConfig->m_no_delay = false;
    LOG_ADAPTER(m_ConfigIdx, kSleepLog,
                u"\n[%i]CQUAYMainWorker::WorkThreadProc: NO DELAY DISABLED "
                u"<<<<<===============================",
                m_ConfigIdx);
  }
  std::uint32_t sleepMs = m_pConfig->GetMainLoopSleepMs();
  if (sleepMs < kNormalSleepMs) {
    LOG_ADAPTER(m_ConfigIdx, kSleepLog,
                u"\n[%i]CQUAYMainWorker::WorkThreadProc:  CLIP MainSleepMs = %lu < 10000 !?",
                m_ConfigIdx, sleepMs);
    sleepMs = kNormalSleepMs;
  }
  sleepMs = m_pInterface->Profile().RoundPauseMs(sleepMs);
  LOG_ADAPTER(m_ConfigIdx, kSleepLog,
              u"\n[%i]CQUAYMainWorker::WorkThreadProc: __MAIN SLEEP__ : %lu < ms, AC_ON=%i",
              m_ConfigIdx, sleepMs, CGlobalConfigContainer::IsOnACPower());
  AwaitClient(sleepMs);
}

// Somebody watches: rounds follow one another, on mains, until the window that a client opened
// ends.
bool CQUAYMainWorker::SleepWithoutDelay() {
  if (!m_pConfig->m_no_delay || !m_pConfig->IsNoDelayOpen()) return false;
  if (!CGlobalConfigContainer::IsOnACPower()) return false;
  m_bNoDelayActive = true;
  LOG_ADAPTER(m_ConfigIdx, kSleepLog,
              u"\n[%i]CQUAYMainWorker::WorkThreadProc: __NO DELAY__ [expires %0.2lf secs]",
              m_ConfigIdx, m_pConfig->GetNoDelayRemainingSecs());
  Sleep(kNoDelayMs);
  return true;
}

}  // namespace corvane
