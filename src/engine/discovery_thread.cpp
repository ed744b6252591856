#include "engine/discovery_thread.h"

#include <utility>

#include "engine/driver_link.h"
#include "engine/engine_bits.h"
#include "foundation/guarded.h"
#include "platform/network_list_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kFirstWaitMs = 10'000;
constexpr DWORD kNoDeviceWaitMs = 5'000;
constexpr DWORD kRetryWaitMs = 2'000;
constexpr DWORD kFailedWaitMs = 1'000;
constexpr std::uint32_t kTurnsToHandshake = 5;
constexpr std::uint32_t kMayBeRetried =
    engine_state::kNoDevice | engine_state::kControlFailed | engine_state::kNotYet;

// COM of the calling thread, for one pass.
class ComApartment {
 public:
  ComApartment() {
    constexpr DWORD kApartmentThreaded = 2;
    m_bReady = Guarded("CLBDiscoveryThread", "CoInitializeEx", E_FAIL,
                       [] { return Os().networkList.CoInitializeEx(kApartmentThreaded); }) >= 0;
  }
  ~ComApartment() {
    if (!m_bReady) return;
    GiveBack("CLBDiscoveryThread", "CoUninitialize", [] { Os().networkList.CoUninitialize(); });
  }
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  bool IsReady() const { return m_bReady; }

 private:
  bool m_bReady;
};

}  // namespace

CLBDiscoveryThread::CLBDiscoveryThread(CSmartPointer<CLBEngineState> state)
    : CThread<CLBDiscoveryThread>("engine discovery"),
      m_pState(std::move(state)),
      m_Discovery(*m_pState) {}

void CLBDiscoveryThread::RunThreadLoop() {
  const CSmartPointer<CLBEngineState> state = m_pState;
  DWORD waitMs = kFirstWaitMs;
  while (!state->IsStopping()) {
    // A wait that fails waits for nothing: the passes go on, and not without a pause.
    if (!state->WaitOn(CLBEngineState::kDiscoveryEvent, waitMs)) {
      Os().threads.Sleep(kFailedWaitMs);
    }
    if (state->IsStopping()) return;
    waitMs = Turn();
  }
}

DWORD CLBDiscoveryThread::Turn() {
  if (!m_pState->IsBuilt()) return kNoDeviceWaitMs;
  const DWORD intervalMs = m_pState->Settings().discoveryIntervalMs;
  std::uint32_t stateWord = 0;
  {
    const CCritSecLock lock(m_pState->m_EngineLock);
    m_Discovery.BeginPass();
    stateWord = m_pState->StateWord();
  }
  if ((stateWord & engine_state::kDeviceHeld) == 0) return kNoDeviceWaitMs;
  DWORD waitMs = intervalMs;
  if ((stateWord & engine_state::kDriverReady) == 0 && !AwaitDriver(stateWord, &waitMs)) {
    return waitMs;
  }
  const ComApartment com;
  if (m_Discovery.LBDiscoverAdapters(com.IsReady()) == ERROR_SUCCESS) m_Discovery.EndPass();
  return intervalMs;
}

// True when the pass may go on; else *waitMs until the next turn.
bool CLBDiscoveryThread::AwaitDriver(std::uint32_t stateWord, DWORD* waitMs) {
  *waitMs = kNoDeviceWaitMs;
  if ((stateWord & kMayBeRetried) == 0) return false;
  if (++m_Retries % kTurnsToHandshake != 0) {
    *waitMs = kRetryWaitMs;
    return false;
  }
  m_pState->ClearState(engine_state::kNotYet);
  if (LBDriverHandshake(*m_pState, false) != ERROR_SUCCESS) return false;
  // Read behind the handshake: the start may have come to be owed while the driver took its time.
  if ((m_pState->m_OwedWord & kStartOwed) != 0) LBSendStart(*m_pState);
  return true;
}

}  // namespace corvane
