#include "platform/sim/kernel/scheduler.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <tuple>
#include <utility>

namespace corvane::platform::sim {

namespace {

// A thread that swallows ThreadAbandoned this often will never end.
constexpr unsigned kMostAbandonThrows = 1000;

void PrintAndAbort(const std::string& report, void*) {
  std::fputs(report.c_str(), stderr);
  std::fputc('\n', stderr);
  std::abort();
}

class PlainWait final : public IWaitText {
 public:
  explicit PlainWait(const char* text) : m_Text(text) {}
  std::string WaitText() const override { return m_Text; }

 private:
  const char* m_Text;
};

const PlainWait kSleep("sleeps");
const PlainWait kStall("stalls");

}  // namespace

Scheduler::Scheduler(std::uint64_t seed, bool interleave)
    : m_pReport(PrintAndAbort), m_bInterleave(interleave), m_Random(seed) {
  auto driver = std::make_unique<SimThread>();
  driver->id = m_LastId += 4;
  driver->name = "driver";
  driver->state = SimThread::State::kRunning;
  driver->fiber = std::make_unique<Fiber>();
  m_pRunning = driver.get();
  m_Threads.push_back(std::move(driver));

  // From switches at every second call to rare ones; half of the runs also let threads stall, so
  // that another thread's deadline may fall into the middle of what they do.
  m_SwitchOneIn = std::uint64_t{2} << m_Random.Below(7);
  if (m_Random.Below(2) == 1) {
    m_StallOneIn = std::uint64_t{64} << m_Random.Below(5);
    m_LongestStallMs = std::uint64_t{1} << m_Random.Below(7);
  }
}

// What a thread that has not ended holds stays: nobody can unwind it.
Scheduler::~Scheduler() {
  for (auto& thread : m_Threads) {
    if (thread->state != SimThread::State::kEnded && !IsDriver(*thread)) (void)thread.release();
  }
}

void Scheduler::SetReportHandler(ReportHandler handler, void* context) {
  m_pReport = handler ? handler : PrintAndAbort;
  m_pReportContext = context;
}

int Scheduler::LiveThreads() const {
  return static_cast<int>(std::ranges::count_if(m_Threads, [this](const auto& thread) {
    return thread->state != SimThread::State::kEnded && !thread->ofDevices && !IsDriver(*thread);
  }));
}

int Scheduler::AbandonedThreads() const {
  return static_cast<int>(std::ranges::count_if(m_Threads, [this](const auto& thread) {
    const bool runs = thread->state != SimThread::State::kEnded &&
                      thread->state != SimThread::State::kParked && thread.get() != m_pRunning;
    return runs && thread->abandoned && !thread->ofDevices && !IsDriver(*thread);
  }));
}

SimThread* Scheduler::Start(ThreadApi::ThreadProc start, void* parameter, const char* name,
                            bool ofDevices, std::shared_ptr<KernelObject> object) {
  Reap();
  auto thread = std::make_unique<SimThread>();
  thread->id = m_LastId += 4;
  thread->name = name ? name : "";
  thread->ofDevices = ofDevices;
  thread->object = std::move(object);
  thread->start = start;
  thread->parameter = parameter;
  thread->abandoned = m_bBroken;
  thread->scheduler = this;
  SimThread* record = thread.get();
  try {
    thread->fiber = std::make_unique<Fiber>(&RunThread, record);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  m_Threads.push_back(std::move(thread));
  m_Ready.push_back(record);
  return record;
}

void Scheduler::RunThread(void* record) {
  SimThread& thread = *static_cast<SimThread*>(record);
  Scheduler& self = *thread.scheduler;
  const DWORD exitCode = self.RunToItsEnd(thread);
  thread.state = SimThread::State::kEnded;
  if (self.m_pThreadEnd) self.m_pThreadEnd->OnThreadEnd(thread, exitCode);
  for (;;) self.HandOver(thread, self.PickNext());
}

DWORD Scheduler::RunToItsEnd(SimThread& thread) {
  DWORD exitCode = 0;
  std::string failure;
  try {  // also of a thread given up before it began: what it was handed is its own to free
    exitCode = thread.start(thread.parameter);
  } catch (const ThreadAbandoned&) {
    exitCode = ~DWORD{0};
  } catch (const PlatformFault&) {
    failure = "a fault of the platform";
  } catch (const std::exception& exception) {
    failure = exception.what();
  } catch (...) {
    failure = "an exception of unknown type";
  }
  if (!failure.empty()) Report("A thread ended by " + failure + ": " + Describe(thread));
  if (!thread.held.empty() && !m_bBroken) Report("A thread ended with locks: " + Describe(thread));
  return exitCode;
}

// Drops the threads that have ended: each has given the baton away as its last act.
void Scheduler::Reap() {
  std::erase_if(m_Threads,
                [](const auto& thread) { return thread->state == SimThread::State::kEnded; });
}

Wake Scheduler::Block(std::uint64_t deadline, const IWaitText& what, bool abandonable,
                      const CRITICAL_SECTION* lock) {
  SimThread& self = *m_pRunning;
  if (m_Ready.empty() && deadline < EarliestDeadline()) {
    JumpTo(deadline);
    return Wake::kTimedOut;
  }
  self.state = SimThread::State::kWaiting;
  self.deadline = deadline;
  self.order = ++m_Sequence;
  self.waitsFor = &what;
  self.waitsForLock = lock;
  self.abandonable = abandonable;
  SwitchFrom(self);
  self.waitsFor = nullptr;
  self.waitsForLock = nullptr;
  return self.wake;
}

void Scheduler::MakeReady(SimThread& thread, Wake wake) {
  thread.state = SimThread::State::kReady;
  thread.wake = wake;
  m_Ready.push_back(&thread);
}

void Scheduler::Yield() {
  if (m_Ready.empty()) return;
  SimThread& self = *m_pRunning;
  MakeReady(self, Wake::kSignalled);
  SwitchFrom(self);
}

void Scheduler::SleepUntil(std::uint64_t deadline) {
  if (deadline <= m_NowMs) {
    Yield();
  } else {
    Block(deadline, kSleep);
  }
}

void Scheduler::SwitchFrom(SimThread& self) {
  SimThread& next = PickNext();
  if (&next == &self) {
    self.state = SimThread::State::kRunning;
    return;
  }
  HandOver(self, next);
}

// Returns when the baton comes back to `self`.
void Scheduler::HandOver(SimThread& self, SimThread& next) {
  next.state = SimThread::State::kRunning;
  m_pRunning = &next;
  m_Fingerprint = (m_Fingerprint ^ next.id ^ m_NowMs << 16) * 0x100000001B3;
  self.fiber->SwitchTo(*next.fiber);
}

SimThread& Scheduler::PickNext() {
  for (;;) {
    if (SimThread* next = TakeReady()) return *next;
    if (const std::uint64_t deadline = EarliestDeadline(); deadline != SimThread::kNever) {
      JumpTo(deadline);
    } else {
      Break("Dead end: no thread can run, and none has a deadline.\n" + DescribeAll());
    }
  }
}

SimThread* Scheduler::TakeReady() {
  if (m_Ready.empty()) return nullptr;
  const std::size_t index = m_bInterleave ? m_Random.Below(m_Ready.size()) : 0;
  SimThread* next = m_Ready[index];
  m_Ready.erase(m_Ready.begin() + static_cast<std::ptrdiff_t>(index));
  return next;
}

std::uint64_t Scheduler::EarliestDeadline() const {
  std::uint64_t earliest = SimThread::kNever;
  for (const auto& thread : m_Threads) {
    if (thread->state == SimThread::State::kWaiting) {
      earliest = std::min(earliest, thread->deadline);
    }
  }
  return earliest;
}

void Scheduler::JumpTo(std::uint64_t time) {
  m_NowMs = std::max(m_NowMs, time);
  m_CallsSinceJump = 0;
  const std::size_t before = m_Ready.size();
  for (const auto& thread : m_Threads) {
    if (thread->state == SimThread::State::kWaiting && thread->deadline <= m_NowMs) {
      MakeReady(*thread, Wake::kTimedOut);
    }
  }
  std::sort(m_Ready.begin() + static_cast<std::ptrdiff_t>(before), m_Ready.end(),
            [](const SimThread* a, const SimThread* b) {
              return std::tie(a->deadline, a->order) < std::tie(b->deadline, b->order);
            });
}

void Scheduler::Interleave() {
  SimThread& self = *m_pRunning;
  const bool mayStall = m_StallOneIn != 0 && !self.ofDevices && !IsDriver(self) && !m_bBroken;
  if (mayStall && m_Random.Below(m_StallOneIn) == 0) {
    Block(m_NowMs + 1 + m_Random.Below(m_LongestStallMs), kStall, false);
  } else if (!m_Ready.empty() && m_Random.Below(m_SwitchOneIn) == 0) {
    Yield();
  }
}

void Scheduler::ReportSpinning() {
  SimThread& self = *m_pRunning;
  const std::uint64_t calls = std::exchange(m_CallsSinceJump, 0);
  if (self.reportedSpinning) {
    // It goes on in calls that cannot throw.
    if (!IsDriver(self)) Park();
    PrintAndAbort("The driving thread spins and cannot be stopped.\n" + DescribeAll(), nullptr);
  }
  self.reportedSpinning = true;
  Break("A thread spins: " + std::to_string(calls) +
        " seam calls with no time passing, the last by " + Describe(self) + "\n" + DescribeAll());
}

void Scheduler::Park() {
  SimThread& self = *m_pRunning;
  self.state = SimThread::State::kParked;
  for (;;) HandOver(self, PickNext());
}

void Scheduler::ThrowAbandoned() {
  if (std::uncaught_exceptions() > 0) return;
  SimThread& self = *m_pRunning;
  if (IsDriver(self)) {
    self.abandoned = false;  // the dead end ends what it does, not what it does next
  } else if (++self.abandonThrows > kMostAbandonThrows) {
    Report("An abandoned thread does not end: " + Describe(self));
    Park();
  }
  throw ThreadAbandoned{};
}

void Scheduler::Abandon(SimThread& thread) {
  if (thread.state == SimThread::State::kEnded) return;
  thread.abandoned = true;
  if (thread.state == SimThread::State::kWaiting && thread.abandonable) {
    MakeReady(thread, Wake::kAbandoned);
  }
}

void Scheduler::EndThreads(std::uint64_t limitMs) {
  for (const auto& thread : m_Threads) {
    if (!thread->ofDevices && !IsDriver(*thread)) Abandon(*thread);
  }
  const auto mayEnd = [this](const auto& thread) {
    return thread->state != SimThread::State::kEnded &&
           thread->state != SimThread::State::kParked && !thread->ofDevices && !IsDriver(*thread);
  };
  const std::uint64_t limit = m_NowMs + limitMs;
  while (m_NowMs < limit && std::ranges::any_of(m_Threads, mayEnd)) SleepUntil(m_NowMs + 10);
  m_pRunning->abandoned = false;
  if (std::ranges::any_of(m_Threads, mayEnd)) {
    Report("Threads of the program do not end.\n" + DescribeAll());
  }
  Reap();
}

void Scheduler::Break(const std::string& text) {
  Report(text);
  m_bBroken = true;
  for (const auto& thread : m_Threads) {
    if (thread->state == SimThread::State::kEnded || thread->state == SimThread::State::kParked) {
      continue;
    }
    if (thread->ofDevices && !thread->waitsForLock) continue;
    thread->abandoned = !thread->ofDevices;
    if (thread->state == SimThread::State::kWaiting) MakeReady(*thread, Wake::kBroken);
  }
}

std::string Scheduler::Describe(const SimThread& thread) const {
  std::string text = "thread " + std::to_string(thread.id) + " '" + thread.name + "'";
  switch (thread.state) {
    case SimThread::State::kReady:
      text += " is ready";
      break;
    case SimThread::State::kRunning:
      text += " runs";
      break;
    case SimThread::State::kWaiting:
      text += ' ' + thread.waitsFor->WaitText();
      break;
    case SimThread::State::kParked:
      text += " was given up";
      break;
    case SimThread::State::kEnded:
      text += " has ended";
      break;
  }
  if (thread.state == SimThread::State::kWaiting && thread.deadline != SimThread::kNever) {
    text += " until " + std::to_string(thread.deadline) + " ms";
  }
  if (thread.abandoned) text += ", is abandoned";
  const char* separator = ", holds ";
  for (const CRITICAL_SECTION* lock : thread.held) {
    text += separator + std::string("'") + lock->name + "'";
    separator = " and ";
  }
  return text;
}

std::string Scheduler::DescribeAll() const {
  std::string text = "At " + std::to_string(m_NowMs) + " ms:";
  for (const auto& thread : m_Threads) {
    if (thread->state != SimThread::State::kEnded) text += "\n  " + Describe(*thread);
  }
  return text;
}

}  // namespace corvane::platform::sim
