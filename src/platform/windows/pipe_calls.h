#pragma once
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>

#include "platform/pipe_api.h"

namespace corvane::platform::windows {

// What the alertable waits of this process have to call: completion routines of operations on
// pipes, and calls queued to a thread. The system tells of each by an asynchronous procedure call
// on its thread, within a wait of the system's; all that does is to note it here. The calls are
// made when the system's wait is over, in ordinary frames, which may throw. One object for the
// process: the system's calls carry an address and nothing else.
class PipeCalls {
 public:
  // One call: `completion` of an operation, or else a queued `routine`.
  struct Call {
    HANDLE pipe = nullptr;
    OVERLAPPED* overlapped = nullptr;
    OVERLAPPED_COMPLETION_ROUTINE completion = nullptr;
    DWORD error = 0;
    DWORD bytes = 0;
    PAPCFUNC routine = nullptr;
    std::uintptr_t data = 0;
    std::shared_ptr<void> thread = {};  // the system's handle of the thread that makes the call
    bool told = false;                  // by the system, on that thread
    bool cancelled = false;             // nobody wants to hear of it
  };
  using Place = std::list<Call>::iterator;

  static PipeCalls& Instance();

  // An operation of the calling thread, before it is begun. What could not be begun is taken back.
  Place Begin(HANDLE pipe, OVERLAPPED* overlapped, OVERLAPPED_COMPLETION_ROUTINE completion);
  void Retract(Place call);
  // A system error code. `thread` is the system's handle, which this closes.
  DWORD Queue(HANDLE thread, PAPCFUNC routine, std::uintptr_t data);

  // Those of the calling thread that the system has told of: how many, and the next in order.
  std::size_t CountTold() const;
  bool TakeTold(Call* call);

  // No routine is called any more for what was begun on the pipe.
  void Cancel(HANDLE pipe);
  // Whether the system has done with the memory of all that was cancelled on the pipe.
  bool HasEnded(HANDLE pipe) const;
  // Those that have not ended are left to their records: the pipe's handle may be another's now.
  void Forget(HANDLE pipe);
  // Whether an operation in this memory has not ended, or its routine is still to be called.
  bool Uses(const void* memory, std::size_t size) const;

  // What the system calls on the operation's thread, and on the thread that a call is queued to.
  static void OnCompleted(DWORD error, DWORD bytes, OVERLAPPED* overlapped) noexcept;
  static void OnQueued(std::uintptr_t call) noexcept;

 private:
  PipeCalls() = default;
  void DropLost();

  mutable std::mutex m_Mutex;
  std::list<Call> m_Calls;  // in the order in which they were begun
  std::list<Call> m_Told;   // in the order in which the system told of them
};

}  // namespace corvane::platform::windows
