#pragma once
#include <utility>

#include "platform/types.h"

namespace corvane {

// Prints the filter line of a fault to the console and remembers the code.
void ReportFault(const char* className, platform::DWORD code);

// Runs fn() and gives its result. A fault of the platform (PlatformFault) inside it is reported,
// logged as "<class>::<operation>: __EXCEPTION__ - s_LastExceptionCode=0x%08x" and turned into
// `failure`; nothing else is caught.
void LogGuardedFault(const char* className, const char* operation, platform::DWORD code);

template <typename R, typename Fn>
R Guarded(const char* className, const char* operation, R failure, Fn&& fn) {
  try {
    return std::forward<Fn>(fn)();
  } catch (const platform::PlatformFault& fault) {
    ReportFault(className, fault.code);
    LogGuardedFault(className, operation, fault.code);
    return failure;
  }
}

}  // namespace corvane
