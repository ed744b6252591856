#pragma once
// The log of the process: LOG_ADAPTER, LOG_DEBUG, LOG_ERROR and LogRecord (foundation/log_lines.h)
// write to it between StartLogger and StopLogger.
//
// A record reads 0000123<11/18/2026/T04:20:00.123Z>~<I> and its text. LogInfo, LogError and
// LogWarning go to file and console; the memory log is a short history for users, of LogRecord
// calls alone.

#include <string>

#include "foundation/log_lines.h"

namespace corvane {

// Starts the logger (once, on the main thread). `baseName` is a path without ".log", in UTF-8;
// throws std::runtime_error when the file can't be opened. With file logging on, the files of the
// last run move on one place: <base>.log to <base>1.log, that to <base>2.log, that to <base>3.log.
void StartLogger(const std::string& baseName);
void StopLogger();

}  // namespace corvane
