#include "platform/sim/kernel/sim_kernel.h"

#include <algorithm>
#include <exception>
#include <new>

namespace corvane::platform::sim {

namespace {

// Each user of random numbers has its own, so that one more draw here moves nothing there.
constexpr std::uint64_t kFaultStream = 0xFA01;
constexpr std::uint64_t kCryptoStream = 0xC0DE;

}  // namespace

SimKernel::SimKernel(const PcOptions& options)
    : m_Scheduler(options.seed, options.interleave),
      m_Objects(m_Scheduler),
      m_Locks(m_Scheduler),
      m_Threads(m_Scheduler, m_Objects, m_Locks, *this, SimThreads::Side::kProgram),
      m_DeviceThreads(m_Scheduler, m_Objects, m_Locks, *this, SimThreads::Side::kDevices),
      m_Clock(m_Scheduler, options.startTime),
      m_Console(*this, options.echoConsole),
      m_Crypto(m_Scheduler, *this, options.seed ^ kCryptoStream),
      m_EventTrace(*this),
      m_Files(*this, m_Threads),
      m_Pipes(m_Scheduler, m_Objects, *this),
      m_Registry(*this),
      m_Session(*this, m_Threads, m_Clock) {
  if (options.faultRate > 0.0) {
    m_Faults.FailRandomly(options.faultRate, options.seed ^ kFaultStream);
  }
}

SimKernel::~SimKernel() { EndThreads(); }

DWORD SimKernel::Enter(const char* operation, DWORD ordinary) {
  m_Scheduler.Call();
  const bool forLog = m_Scheduler.IsForLog();
  if (!forLog && m_Scheduler.Current().abandoned && !NeverUnwinds(operation)) {
    m_Scheduler.ThrowIfAbandoned();
  }
  const DWORD code = m_Faults.Decide(operation, ordinary, m_Scheduler.NowMs(), !forLog);
  if (code != FaultPlan::kFault && code != FaultPlan::kNoMemory) return code;
  if (std::uncaught_exceptions() > 0) return ordinary;  // a second exception would end the process
  if (code == FaultPlan::kNoMemory) throw std::bad_alloc();
  throw PlatformFault{code};
}

void SimKernel::RunFor(std::chrono::milliseconds time) {
  const auto ms = static_cast<std::uint64_t>(std::max<std::int64_t>(time.count(), 0));
  const std::uint64_t end = m_Scheduler.NowMs() + ms;
  m_Scheduler.SleepUntil(end);
  m_Scheduler.ThrowIfAbandoned();
}

std::chrono::milliseconds SimKernel::Now() const {
  return std::chrono::milliseconds(m_Scheduler.NowMs());
}

bool SimKernel::RunUntil(bool (*done)(void* context), void* context,
                         std::chrono::milliseconds limit, std::chrono::milliseconds step) {
  const std::chrono::milliseconds end = Now() + limit;
  while (!done(context)) {
    if (Now() >= end) return false;
    RunFor(std::clamp(end - Now(), std::chrono::milliseconds(1), step));
  }
  return true;
}

}  // namespace corvane::platform::sim
