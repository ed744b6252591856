#pragma once
#include <exception>
#include <type_traits>
#include <utility>

#include "foundation/exception.h"
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

// What was thrown, as the log names it.
struct Failure {
  bool own;            // an Exception, which is this program's own
  const char* what;    // its text, as long as the call that is told of it lasts
  std::uint32_t code;  // of an Exception; 0 of any other
  const char* Kind() const { return own ? "Exception" : "std:exception"; }
};

// Runs fn() and gives its result. An exception ends here; onFailure(failure), of the same type, is
// the result then. Faults of the platform, and the end of a thread that was given up, pass.
template <typename Fn, typename OnFailure>
std::invoke_result_t<Fn> Contained(Fn&& fn, OnFailure&& onFailure) {
  try {
    return std::forward<Fn>(fn)();
  } catch (const Exception& e) {
    return std::forward<OnFailure>(onFailure)(Failure{true, e.what(), e.GetCode()});
  } catch (const std::exception& e) {
    return std::forward<OnFailure>(onFailure)(Failure{false, e.what(), 0});
  }
}

// Logs "<where>: Exception: %S" or "<where>: std:exception: %S".
void ReportFailure(const char* where, const Failure& failure);

// The same for what has no result, with that line.
template <typename Fn>
void ContainedAt(const char* where, Fn&& fn) {
  Contained(std::forward<Fn>(fn),
            [where](const Failure& failure) { ReportFailure(where, failure); });
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
