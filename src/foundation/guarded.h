#pragma once
#include <exception>
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

// Reports from which nothing may leave: one that fails is lost. An exception reads
// "<class>::<operation>: Exception: %S" or, of another kind, "...: std:exception: %S".
void ReportFaultSafely(const char* className, const char* operation, platform::DWORD code) noexcept;
void ReportExceptionSafely(const char* className, const char* operation,
                           const std::exception& exception) noexcept;

// The same for an operation that no exception may leave, lack of memory included: it is reported,
// and is this operation's failure like a fault.
template <typename R, typename Fn>
R Contained(const char* className, const char* operation, R failure, Fn&& fn) {
  try {
    return Guarded(className, operation, failure, std::forward<Fn>(fn));
  } catch (const std::exception& e) {
    ReportExceptionSafely(className, operation, e);
    return failure;
  }
}

// For destructors: runs fn(), which gives something back to the platform. A fault or an exception
// in it is reported; a thread that was given up unwinds already, or does so at its next call.
template <typename Fn>
void GiveBack(const char* className, const char* operation, Fn&& fn) noexcept {
  try {
    std::forward<Fn>(fn)();
  } catch (const platform::PlatformFault& fault) {
    ReportFaultSafely(className, operation, fault.code);
  } catch (const std::exception& e) {
    ReportExceptionSafely(className, operation, e);
  } catch (const platform::ThreadAbandoned&) {
  }
}

}  // namespace corvane
