#include "engine/link_thread.h"

#include "engine/driver_records.h"
#include "engine/engine_bits.h"
#include "engine/engine_trace.h"
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
    LB_TRACE(*m_pState, u"link: no device");
    m_pState->ClearState(engine_state::kDeviceHeld);
    m_pState->SetState(engine_state::kNoDevice);
    return kRetryMs;
  }
  m_pState->SetState(engine_state::kDeviceHeld);
  constexpr std::uint8_t kNothing[8] = {};
  const DWORD error = device->Control(control::kOpened, kNothing, sizeof(kNothing));
  LB_TRACE(*m_pState, u"link: opened, err=%lu", error);
  if (error == ERROR_SUCCESS) return INFINITE;
  device->Close();
  m_pState->ClearState(engine_state::kDeviceHeld);
  m_pState->SetState(engine_state::kControlFailed);
  return kRetryMs;
}

}  // namespace corvane
