#pragma once
// Operations by a function of a library that this Windows may lack: without it the operation is not
// implemented.
#include "platform/windows/system_call.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// A function that answers by an error code. `args` are what the system takes.
template <typename Function, typename... Args>
auto ForwardIfFound(const char* operation, Function* function, Args... args) {
  using Result = std::invoke_result_t<Function*, Args...>;
  if (!function) return static_cast<Result>(ERROR_CALL_NOT_IMPLEMENTED);
  return Forward(operation, [&]() -> Result { return function(args...); });
}

// One that answers by 0, a null handle or -1 when it fails, and leaves the reason as last error.
template <typename Function, typename... Args>
auto ForwardOrFailIfFound(const char* operation, Function* function, Args... args) {
  using Result = std::invoke_result_t<Function*, Args...>;
  if (!function) {
    WindowsThreads::KeepLastError(ERROR_CALL_NOT_IMPLEMENTED);
    return Result{};
  }
  return ForwardOrFail(operation, [&]() -> Result { return function(args...); });
}

}  // namespace corvane::platform::windows
