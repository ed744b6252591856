#include "core/log/log.h"

#include <memory>

#include "core/log/log_files.h"
#include "core/log/logger3.h"

namespace corvane {
namespace {

std::unique_ptr<logger3> s_pLogger;

}  // namespace

void StartLogger(const std::string& baseName) {
  StopLogger();
  if (g_EnableFileLogging) log_files::RotateAtStart(baseName);
  s_pLogger = std::make_unique<logger3>(baseName + ".log");
  SetLogSink(s_pLogger.get());
}

void StopLogger() {
  // A thread that does not leave the logger keeps it: better that it stays than that it goes under the
  // thread's feet.
  if (!SetLogSink(nullptr)) static_cast<void>(s_pLogger.release());
  s_pLogger.reset();
}

}  // namespace corvane
