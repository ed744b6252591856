#include "engine/engine.h"

#include <atomic>
#include <utility>

#include "engine/discovery_thread.h"
#include "engine/driver_device.h"
#include "engine/driver_link.h"
#include "engine/driver_service.h"
#include "engine/engine_snapshot.h"
#include "engine/link_thread.h"
#include "engine/shared_word.h"
#include "foundation/guarded.h"
#include "foundation/singleton.h"
#include "platform/driver_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kStopMs = 2000;     // for the driver, behind the stop
constexpr DWORD kThreadsMs = 1000;  // for the threads, behind their wake-up

// One run of the engine, from a start to its stop.
class EngineRun {
 public:
  EngineRun() : m_pState(CLBEngineState::CreateObject()) {}
  ~EngineRun() { EndThreads(kThreadsMs); }
  EngineRun(const EngineRun&) = delete;
  EngineRun& operator=(const EngineRun&) = delete;

  CLBEngineState& State() { return *m_pState; }
  // Heap, the driver's service, tables, threads, handshake. The service comes before the tables, so
  // that the driver has the time they take to come up.
  DWORD Build(LBEngineInfo* info);

  // Raises the stop flag and ends the threads; one that is stuck in the driver is given up.
  void EndThreads(std::uint32_t milliseconds) noexcept {
    m_pState->RaiseStop();
    m_pState->WakeThreads();
    if (m_pLink) m_pLink->Stop(milliseconds);
    if (m_pDiscovery) m_pDiscovery->Stop(milliseconds);
  }

 private:
  DWORD LBBuildEngineState(LBEngineInfo* info);

  CSmartPointer<CLBEngineState> m_pState;
  CLBDriverService m_Service;
  CSmartPointer<CLBLinkThread> m_pLink;
  CSmartPointer<CLBDiscoveryThread> m_pDiscovery;
};

DWORD EngineRun::Build(LBEngineInfo* info) {
  if (const DWORD error = m_pState->CreateHeap(); error != ERROR_SUCCESS) return error;
  m_Service.Start();
  return LBBuildEngineState(info);
}

DWORD EngineRun::LBBuildEngineState(LBEngineInfo* info) {
  if (const DWORD error = m_pState->LBBuildTables(); error != ERROR_SUCCESS) return error;
  if (const DWORD error = m_pState->CreateEvents(); error != ERROR_SUCCESS) return error;
  m_pLink.CreateObject(m_pState);
  m_pDiscovery.CreateObject(m_pState);
  if (m_pLink->BeginThread() != S_OK || m_pDiscovery->BeginThread() != S_OK) {
    return ERROR_INVALID_HANDLE;
  }
  m_pState->m_Wlan.Start(ReadSystemVersion());
  const DWORD result = LBDriverHandshake(*m_pState, true);
  m_pState->SetBuilt();
  info->table = reinterpret_cast<std::uintptr_t>(m_pState->Table());
  return result;
}

class Engine {
 public:
  DWORD Start(LBEngineInfo* info);
  void Stop();
  void Release();
  bool Snapshot(LBEngineSnapshot* snapshot);

 private:
  CCritSec m_Lock{"engine run", LockRank::kEngineRun};  // one start or stop at a time
  std::unique_ptr<EngineRun> m_pRun;                    // the run in force
};

DWORD Engine::Start(LBEngineInfo* info) {
  const CCritSecLock lock(m_Lock);
  if (m_pRun) return ERROR_ALREADY_INITIALIZED;
  auto run = std::make_unique<EngineRun>();
  const DWORD result = run->Build(info);
  if (result != ERROR_SUCCESS) {
    *info = {};
    return result == ERROR_CANNOT_DETECT_DRIVER_FAILURE ? ERROR_SUCCESS : result;
  }
  m_pRun = std::move(run);
  LBSendStart(m_pRun->State());
  return ERROR_SUCCESS;
}

void Engine::Stop() {
  const CCritSecLock lock(m_Lock);
  const std::unique_ptr<EngineRun> run = std::move(m_pRun);
  if (!run) return;
  run->State().RaiseStop();
  {
    CLBDriverDevice device;
    if (device.Open()) device.ControlUnguarded(control::kStop);
  }
  Os().threads.Sleep(kStopMs);
  run->State().WakeThreads();
  Os().threads.Sleep(kThreadsMs);
  run->EndThreads(0);
}

void Engine::Release() {
  const CCritSecLock lock(m_Lock);
  m_pRun.reset();
}

bool Engine::Snapshot(LBEngineSnapshot* snapshot) {
  const CCritSecLock lock(m_Lock);
  if (!m_pRun) return false;
  CLBEngineState& state = m_pRun->State();
  snapshot->table = std::make_unique<LBEngineTable>();
  const CCritSecLock table(state.m_EngineLock);
  snapshot->stateWord = state.StateWord();
  snapshot->owedWord = state.m_OwedWord;
  snapshot->tunnelWord = state.m_TunnelWord;
  CopyShared(state.Table(), snapshot->table.get(), sizeof(LBEngineTable));
  return true;
}

}  // namespace

DWORD LB_InitializeEngine(LBEngineInfo* info) {
  return Singleton<Engine>::GetInstance().Start(info);
}

DWORD LoadBalanceConfig(std::uint32_t command, std::uint32_t mode) {
  CLBDriverDevice device;
  if (!device.Open()) return ERROR_DEVICE_UNREACHABLE;
  LBSteer record;
  record.command = command;
  record.mode = mode;
  return device.ControlUnguarded(control::kSteer, &record, sizeof(record), &record, sizeof(record));
}

void LB_StopEngine() {
  if (Engine* const engine = Singleton<Engine>::Find()) engine->Stop();
}

void LB_ReleaseEngine() {
  if (Engine* const engine = Singleton<Engine>::Find()) engine->Release();
}

bool LB_SnapshotEngine(LBEngineSnapshot* snapshot) {
  Engine* const engine = Singleton<Engine>::Find();
  return engine && engine->Snapshot(snapshot);
}

}  // namespace corvane
