#include "foundation/guarded.h"

#include "foundation/log_lines.h"
#include "foundation/quiet_reports.h"
#include "platform/console_api.h"
#include "platform/platform.h"

namespace corvane {

void ReportFilter(const char* className, platform::DWORD code) {
  if (CQuietReports::InForce()) return;
  const log::Scope scope;
  Os().console.WriteOutput(
      FormatA("\n>>>>>>>>>>>>>>>>>>>>[[ %s::filterException 0x%x ]]\n\n", className, code));
  Os().console.FlushOutput();
}

void ReportFault(const char* className, const char* operation, platform::DWORD code) {
  if (CQuietReports::InForce()) return;
  ReportFilter(className, code);
  LOG_ERROR(u"%S::%S: __EXCEPTION__ - s_LastExceptionCode=0x%08x", className, operation, code);
}

void ReportFaultSafely(const char* className, const char* operation,
                       platform::DWORD code) noexcept {
  try {
    ReportFault(className, operation, code);
  } catch (...) {
  }
}

void ReportExceptionSafely(const char* className, const char* operation,
                           const std::exception& exception) noexcept {
  if (CQuietReports::InForce()) return;
  try {
    const bool own = dynamic_cast<const Exception*>(&exception) != nullptr;
    LOG_ERROR(own ? u"%S::%S: Exception: %S" : u"%S::%S: std:exception: %S", className, operation,
              exception.what());
  } catch (...) {
  }
}

void ReportFailure(const char* where, const Failure& failure) {
  LOG_ERROR(u"%S: %S: %S", where, failure.Kind(), failure.what);
}

}  // namespace corvane
