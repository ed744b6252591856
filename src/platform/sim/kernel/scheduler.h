#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/kernel/fiber.h"
#include "platform/sim/kernel/seeded_random.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

class Scheduler;
struct KernelObject;

// Why a blocked thread runs again.
enum class Wake {
  kSignalled,  // what it waited for has come
  kTimedOut,
  kAlerted,    // a call is queued for it
  kAbandoned,  // TerminateThread
  kBroken,     // the run has come to a dead end
};

// What a thread waits for, as text for a report.
class IWaitText {
 public:
  virtual std::string WaitText() const = 0;

 protected:
  ~IWaitText() = default;
};

// What a thread does in its next alertable wait.
struct QueuedCall {
  const void* owner = nullptr;  // by which it is taken back
  std::function<void()> run;
};

// One thread of the simulated PC. Touched only by the thread that has the baton.
struct SimThread {
  enum class State { kReady, kRunning, kWaiting, kParked, kEnded };
  static constexpr std::uint64_t kNever = ~std::uint64_t{0};

  DWORD id = 0;
  const char* name = "";
  bool ofDevices = false;  // belongs to the machine, not to the program
  State state = State::kReady;

  // While it waits.
  std::uint64_t deadline = kNever;  // ms of the PC
  std::uint64_t order = 0;          // of threads with one deadline, the lower goes first
  const IWaitText* waitsFor = nullptr;
  const CRITICAL_SECTION* waitsForLock = nullptr;
  bool abandonable = true;  // TerminateThread ends the wait
  bool alertable = false;   // a queued call ends the wait
  Wake wake = Wake::kSignalled;

  unsigned forLog = 0;           // depth of BeginForLog
  std::deque<QueuedCall> calls;  // for its next alertable wait
  bool abandoned = false;
  unsigned abandonThrows = 0;  // times that ThreadAbandoned was thrown in it
  bool reportedSpinning = false;
  DWORD lastError = 0;
  std::vector<const CRITICAL_SECTION*> held;  // oldest first, each once
  std::shared_ptr<KernelObject> object;       // what its handles name; null for the driving thread

  ThreadApi::ThreadProc start = nullptr;
  void* parameter = nullptr;
  Scheduler* scheduler = nullptr;
  std::unique_ptr<Fiber> fiber;
};

// Runs threads one at a time, in virtual time, each as a fiber. The thread that makes the scheduler
// is the driving thread; it and the threads that it starts hand one baton around, so whoever runs
// may touch all state of the kernel without a lock. The baton is given up in Block and Yield and,
// with interleaving, in Call. When no thread is ready the clock jumps to the next deadline.
class Scheduler {
 public:
  class IThreadEnd {
   public:
    // On the ending thread, after its last instruction of the program.
    virtual void OnThreadEnd(SimThread& thread, DWORD exitCode) = 0;

   protected:
    ~IThreadEnd() = default;
  };
  using ReportHandler = void (*)(const std::string& report, void* context);

  Scheduler(std::uint64_t seed, bool interleave);
  ~Scheduler();  // on the driving thread; a thread that has not ended never runs again
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  void SetThreadEnd(IThreadEnd* listener) { m_pThreadEnd = listener; }
  void SetReportHandler(ReportHandler handler, void* context);
  void SetSpinLimit(std::uint64_t calls) { m_SpinLimit = calls; }

  SimThread& Current() { return *m_pRunning; }
  bool IsDriver(const SimThread& thread) const { return &thread == m_Threads.front().get(); }
  std::uint64_t NowMs() const { return m_NowMs; }
  std::uint64_t Calls() const { return m_Calls; }
  // A digest of who ran when: equal for runs that were scheduled alike.
  std::uint64_t Fingerprint() const { return m_Fingerprint; }
  int LiveThreads() const;  // of the program, the driving one not counted
  int AbandonedThreads()
      const;  // of those, given up and not yet unwound; the running one not counted

  // Makes a thread that is ready to run; null when the machine gives none.
  SimThread* Start(ThreadApi::ThreadProc start, void* parameter, const char* name, bool ofDevices,
                   std::shared_ptr<KernelObject> object);

  bool IsForLog() const { return m_pRunning->forLog != 0; }
  // Counts a seam call, finds a thread that spins, and with interleaving may hand the baton on. A
  // call for the log does none of it, so that a run is the same whatever is logged.
  void Call() {
    CountCall();
    InterleavePoint();
  }
  void InterleavePoint() {
    if (m_bInterleave && !IsForLog()) Interleave();
  }
  // The counting alone, for operations that only read.
  void CountCall() {
    if (IsForLog()) return;
    ++m_Calls;
    if (++m_CallsSinceJump > m_SpinLimit) ReportSpinning();
  }

  // Throws ThreadAbandoned in a thread that was given up, unless it unwinds already.
  void ThrowIfAbandoned() {
    if (m_pRunning->abandoned) ThrowAbandoned();
  }

  // Waits until MakeReady or the deadline (ms of the PC, kNever for none).
  Wake Block(std::uint64_t deadline, const IWaitText& what, bool abandonable = true,
             const CRITICAL_SECTION* lock = nullptr);
  void MakeReady(SimThread& thread, Wake wake);
  void Yield();  // lets the other ready threads go first
  // Deadline of a wait of so many milliseconds from now; INFINITE has none.
  std::uint64_t DeadlineIn(DWORD milliseconds) const {
    return milliseconds == INFINITE ? SimThread::kNever : m_NowMs + milliseconds;
  }
  // A sleep that is no seam call: the driving thread's.
  void SleepUntil(std::uint64_t deadline);

  // The thread throws ThreadAbandoned at its next call, at once if it waits.
  void Abandon(SimThread& thread);
  // Abandons the program's threads, and lets them unwind for up to `limitMs`. Those that do not end
  // are reported. For the driving thread.
  void EndThreads(std::uint64_t limitMs);

  void Report(const std::string& text) { m_pReport(text, m_pReportContext); }
  // Reports, then lets everything fall: all threads are abandoned and no lock blocks any more.
  void Break(const std::string& text);
  bool IsBroken() const { return m_bBroken; }
  std::string Describe(const SimThread& thread) const;  // one line
  std::string DescribeAll() const;                      // a line for each thread

 private:
  [[noreturn]] static void RunThread(void* thread);
  DWORD RunToItsEnd(SimThread& thread);
  SimThread& PickNext();
  SimThread* TakeReady();
  std::uint64_t EarliestDeadline() const;
  void JumpTo(std::uint64_t time);
  void SwitchFrom(SimThread& self);
  void HandOver(SimThread& self, SimThread& next);
  void Interleave();
  void ReportSpinning();
  [[noreturn]] void Park();
  void ThrowAbandoned();
  void Reap();

  std::vector<std::unique_ptr<SimThread>> m_Threads;  // by rising id; the driving thread is first
  std::vector<SimThread*> m_Ready;                    // in order
  SimThread* m_pRunning = nullptr;
  IThreadEnd* m_pThreadEnd = nullptr;
  ReportHandler m_pReport;
  void* m_pReportContext = nullptr;

  std::uint64_t m_NowMs = 0;
  std::uint64_t m_Sequence = 0;
  DWORD m_LastId = 0;
  std::uint64_t m_Calls = 0;
  std::uint64_t m_CallsSinceJump = 0;
  std::uint64_t m_SpinLimit = 50'000'000;
  std::uint64_t m_Fingerprint = 0;
  bool m_bBroken = false;

  // The style of an interleaved run, drawn once from the seed.
  bool m_bInterleave;
  SeededRandom m_Random;
  std::uint64_t m_SwitchOneIn = 0;  // calls to a switch, on average
  std::uint64_t m_StallOneIn = 0;   // calls to a stall, on average; 0 for none
  std::uint64_t m_LongestStallMs = 0;
};

}  // namespace corvane::platform::sim
