#include "log/log.h"

#include <utility>

#include "log/log_files.h"
#include "log/logger3.h"

namespace corvane {
namespace {

logger3* s_pLogger = nullptr;

}  // namespace

void StartLogger(const std::string& baseName) {
  StopLogger();
  const log::Scope scope;
  if (g_EnableFileLogging) log_files::RotateAtStart(baseName);
  s_pLogger = new logger3(baseName + ".log");
  SetLogSink(s_pLogger);
}

void StopLogger() {
  // A thread that does not leave the logger keeps it: better that it stays than that it goes under
  // the thread's feet.
  logger3* const logger = std::exchange(s_pLogger, nullptr);
  if (!SetLogSink(nullptr)) return;
  const log::Scope scope;
  delete logger;
}

}  // namespace corvane
