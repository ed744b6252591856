#pragma once
#include "engine/adapter_discovery.h"
#include "foundation/thread.h"

namespace corvane {

// Runs a pass over the adapters every two seconds, once the link thread holds the device and the
// driver is ready; until then it tries the handshake again from time to time.
class CLBDiscoveryThread : public SmartObjEx<CLBDiscoveryThread, SmartObj<>>,
                           public CThread<CLBDiscoveryThread> {
 public:
  explicit CLBDiscoveryThread(CSmartPointer<CLBEngineState> state);
  ~CLBDiscoveryThread() override { StopThread(1000); }
  const char* GetClassName() const override { return "CLBDiscoveryThread"; }

  void RunThreadLoop();
  // The state's stop flag is up; a thread that does not end in this time is given up.
  void Stop(std::uint32_t milliseconds) noexcept { StopThread(milliseconds); }

 private:
  platform::DWORD Turn();  // how long to wait before the next one
  bool AwaitDriver(std::uint32_t stateWord, platform::DWORD* waitMs);

  CSmartPointer<CLBEngineState> m_pState;
  CLBDiscovery m_Discovery;
  std::uint32_t m_Retries = 3;  // turns without a ready driver, which are never counted anew
};

}  // namespace corvane
