#pragma once
#include "engine/driver_device.h"
#include "engine/engine_state.h"
#include "foundation/thread.h"

namespace corvane {

// Keeps the device open for as long as the engine runs; where it cannot, it tries again every ten
// seconds. Without its bit in the state word the discovery thread does nothing.
class CLBLinkThread : public SmartObjEx<CLBLinkThread, SmartObj<>>, public CThread<CLBLinkThread> {
 public:
  explicit CLBLinkThread(CSmartPointer<CLBEngineState> state);
  ~CLBLinkThread() override { StopThread(1000); }
  const char* GetClassName() const override { return "CLBLinkThread"; }

  void RunThreadLoop();
  // The state's stop flag is up; a thread that does not end in this time is given up.
  void Stop(std::uint32_t milliseconds) noexcept { StopThread(milliseconds); }

 private:
  // Opens the device where it is not; how long to wait before the next turn.
  platform::DWORD Turn(CLBDriverDevice* device);

  CSmartPointer<CLBEngineState> m_pState;
};

}  // namespace corvane
