#pragma once
#include "platform/sim/kernel/scheduler.h"

namespace corvane::platform::sim {

// Critical sections of the simulated PC: recursive, handed directly to the thread that has waited
// longest, and watched. A lock taken out of the order of ranks, a circle of threads that wait for
// each other's locks, and a lock left or deleted by the wrong thread are reported.
class SimLocks {
 public:
  explicit SimLocks(Scheduler& scheduler) : m_Scheduler(scheduler) {}

  void Initialize(CRITICAL_SECTION* section, const char* name, int rank);
  void Enter(CRITICAL_SECTION* section);
  void Leave(CRITICAL_SECTION* section);
  void Delete(CRITICAL_SECTION* section);

 private:
  void CheckOrder(const SimThread& self, const CRITICAL_SECTION& section);
  void CheckCircle(const SimThread& self, const CRITICAL_SECTION& section);
  void WaitFor(SimThread& self, CRITICAL_SECTION& section);

  Scheduler& m_Scheduler;
};

}  // namespace corvane::platform::sim
