#pragma once
#include <atomic>

#include "platform/sim/simulated_pc.h"

namespace corvane::lab {

// The service on a thread of the simulated PC in force.
class ServiceRun {
 public:
  explicit ServiceRun(platform::sim::SimulatedPc& pc) : m_Pc(pc) {}
  ~ServiceRun();  // stops it

  void Start();
  bool IsRunning() const;
  // Presses the console key and waits in virtual time; false when the service has not ended within
  // three minutes.
  bool Stop();
  int ExitCode() const { return m_ExitCode; }

 private:
  static unsigned ThreadProc(void* self);

  platform::sim::SimulatedPc& m_Pc;
  void* m_hThread = nullptr;
  std::atomic<bool> m_bEnded{false};
  std::atomic<int> m_ExitCode{-1};
};

}  // namespace corvane::lab
