#pragma once
#include <chrono>
#include <cstdint>

#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/kernel_objects.h"
#include "platform/sim/kernel/pc_options.h"
#include "platform/sim/kernel/scheduler.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_clock.h"
#include "platform/sim/kernel/sim_console.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_event_trace.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_locks.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "platform/sim/kernel/sim_registry.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/kernel/sim_threads.h"

namespace corvane::platform::sim {

// The simulated PC without its devices: threads in virtual time, clock, registry, files, console,
// random numbers, named pipes, and the gate that every call of the program passes. The thread that
// makes the kernel becomes its driving thread: others run only while it sleeps or waits.
class SimKernel final : private SeamGate {
 public:
  // How long abandoned threads may take to unwind, in virtual time.
  static constexpr std::uint64_t kUnwindLimitMs = 60'000;

  explicit SimKernel(const PcOptions& options = {});
  ~SimKernel() override;  // ends what still runs

  void RunFor(std::chrono::milliseconds time);
  std::chrono::milliseconds Now() const;
  // Runs until `done` says so, asking every `step`; false when `limit` passes first.
  bool RunUntil(bool (*done)(void* context), void* context, std::chrono::milliseconds limit,
                std::chrono::milliseconds step = std::chrono::milliseconds(100));
  // Gives up every thread of the program that still runs and lets it unwind. One that does not end
  // is reported.
  void EndThreads() { m_Scheduler.EndThreads(kUnwindLimitMs); }

  SimThreads& Threads() { return m_Threads; }
  SimThreads& DeviceThreads() { return m_DeviceThreads; }
  SimClock& Clock() { return m_Clock; }
  SimConsole& Console() { return m_Console; }
  SimCrypto& Crypto() { return m_Crypto; }
  SimEventTrace& EventTrace() { return m_EventTrace; }
  SimFiles& Files() { return m_Files; }
  SimPipes& Pipes() { return m_Pipes; }
  SimRegistry& Registry() { return m_Registry; }
  SimSession& Session() { return m_Session; }
  FaultPlan& Faults() { return m_Faults; }
  SeamGate& Gate() { return *this; }
  Scheduler& GetScheduler() { return m_Scheduler; }
  const Scheduler& GetScheduler() const { return m_Scheduler; }
  const FaultPlan& Faults() const { return m_Faults; }
  const SimConsole& Console() const { return m_Console; }
  std::size_t OpenHandles() const { return m_Objects.OpenHandles(); }

 private:
  DWORD Enter(const char* operation, DWORD ordinary) override;

  Scheduler m_Scheduler;
  FaultPlan m_Faults;
  KernelObjects m_Objects;
  SimLocks m_Locks;
  SimThreads m_Threads;
  SimThreads m_DeviceThreads;
  SimClock m_Clock;
  SimConsole m_Console;
  SimCrypto m_Crypto;
  SimEventTrace m_EventTrace;
  SimFiles m_Files;
  SimPipes m_Pipes;
  SimRegistry m_Registry;
  SimSession m_Session;
};

}  // namespace corvane::platform::sim
