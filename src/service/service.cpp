#include "service/service.h"

#include <algorithm>
#include <array>

#include "engine/engine.h"
#include "foundation/guarded.h"
#include "foundation/hosts.h"
#include "foundation/ignored.h"
#include "history/data_folder.h"
#include "history/global_ap_gateway_map_memo.h"
#include "history/global_dc_info_memo.h"
#include "history/telemetry_memo.h"
#include "launch/launcher.h"
#include "launch/user_environment.h"
#include "log/log.h"
#include "model/global_wireless_maps.h"
#include "monitors/bluetooth_monitor_singleton.h"
#include "monitors/network_list_manager.h"
#include "monitors/power_window.h"
#include "monitors/utils.h"
#include "notify/notification_manager.h"
#include "pipe/api_session_security_singleton.h"
#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "platform/socket_api.h"
#include "platform/thread_api.h"
#include "record/air_recorder.h"
#include "service/engine_switch.h"
#include "service/one_shot_modes.h"
#include "service/pilot_schedule.h"
#include "service/version.h"
#include "settings/global_config_container.h"
#include "store/process_flags.h"
#include "store/value_names.h"
#include "web/win_http_helper.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kMainLog = DBG(31);
constexpr std::uint32_t kNoAdapterMs = 10000;
constexpr std::uint32_t kWorkerStaggerMs = 3000;
constexpr std::uint32_t kRoundMs = 2000;
constexpr int kDisabledSlices = 5;
constexpr std::uint32_t kUnwindMs = 10000;
constexpr int kRoundsBetweenRefreshes = 15;
constexpr std::uint32_t kNotificationsEndMs = 1000;
constexpr std::uint64_t kRefreshLog = DBG(32);
constexpr std::uint32_t kWindowParameter = 10;

void Sleep(std::uint32_t ms) { Os().threads.Sleep(ms); }

CSmartPointer<CRegistry> HomeKey() { return CRegistry::CreateObject(kHomeKeyPath); }

// The folder of the program's data when it is there, else the current one.
std::string LogBaseName() {
  constexpr char kBase[] = "aps";
  const WString folder = DataFolder();
  return folder.empty() ? kBase : WideToUtf8(folder + platform::kPathSeparator) + kBase;
}

// Empty when the machine is in no domain or does not tell.
WString DNSDomainName() {
  std::array<char16_t, 256> name{};
  auto size = static_cast<platform::DWORD>(name.size());
  if (!Os().session.GetComputerNameExW(platform::ComputerNameDnsDomain, name.data(), &size)) {
    LOG_DEBUG(DBG(14), u"=WARNING= | [GetDNSDomainName] GetComputerNameExW() failed - rc %lu\n",
              Os().threads.GetLastError());
    return {};
  }
  return {name.data(), std::min<std::size_t>(size, name.size())};
}

void StartPipe(CNamedPipeListener& pipe, const char16_t* name, bool notification) {
  pipe.Initialize(name, notification);
  const platform::HRESULT result = pipe.BeginThread();
  if (result < 0) {
    LOG_ERROR(u"Main-CreatePipe(): serverPipe[%s]->BeginThread(): FAILED! 0x%08lx\n", name, result);
  } else {
    LOG_DEBUG(DBG(5) | kMainLog, u"Main-CreatePipe(): serverPipe[%s]->BeginThread(): succeeded\n",
              name);
  }
}

template <class Pipe>
void StopPipe(CSmartPointer<Pipe>& pipe) {
  if (!pipe) return;
  pipe->Shutdown();
  pipe.reset();
}

void LogRefreshFailed(platform::HRESULT result) {
  LOG_ERROR(
      u"Main-RefreshNLM(): NLM_S::GetInstance().RefreshNetworkCategories(): FAILED! 0x%08x, "
      u"resetting NLM...",
      result);
}

}  // namespace

Service::Service(const CommandLine& options) : m_Options(options) {}

int Service::Run() {
  StartLog();
  if (const auto ends = RunLoggedModes(m_Options)) {
    StopLogger();
    return *ends;
  }
  int result = 1;  // of a start that fails
  ContainedAt("Main", [&] {
    StartUp();
    if (StartSockets()) {
      result = 0;
      RunPasses();
    }
  });
  ShutDown();
  return result;
}

void Service::StartLog() {
  CUtils::GetInstance().DetectRunningAsService();
  std::uint32_t fileLogging = 0;
  if (HomeKey()->GetRegistryDWORDValue(value::kEnableFileLogging, &fileLogging))
    g_EnableFileLogging = fileLogging;
  StartLogger(LogBaseName());
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "Corvane.exe", " v", kVersion,
            ", BUILD Date ", kBuildDate, " ", kBuildTime);
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "DNSDOMAINNAME = [", DNSDomainName());
  LOG_INFO(CUtils::GetInstance().IsRunningAsService()
               ? u"%s - Main:[start] RUNNING AS SERVICE [%S, %S] DYNAMIC_SCAN_THRESHOLD"
               : u"%s - Main:[start] RUNNING AS APPLICATION [%S, %S] DYNAMIC_SCAN_THRESHOLD",
           m_Options.Program(), kVersion, kBuildDate);
}

bool Service::StartSockets() {
  constexpr platform::WORD kSocketVersion = 0x0202;
  const int code = Guarded("Main", "WSAStartup", static_cast<int>(platform::ERROR_GEN_FAILURE),
                           [] { return Os().sockets.WSAStartup(kSocketVersion); });
  m_bSockets = code == 0;
  if (!m_bSockets) Os().console.WriteOutput(FormatA("WSAStartup failed with error: %d\n", code));
  return m_bSockets;
}

void Service::StartUp() {
  CAirRecorder::GetInstance();             // which watches the rounds from the first one on
  StartEngineControl(&m_bHomeKeyCreated);  // and with it the first open of the home key
  CPowerWindow::GetInstance().Initialize(kWindowParameter, kWindowParameter);
  if (const platform::HRESULT result = CNotificationManagerSingleton::GetInstance().BeginThread();
      result != 0) {
    LOG_ERROR(u"Main:[starting] the notification thread did not start: 0x%08x", result);
  }
  // A tray application of an earlier run; mostly there is none.
  if (KillTrayApp()) {
    LOG_DEBUG(DBG(9) | DBG(31), u"Main:[starting] KillTrayApp() SUCCESS");
  } else {
    LOG_DEBUG(DBG(9), u"Main:[starting] KillTrayApp() FAILED");
  }
}

void Service::RunPasses() {
  while (!m_bQuit) {
    CGlobalConfigContainer::GetInstance().Initialize(m_bHomeKeyCreated);
    CountBoot();
    CGlobalDCInfoMemo::GetInstance().Load();
    CGlobalAPGatewayMapMemo::GetInstance().Load();
    CBluetoothMonitorSingleton::GetInstance().InitPDHCounters();
    LOG_DEBUG(kRefreshLog, u"__REFRESH USER__\n");
    RefreshUser();
    ReadDebugValues();
    if (!RunPass()) continue;
    ShutDownWorkers();
    CBluetoothMonitorSingleton::GetInstance().ClosePDHCounters();
    CGlobalAPGatewayMapMemo::GetInstance().Clear();
    CGlobalDCInfoMemo::GetInstance().Clear();
    CGlobalConfigContainer::GetInstance().Shutdown(true);
    CWifiClientContainer::GetInstance().Shutdown();  // its adapters hold what was just shut down
  }
}

bool Service::RunPass() {
  auto& client = CWifiClientContainer::GetInstance();
  const auto run = [&] {
    client.Initialize();
    const int count = client.GetCount();
    if (count == 0) {
      LOG_DEBUG(kMainLog, u"Main[TOP loop]: No Wifi Adapters...");
      EnsurePipes();
      CBluetoothMonitorSingleton::GetInstance().ClosePDHCounters();
      m_bQuit = KeyWaits();
      if (!m_bQuit) Sleep(kNoAdapterMs);
      return false;
    }
    RunWithAdapters(count);
    return true;
  };
  return Contained(run, [](const Failure& failure) {
    ReportFailure("Main[INNER-0]", failure);
    return true;
  });
}

void Service::RunWithAdapters(int count) {
  HasNLM();
  FollowRecording();
  StartWorkers(count);
  RefreshNLM();
  EnsurePipes();
  RunMainLoop();
}

// A pipe that fails is not tried again.
void Service::EnsurePipes() {
  if (!m_pJsonPipe) {
    CAPISessionSecuritySingleton::Instance();  // clients look for their half of the key
    m_pJsonPipe.CreateObject();
    StartPipe(*m_pJsonPipe, u"TRLSPipe", false);
  }
  if (!m_pNotifyPipe) {
    m_pNotifyPipe.CreateObject();
    StartPipe(*m_pNotifyPipe, u"TRLSPipe_N", true);
    CNotificationManagerSingleton::GetInstance().AddProvider(m_pNotifyPipe.get());
  }
}

void Service::StartWorkers(int count) {
  for (int i = 0; i < count; ++i) {
    if (i > 0) Sleep(kWorkerStaggerMs);
    const auto adapter = CWifiClientContainer::GetInstance().GetInterface(i);
    if (!adapter) continue;
    auto worker = CQUAYMainWorker::CreateObject();
    worker->Bind(adapter->GetConfigIdx(), adapter.get());
    m_Workers.push_back(worker);
    if (const platform::HRESULT result = worker->BeginThread(); result != 0) {
      LOG_ERROR(u"Main[TOP loop]: worker of adapter %i did not start: 0x%08x",
                adapter->GetConfigIdx(), result);
    }
  }
}

void Service::RunMainLoop() {
  for (int round = 1; RunMainRound(); ++round) {
    if (round % kRoundsBetweenRefreshes != 0) continue;
    LOG_DEBUG(kRefreshLog, u"__REFRESH USER__ [QueryUserMultiplier=%lu]\n",
              kRoundsBetweenRefreshes);
    RefreshUser();
  }
}

bool Service::RunMainRound() {
  if (m_bQuit) return false;
  auto& config = CGlobalConfigContainer::GetInstance();
  ReadDebugValues();
  Ignored(config.SetDWORD(value::kVPNFound, g_bVPNFound));
  config.RefreshGlobals();
  FollowRecording();
  CBluetoothMonitorSingleton::GetInstance().Poll();
  RestartWorkers();
  if (config.m_bEnablePilot) RunPilot();
  const bool enabled = config.m_bServiceEnable;
  KeepEngine(enabled);
  if (enabled) {
    Sleep(kRoundMs);
  } else {
    for (int slice = 0; slice < kDisabledSlices && !config.m_bServiceEnable; ++slice)
      Sleep(kRoundMs);
  }
  RefreshNLM();
  if (CWifiClientContainer::GetInstance().AdapterCountChanged()) {
    LOG_DEBUG(kMainLog, u"Main[Main loop]: adapter count changed! restarting...");
    return false;
  }
  if (CBluetoothMonitorSingleton::GetInstance().AdapterCountChanged()) {
    LOG_DEBUG(kMainLog, u"Main[Main loop]: BT adapter count changed! restarting...");
    return false;
  }
  m_bQuit = KeyWaits();
  return !m_bQuit;
}

void Service::FollowRecording() {
  CAirRecorder::GetInstance().Follow(CGlobalConfigContainer::GetInstance().m_RecordAirMB);
}

// A worker that ended by itself is started again.
void Service::RestartWorkers() {
  for (const auto& worker : m_Workers) {
    if (!worker->IsRunning()) worker->BeginThread();
  }
}

void Service::ShutDownWorkers() {
  for (std::size_t i = 0; i < m_Workers.size(); ++i) {
    LOG_DEBUG(kMainLog, u"Main[Outer loop]: Shutdown QUAYWorker%i", i);
    m_Workers[i]->Shutdown();
    LOG_DEBUG(kMainLog, u"Main[Outer loop]: Shutdown QUAYWorker DONE");
  }
  m_Workers.clear();
}

void Service::ShutDown() {
  // An exception may have left workers: one that does not end in time keeps its adapter alive only
  // when it is shut down, not when it is dropped.
  ShutDownWorkers();
  CAirRecorder::GetInstance().Stop();
  SaveTelemetry();
  CBluetoothMonitorSingleton::GetInstance().ClosePDHCounters();
  CGlobalAPGatewayMapMemo::GetInstance().Clear();
  CGlobalDCInfoMemo::GetInstance().Clear();
  CGlobalConfigContainer::GetInstance().Shutdown(true);
  CWifiClientContainer::GetInstance().Shutdown();
  if (m_bSockets) GiveBack("Main", "WSACleanup", [] { Os().sockets.WSACleanup(); });
  EndCompanions();
  StopPipe(m_pJsonPipe);
  // The notification thread goes before its pipe, so that nothing is delivered to a dead listener.
  CNotificationManagerSingleton::GetInstance().Shutdown(kNotificationsEndMs);
  StopPipe(m_pNotifyPipe);
  CPowerWindow::GetInstance().Shutdown();
  StopEngineControl();
  CGlobalConfigContainer::GetInstance().Shutdown(false);
  CGlobalWirelessMaps::GetInstance().Shutdown();
  // Nothing of the program may run any more when its log and its process-wide objects go.
  if (Os().threads.AwaitAbandoned(kUnwindMs)) {
    CNotificationManagerSingleton::DropInstance();
    LB_ReleaseEngine();  // gives up its threads in turn
    Os().threads.AwaitAbandoned(kUnwindMs);
  }
  ReportLeaks();
  StopLogger();
}

void Service::SaveTelemetry() {
  auto& memo = CTelemetryMemo::GetInstance();
  if (memo.GetAp() != 0 || memo.GetNet() != 0) memo.SaveToRegistry();
}

void Service::EndCompanions() {
  const bool config = KillConfigApp();
  LOG_DEBUG(DBG(10), u"Main:[exit] KillConfigApp() %S", config ? "SUCCESS" : "FAILED");
  const bool tray = KillTrayApp();
  LOG_DEBUG(DBG(9), u"Main:[exit] KillTrayApp() %S", tray ? "SUCCESS" : "FAILED");
}

// A failed refresh leaves the earlier answers in place.
void Service::RefreshUser() {
  const auto environment =
      RefreshUserEnvironment(CUtils::GetInstance().IsRunningAsService(), &ProxyPresent);
  if (!environment) return;
  auto& config = CGlobalConfigContainer::GetInstance();
  config.SetUserTempPath(environment->tempPath);
  config.SetProxyPresent(environment->proxyPresent);
}

// The field experiment, by its calendar.
void Service::RunPilot() {
  switch (PilotStepAt(platform::SystemTimeNow())) {
    case PilotStep::kFirstSurvey:
      OpenSurvey(value::kSurvey1, u"/prepilotsurvey.php");
      break;
    case PilotStep::kEngine:
      StartEngineForPilot();
      break;
    case PilotStep::kEnd: {
      auto& config = CGlobalConfigContainer::GetInstance();
      std::uint32_t enabled = 0;
      if (config.GetDWORD(value::kEnablePilot, &enabled) && enabled != 0) {
        Ignored(config.SetDWORD(value::kEnablePilot, 0));
        LOG_INFO(u"Main[Main loop]: Pilot-3: ENDING PILOT !!!!!!!!!!!!!!!!!\n");
      }
      OpenSurvey(value::kSurvey3, u"/postpilotsurvey.php");
      break;
    }
  }
}

// Once, when a client has armed the flag.
void Service::OpenSurvey(WStringView flag, WStringView page) {
  auto& config = CGlobalConfigContainer::GetInstance();
  if (!config.ReadFlagAndClear(flag)) return;
  if (flag == value::kSurvey1) LOG_INFO(u"Main[Main loop]: Pilot-1: Launching Survey1 ...\n");
  StartBrowserUrl(kSurveyHost + WString(page), config.GetSystemGuidText());
}

void Service::ReportLeaks() {
  if (!log::IsOpen(DBG(29) | DBG(31)) || LiveObjectCount() == 0) return;
  LOG_ERROR(u"Main: EXIT - ERROR! g_dbgSmartObjCount = %u, size=%lu", LiveObjectCount(),
            live_objects::Size());
  live_objects::ForEach(
      [](const live_objects::Entry& entry, void*) {
        LOG_ERROR(u"Obj needing cleanup: 0x%p, Name = %S", entry.object, entry.name);
      },
      nullptr);
}

void Service::CountBoot() {
  if (!m_bFirstPass) return;
  m_bFirstPass = false;
  auto& config = CGlobalConfigContainer::GetInstance();
  std::uint32_t boots = 0;
  config.GetDWORD(value::kBootCounter, &boots);
  Ignored(config.SetDWORD(value::kBootCounter, boots + 1));
}

void Service::ReadDebugValues() {
  const auto registry = CGlobalConfigContainer::GetInstance().GetRegistry();
  if (!registry) return;
  std::uint64_t mask = 0;
  std::uint32_t number = 0;
  if (registry->GetRegistryQWORDValue(value::kDebugMask, &mask)) g_DebugMask = mask;
  if (registry->GetRegistryDWORDValue(value::kDebugIFMask, &number)) g_DebugIFMask = number;
  if (registry->GetRegistryDWORDValue(value::kEnableFileLogging, &number))
    g_EnableFileLogging = number;
}

// The list may be late in coming up, or go away: no reason to disturb the adapters. Workers only
// look up.
bool Service::HasNLM() {
  try {
    CNetworkListManager::GetInstance();
    return true;
  } catch (const Exception& e) {
    LogRefreshFailed(static_cast<platform::HRESULT>(e.GetCode()));
    return false;
  }
}

void Service::RefreshNLM() {
  if (!HasNLM()) return;
  auto& list = CNetworkListManager::GetInstance();
  const platform::HRESULT refreshed = list.RefreshNetworkCategories();
  if (refreshed >= 0) return;
  LogRefreshFailed(refreshed);
  const platform::HRESULT reset = list.ResetNLMInstance();
  if (reset < 0) {
    LOG_ERROR(
        u"Main-RefreshNLM(): NLM_S::GetInstance().ResetNLMInstance(): FAILED! 0x%08x, resetting "
        u"NLM...",
        reset);
  } else {
    LOG_DEBUG(DBG(1), u"Main-RefreshNLM(): NLM_S::GetInstance().ResetNLMInstance(): Succeeded!");
  }
}

bool Service::KeyWaits() { return Os().console._kbhit(); }

}  // namespace corvane
