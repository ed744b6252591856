#pragma once
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/platform.h"
#include "platform/sim/kernel/pc_options.h"

namespace corvane::platform::sim {

class FaultPlan;
class SimDevices;
class SimClock;
class SimFiles;
class SimKernel;
class SimRegistry;
struct World;

// A whole PC in virtual time. A run is a function of world, options and what its threads do. The
// thread that makes the PC becomes its first thread and drives it: other threads run only while it
// sleeps or waits through the seam (RunFor). While the PC lives it is the platform in force.
//
// A dead end, a lock taken out of order, or a thread that spins without waiting stops the run: the
// report goes to the handler (by default standard error and abort).
class SimulatedPc {
 public:
  explicit SimulatedPc(const World& world, const PcOptions& options = {});
  ~SimulatedPc();  // ends what still runs; a thread that does not end is reported

  const Platform& GetPlatform() const;

  void RunFor(std::chrono::milliseconds time);
  std::chrono::milliseconds Now() const;  // since the PC was made
  // Runs until `done` says so, asking every `step`; false when `limit` passes first.
  bool RunUntil(bool (*done)(void* context), void* context, std::chrono::milliseconds limit,
                std::chrono::milliseconds step = std::chrono::milliseconds(100));

  // Gives up every thread of the program that still runs and lets it unwind; one that does not end
  // is reported. For what must go before the PC does, such as the program's singletons.
  void EndThreads();

  void PressKey();  // the console key: asks the service for its orderly stop
  void SetReportHandler(void (*handler)(const std::string& report, void* context), void* context);
  // The programme's console output so far (standard output and error), at most the last 256 KiB.
  std::string ConsoleText() const;

  FaultPlan& Faults();
  SimClock& Clock();
  SimDevices& Devices();
  SimFiles& Files();
  SimRegistry& Registry();
  SimKernel& Kernel();  // everything but the devices

  // Figures for reports.
  std::uint64_t SeamCalls() const;
  std::uint64_t InjectedFaults() const;
  int LiveThreads() const;  // threads of the program, the driving one not counted

 private:
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};

}  // namespace corvane::platform::sim
