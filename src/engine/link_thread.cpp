#include "engine/link_thread.h"

#include "engine/driver_records.h"
#include "engine/engine_bits.h"
#include "foundation/guarded.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kRetryMs = 10'000;

// Clears the state's bit when the thread has let the device go, however it ends.
class HeldBit {
 public:
  explicit HeldBit(CLBEngineState& state) : m_State(state) {}
  ~HeldBit() { m_State.ClearState(engine_state::kDeviceHeld); }
  HeldBit(const HeldBit&) = delete;
  HeldBit& operator=(const HeldBit&) = delete;

 private:
  CLBEngineState& m_State;
};

}  // namespace

CLBLinkThread::CLBLinkThread(CSmartPointer<CLBEngineState> state)
    : CThread<CLBLinkThread>("engine link"), m_pState(std::move(state)) {}

void CLBLinkThread::RunThreadLoop() {
  const CSmartPointer<CLBEngineState> state = m_pState;
  const HeldBit held(*state);
  CLBDriverDevice device;
  for (;;) {
    GiveBack("CLBLinkThread", "SetEvent",
             [&] { Os().threads.SetEvent(state->GetEvent(CLBEngineState::kLinkTurnEvent)); });
    const DWORD waitMs = Turn(&device);
    if (!state->WaitOn(CLBEngineState::kLinkEvent, waitMs) || state->IsStopping()) return;
  }
}

DWORD CLBLinkThread::Turn(CLBDriverDevice* device) {
  if (device->IsOpen()) return INFINITE;
  if (!device->Open()) {
    m_pState->ClearState(engine_state::kDeviceHeld);
    m_pState->SetState(engine_state::kNoDevice);
    return kRetryMs;
  }
  m_pState->SetState(engine_state::kDeviceHeld);
  constexpr std::uint8_t kNothing[8] = {};
  if (device->Control(control::kOpened, kNothing, sizeof(kNothing)) == ERROR_SUCCESS) {
    return INFINITE;
  }
  device->Close();
  m_pState->ClearState(engine_state::kDeviceHeld);
  m_pState->SetState(engine_state::kControlFailed);
  return kRetryMs;
}

}  // namespace corvane
