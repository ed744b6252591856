#include "lb/lb_config.h"

#include <optional>
#include <utility>

#include "engine/engine.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/driver_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr char kClassName[] = "CLBConfig";
constexpr std::uint64_t kLBLog = DBG(11);
constexpr std::uint32_t kDestructorMs = 1000;
constexpr std::uint32_t kDefaultWeightMode = 2;

// First argument of LoadBalanceConfig.
constexpr std::uint32_t kSteeringPaused = 1;
constexpr std::uint32_t kSteeringRuns = 2;

bool IsWeightMode(std::uint32_t mode) { return mode == 1 || mode == 2; }

// Lowers the flag behind the engine's stop, however that ends: a stop that faults has begun with
// the engine's own note of it.
class DownBehind {
 public:
  explicit DownBehind(std::atomic<bool>& flag) : m_Flag(flag) {}
  ~DownBehind() { m_Flag = false; }
  DownBehind(const DownBehind&) = delete;
  DownBehind& operator=(const DownBehind&) = delete;

 private:
  std::atomic<bool>& m_Flag;
};

// Counts a thread among those that wait for the queue.
class Waiting {
 public:
  explicit Waiting(std::atomic<int>& count) : m_Count(count) { ++m_Count; }
  ~Waiting() { --m_Count; }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  std::atomic<int>& m_Count;
};

std::uint64_t AgeOf(const LBWorkItem& item) { return Os().clock.GetTickCount64() - item.tick; }

}  // namespace

CLBConfig::CLBConfig() : CThread("engine commands") {
  m_pEvent.CreateObject();
  m_pEvent->SetDebugName("engine commands");
}

CLBConfig::~CLBConfig() { Stop(kDestructorMs); }

bool CLBConfig::Initialize(bool* created, bool bLoadRegistry, bool bQueue) {
  *created = false;
  if (!InitializeRegistry(kHomeKeyPath, created)) {
    LOG_ERROR(u"CLBConfig::Initialize: CRegistryHelperBase::Initialize(%s...) FAILED!",
              kHomeKeyPath);
    return false;
  }
  if (bLoadRegistry) {
    const std::uint32_t mode = ReadNumber(value::kLBWeightMode, kDefaultWeightMode);
    if (IsWeightMode(mode) || mode == kLBWeightModeNotSet) m_WeightMode = mode;
    m_Enabled = ReadNumber(value::kLBEnabled, 0);
  }
  SetPausedState(false);
  if (bQueue) {
    EnqueueWorkItem(m_Enabled != 0 ? LBCMD_INIT_START : LBCMD_STOP);
    return true;
  }
  if (m_Enabled == 0) return DoStopLBEngine(true);
  return DoInitLBEngine() && DoConfigLBEngine(kSteeringRuns, m_WeightMode);
}

bool CLBConfig::EnableLBEngine(std::uint32_t mode, bool bQueue) {
  if (IsWeightMode(mode)) {
    m_WeightMode = mode;
  } else if (m_WeightMode == kLBWeightModeNotSet) {
    m_WeightMode = kDefaultWeightMode;
  }
  if (!SetDWORD(value::kLBWeightMode, m_WeightMode)) {
    LOG_ERROR(u"CLBConfig::EnableLBEngine: SetRegistry_LB_WeightMode() FAILED! m_WeightMode = %lu",
              m_WeightMode.load());
  }
  if (!SetDWORD(value::kLBEnabled, 1)) {
    LOG_ERROR(u"CLBConfig::EnableLBEngine: SetRegistry_LB_Enabled(1) FAILED!");
    return false;
  }
  m_Enabled = 1;
  bool created = false;
  return Initialize(&created, false, bQueue);
}

bool CLBConfig::DisableLBEngine(bool bWriteRegistry, bool bQueue) {
  if (bWriteRegistry && !SetDWORD(value::kLBEnabled, 0)) {
    LOG_ERROR(u"CLBConfig::DisableLBEngine: SetRegistry_LB_Enabled(0) FAILED!");
    return false;
  }
  m_Enabled = 0;
  bool created = false;
  return Initialize(&created, false, bQueue);
}

bool CLBConfig::SetLBWeightMode(std::uint32_t mode) {
  if (!IsWeightMode(mode)) {
    LOG_ERROR(u"CLBConfig::SetLBWeightMode: Error! bad m_WeightMode = %lu", mode);
    return false;
  }
  if (!SetDWORD(value::kLBWeightMode, mode)) {
    LOG_ERROR(u"CLBConfig::SetLBWeightMode: SetRegistry_LB_WeightMode() FAILED! m_WeightMode = %lu",
              mode);
    return false;
  }
  m_WeightMode = mode;
  EnqueueWorkItem(LBCMD_SET_WEIGHT_MODE);
  return true;
}

bool CLBConfig::Pause() {
  if (m_bPaused) return true;
  if (!SetPausedState(true)) return false;
  EnqueueWorkItem(LBCMD_PAUSE);
  return true;
}

bool CLBConfig::Resume() {
  if (!m_bPaused) return true;
  if (!SetPausedState(false)) return false;
  EnqueueWorkItem(LBCMD_UNPAUSE);
  return true;
}

void CLBConfig::GetLBEnabled(std::uint32_t* value) const {
  *value = ReadNumber(value::kLBEnabled, 0);
}

bool CLBConfig::SetPausedState(bool bPaused) {
  if (!SetDWORD(value::kLBPaused, bPaused)) {
    LOG_ERROR(u"CLBConfig::SetPausedState: SetRegistry_LB_Paused(%i) FAILED!", bPaused ? 1 : 0);
    return false;
  }
  m_bPaused = bPaused;
  return true;
}

std::uint32_t CLBConfig::ReadNumber(const char16_t* name, std::uint32_t absent) const {
  std::uint32_t number = absent;
  GetDWORD(name, &number);
  return number;
}

CSmartPointer<CWinEvent> CLBConfig::WakeEvent() {
  const CCritSecLock lock(m_EventLock);
  return m_pEvent;
}

// Waits while the thread carries out the item in progress. A wake that fails throws; the next one
// wakes the thread for both.
void CLBConfig::EnqueueWorkItem(std::uint32_t cmd) {
  LOG_DEBUG(kLBLog, u"CLBConfig::EnqueueWorkItem: cmd=%i, m_WeightMode=%lu", cmd,
            m_WeightMode.load());
  const Waiting waiting(m_Waiting);
  const CCritSecLock lock(m_QueueLock);
  const auto wake = WakeEvent();
  if (!wake) return;
  m_Queue.push_back({cmd, m_WeightMode, Os().clock.GetTickCount64()});
  wake->SetEvent();
}

// Takes no queue lock: a thread that is stuck in the engine holds it.
void CLBConfig::Stop(std::uint32_t milliseconds) {
  m_bRun = false;  // before the signal, so that the thread does not wait again
  if (const auto wake = WakeEvent()) {
    try {
      wake->SetExitEvent();
    } catch (const Exception& e) {
      LOG_ERROR(u"CLBConfig::Stop: Exception: %S", e.what());
    }
  }
  StopThread(milliseconds);
  CSmartPointer<CWinEvent> wake;
  {
    const CCritSecLock lock(m_EventLock);
    m_pEvent.Swap(wake);
  }
  ReleaseRegistry();
}

void CLBConfig::RunThreadLoop() {
  ContainedAt("CLBConfig::RunThreadLoop", [this] {
    if (const auto wake = WakeEvent()) WorkThreadProc(*wake);
  });
}

void CLBConfig::WorkThreadProc(CWinEvent& wake) {
  bool woken = false;
  while (m_bRun) {
    LOG_DEBUG(kLBLog, u"CLBConfig::WorkThreadProc: waiting on event...");
    woken = wake.WaitOnEvent(platform::INFINITE);
    if (woken) {
      LOG_DEBUG(kLBLog, u"CLBConfig::WorkThreadProc: GOT event...");
      HandleQueue();
    } else {
      LOG_DEBUG(kLBLog, u"CLBConfig::WorkThreadProc: Got EXIT event...");
    }
  }
  LOG_DEBUG(kLBLog,
            u"CLBConfig::WorkThreadProc: waitBool=%i >>>>>>>>>>>>>>>>>>>>>>> EXIT "
            u">>>>>>>>>>>>>>>>>>>>>>>>",
            woken ? 1 : 0);
}

// One event may stand for several items.
void CLBConfig::HandleQueue() {
  while (HandleFirst()) LetCommandsIn();
}

bool CLBConfig::HandleFirst() {
  const CCritSecLock lock(m_QueueLock);
  if (m_Queue.empty() || !m_bRun) return false;
  const LBWorkItem item = m_Queue.front();
  m_Queue.pop_front();
  Handle(item);
  return true;
}

// A lock goes to whoever asks first, mostly the thread that has just let it go; so the thread stays
// away until those who wait have queued theirs. One that never does holds it up for no longer than
// this.
void CLBConfig::LetCommandsIn() {
  constexpr int kMostMs = 100;
  for (int i = 0; i < kMostMs && m_Waiting != 0 && m_bRun; ++i) Os().threads.Sleep(1);
}

void CLBConfig::Handle(const LBWorkItem& item) {
  const std::uint64_t delta1 = AgeOf(item);
  switch (item.cmd) {
    case LBCMD_INIT_START:
      return HandleInitStart(item, delta1);
    case LBCMD_STOP:
      return HandleStop(item, delta1);
    case LBCMD_SET_WEIGHT_MODE:
      if (m_Enabled != 0) HandleConfig("LBCMD_SET_WEIGHT_MODE", kSteeringRuns, item, delta1);
      return;
    case LBCMD_PAUSE:
      return HandleConfig("LBCMD_PAUSE", kSteeringPaused, item, delta1);
    case LBCMD_UNPAUSE:
      return HandleConfig("LBCMD_UNPAUSE", kSteeringRuns, item, delta1);
    default:
      LOG_DEBUG(kLBLog, u"CLBConfig::WorkThreadProc: GOT UNKNOWN CMD=%i, delta1=%I64u", item.cmd,
                delta1);
  }
}

// Of the weight mode now, not when it was queued.
void CLBConfig::HandleInitStart(const LBWorkItem& item, std::uint64_t delta1) {
  if (DoInitLBEngine() && DoConfigLBEngine(kSteeringRuns, m_WeightMode)) {
    LOG_DEBUG(kLBLog,
              u"CLBConfig::WorkThreadProc: [LBCMD_INIT_START] DoInitAndConfigLBEngine() "
              u"[m_WeightMode= %lu] succeeded, delta1=%I64u, delta2=%I64u",
              m_WeightMode.load(), delta1, AgeOf(item));
  } else {
    LOG_ERROR(
        u"CLBConfig::WorkThreadProc: [LBCMD_INIT_START] DoInitAndConfigLBEngine() [m_WeightMode= "
        u"%lu] failed!",
        m_WeightMode.load());
  }
}

void CLBConfig::HandleStop(const LBWorkItem& item, std::uint64_t delta1) {
  if (DoStopLBEngine(false)) {
    LOG_DEBUG(kLBLog,
              u"CLBConfig::WorkThreadProc: [LBCMD_STOP] DoStopLBEngine() succeeded, "
              u"delta1=%I64u, delta2=%I64u",
              delta1, AgeOf(item));
  } else {
    LOG_ERROR(u"CLBConfig::WorkThreadProc: [LBCMD_STOP] DoStopLBEngine() failed!");
  }
}

void CLBConfig::HandleConfig(const char* name, std::uint32_t cmd, const LBWorkItem& item,
                             std::uint64_t delta1) {
  if (DoConfigLBEngine(cmd, item.weightMode)) {
    LOG_DEBUG(kLBLog,
              u"CLBConfig::WorkThreadProc: [%S] DoConfigLBEngine(%i,%i) succeeded, "
              u"delta1=%I64u, delta2=%I64u",
              name, cmd, item.weightMode, delta1, AgeOf(item));
  } else {
    LOG_ERROR(u"CLBConfig::WorkThreadProc: [%S] DoConfigLBEngine(%i, %i) ) failed!", name, cmd,
              item.weightMode);
  }
}

bool CLBConfig::DoInitLBEngine() {
  const CCritSecLock lock(m_SwitchLock);
  if (m_bEngineUp) return true;
  const auto result = Guarded(kClassName, "DoInitLBEngine", std::optional<platform::DWORD>(),
                              []() -> std::optional<platform::DWORD> {
                                LBEngineInfo info;
                                return LB_InitializeEngine(&info);
                              });
  if (!result) return false;
  if (*result != platform::ERROR_SUCCESS && *result != platform::ERROR_ALREADY_INITIALIZED) {
    LOG_ERROR(u"CLBConfig::DoInitLBEngine: LB_InitializeEngine() FAILED! rc = %lu", *result);
    LOG_ERROR(u"CLBConfig::DoInitLBEngine(%i): Invoke_LB_InitializeEngine() FAILED!",
              m_WeightMode.load());
    return false;
  }
  m_bEngineUp = true;
  LOG_DEBUG(kLBLog, u"CLBConfig::DoInitLBEngine: LB_InitializeEngine() Succeeded");
  return true;
}

bool CLBConfig::DoConfigLBEngine(std::uint32_t cmd, std::uint32_t mode) {
  if (!m_bEngineUp) return false;
  try {
    if (const platform::DWORD code = LoadBalanceConfig(cmd, mode);
        code != platform::ERROR_SUCCESS) {
      LOG_ERROR(u"CLBConfig::DoConfigLBEngine: LoadBalanceConfig(%lu,%lu) FAILED! rc=%lu", cmd,
                mode, code);
      return false;
    }
  } catch (const platform::PlatformFault& fault) {
    ReportFilter(kClassName, fault.code);
    LOG_ERROR(u"CLBConfig::LoadBalanceConfig(%u, %u) __EXCEPTION__ - s_LastExceptionCode=0x%08x",
              cmd, mode, fault.code);
    return false;
  }
  LOG_DEBUG(kLBLog, u"CLBConfig::DoConfigLBEngine: LoadBalanceConfig(%lu,%lu) Succeeded", cmd,
            mode);
  return true;
}

bool CLBConfig::DoStopLBEngine(bool bForce) {
  const CCritSecLock lock(m_SwitchLock);
  if (!bForce && !m_bEngineUp) return true;
  const bool stopped = Guarded(kClassName, "DoStopLBEngine", false, [this] {
    const DownBehind down(m_bEngineUp);
    LB_StopEngine();
    return true;
  });
  if (stopped) {
    LOG_DEBUG(kLBLog, u"CLBConfig::DoStopLBEngine: LB_StopEngine() Succeeded");
  } else {
    LOG_ERROR(u"CLBConfig::DoStopLBEngine(%i) LB_StopEngine() FAILED!", bForce ? 1 : 0);
  }
  return stopped;
}

}  // namespace corvane
