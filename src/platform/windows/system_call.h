#pragma once
// How an operation of the seam becomes one call of the system: past the gate, with a fault of the
// call as a failure of its own, and with the system's last error kept as the thread's.
#include "platform/windows/seh_call.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_gate.h"
#include "platform/windows/windows_threads.h"

namespace corvane::platform::windows {

// A call that answers by a code, or not at all. `operation` is the name of the seam's operation;
// `call` is one call of the system and has nothing to destroy.
template <typename Fn>
auto Forward(const char* operation, Fn&& call) {
  EnterGate(operation);
  return OrFault(call);
}

template <typename Result>
bool IsFailure(Result result) {
  if constexpr (std::is_pointer_v<Result>) {
    return !result || result == reinterpret_cast<Result>(~std::uintptr_t{0});
  } else {
    return result == 0;
  }
}

// A call that answers by 0, a null handle or INVALID_HANDLE_VALUE when it fails, and leaves the
// reason with the system: it becomes the thread's last error. The reason is taken right behind the
// call, as the first touch of thread-local memory clears it.
template <typename Fn>
auto ForwardOrFail(const char* operation, Fn&& call) {
  EnterGate(operation);
  struct Answer {
    std::invoke_result_t<Fn> result;
    ::DWORD error;
  };
  const Answer answer = OrFault([&] {
    Answer it{call(), 0};
    it.error = ::GetLastError();
    return it;
  });
  if (IsFailure(answer.result)) WindowsThreads::KeepLastError(answer.error);
  return answer.result;
}

// The null that the seam gives for a handle that could not be had, where the system gives -1.
inline HANDLE NullIfInvalid(HANDLE handle) { return IsFailure(handle) ? nullptr : handle; }

}  // namespace corvane::platform::windows
