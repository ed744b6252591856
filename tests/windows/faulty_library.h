#pragma once
// Libraries that fail: one whose every function reads where nothing is, and one that has none.
#include <cstdint>
#include <functional>
#include <vector>

// The program's headers come before the system's.
// clang-format off
#include <gtest/gtest.h>
#include "platform/windows/system_library.h"
#include "platform/windows/windows_threads.h"
#include "platform/windows/win32.h"
// clang-format on

namespace corvane::test {

inline std::uintptr_t ReadNowhere() {
  return *static_cast<volatile std::uintptr_t*>(reinterpret_cast<void*>(0x10));
}
inline void* FindFaulting(const char*) { return reinterpret_cast<void*>(&ReadNowhere); }
inline void* FindNothing(const char*) { return nullptr; }
inline const platform::windows::SystemLibrary kFaulting(&FindFaulting);
inline const platform::windows::SystemLibrary kMissing(&FindNothing);

// The code of the fault by which a call ends, 0 for none.
template <typename Fn>
platform::DWORD FaultCodeOf(Fn&& fn) {
  try {
    fn();
  } catch (const platform::PlatformFault& fault) {
    return fault.code;
  }
  return 0;
}

// Each operation of a service once, with arguments that would do. Its answer is an error code; that
// of an operation which answers by 0 or null is CodeOf it.
template <typename Api>
struct Operation {
  const char* name;
  std::function<long(Api&)> call;
};

template <typename Result>
long CodeOf(Result result) {
  platform::windows::WindowsThreads threads;
  return result ? 0 : static_cast<long>(threads.GetLastError());
}

// A fault ends the one operation, and what is not there is not implemented.
template <typename Api>
void ExpectFailures(const std::vector<Operation<Api>>& operations, Api& missing, Api& faulting,
                    long notThere = ERROR_CALL_NOT_IMPLEMENTED) {
  for (const Operation<Api>& operation : operations) {
    SCOPED_TRACE(operation.name);
    platform::windows::WindowsThreads::KeepLastError(0);
    EXPECT_EQ(operation.call(missing), notThere);
    EXPECT_EQ(FaultCodeOf([&] { operation.call(faulting); }), EXCEPTION_ACCESS_VIOLATION);
  }
}

}  // namespace corvane::test
