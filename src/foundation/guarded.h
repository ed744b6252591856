#pragma once
#include <utility>

#include "platform/types.h"

namespace corvane {

// The filter's line to the console.
void ReportFilter(const char* className, platform::DWORD code);

// Tells of a fault: the filter's line goes to the console, and
// "<class>::<operation>: __EXCEPTION__ - s_LastExceptionCode=0x%08x" to the log as an error.
void ReportFault(const char* className, const char* operation, platform::DWORD code);

// Runs fn() and gives its result. A fault of the platform (PlatformFault) inside it is reported and
// turned into `failure`, the failure value of this one operation; nothing else is caught.
template <typename R, typename Fn>
R Guarded(const char* className, const char* operation, R failure, Fn&& fn) {
  try {
    return std::forward<Fn>(fn)();
  } catch (const platform::PlatformFault& fault) {
    ReportFault(className, operation, fault.code);
    return failure;
  }
}

// The same for destructors, from which nothing may leave: a report that fails is lost.
void ReportFaultSafely(const char* className, const char* operation, platform::DWORD code) noexcept;

// For destructors: runs fn(), which gives something back to the platform. A fault in it is
// reported; a thread that was given up unwinds already, or does so at its next call.
template <typename Fn>
void GiveBack(const char* className, const char* operation, Fn&& fn) noexcept {
  try {
    std::forward<Fn>(fn)();
  } catch (const platform::PlatformFault& fault) {
    ReportFaultSafely(className, operation, fault.code);
  } catch (const platform::ThreadAbandoned&) {
  }
}

}  // namespace corvane
