#pragma once
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/kernel/scheduler.h"

namespace corvane::platform::sim {

class WaitRecord;

// An event, a semaphore or a thread, as handles name it. It lives while a handle, a wait or its
// thread does.
struct KernelObject {
  enum class Kind { kEvent, kSemaphore, kThread };

  Kind kind = Kind::kEvent;
  std::string name;
  bool ofDevices = false;  // belongs to the machine, not to the program
  bool stays = false;      // a wait leaves it signalled: a manual-reset event, a thread
  LONG count = 0;          // above 0: signalled
  LONG maximum = 1;
  DWORD exitCode = 0;                // of a thread
  SimThread* thread = nullptr;       // null once it has ended
  std::vector<WaitRecord*> waiters;  // in the order in which they came

  bool IsSignalled() const { return count > 0; }
  void Take() {
    if (!stays) --count;
  }
};

// The kernel objects of the simulated PC and the handles that name them. Results and last errors
// are those of the Windows functions. Touched only by the thread that has the baton.
class KernelObjects final : private Scheduler::IThreadEnd {
 public:
  static constexpr DWORD kMaximumWaitObjects = 64;
  static constexpr DWORD kStillActive = 259;
  static constexpr DWORD kWaitIoCompletion = 192;

  explicit KernelObjects(Scheduler& scheduler);
  ~KernelObjects();

  HANDLE CreateThread(ThreadApi::ThreadProc start, void* parameter, const char* name,
                      bool ofDevices, DWORD* threadId);
  BOOL TerminateThread(HANDLE thread, DWORD exitCode);
  BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode);
  HANDLE CreateEvent(bool manualReset, bool initialState, const char* name, bool ofDevices);
  BOOL SetEvent(HANDLE event);
  BOOL ResetEvent(HANDLE event);
  HANDLE CreateSemaphore(LONG initialCount, LONG maximumCount, const char* name, bool ofDevices);
  BOOL ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount);
  BOOL CloseHandle(HANDLE object);
  // An alertable wait that takes no object makes the calls that are queued for the thread and gives
  // kWaitIoCompletion.
  DWORD Wait(DWORD count, const HANDLE* objects, bool waitAll, DWORD milliseconds,
             bool alertable = false);
  BOOL QueueCall(HANDLE thread, QueuedCall call);
  void QueueCall(SimThread& thread, QueuedCall call);
  static void ForgetCalls(SimThread& thread, const void* owner);
  // Whether a wait for this one handle is a wait for a thread's end.
  bool IsThread(HANDLE handle) const;

  std::size_t OpenHandles() const;  // of the program

 private:
  struct Slot {
    std::shared_ptr<KernelObject> object;
    std::uint32_t generation = 0;  // how often it was used before; part of the handle
  };

  HANDLE Open(std::shared_ptr<KernelObject> object);
  const std::shared_ptr<KernelObject>* Find(HANDLE handle) const;
  KernelObject* Find(HANDLE handle, KernelObject::Kind kind) const;
  BOOL Fail(DWORD code);
  // Serves the waits that the object's count allows.
  void Serve(KernelObject& object);
  DWORD WaitOnce(DWORD count, const HANDLE* objects, bool waitAll, DWORD milliseconds,
                 std::uint64_t deadline, bool alertable);
  static bool MakeCalls(SimThread& self);
  void OnThreadEnd(SimThread& thread, DWORD exitCode) override;

  Scheduler& m_Scheduler;
  std::vector<Slot> m_Slots;
  std::vector<std::uint32_t> m_FreeSlots;
};

}  // namespace corvane::platform::sim
