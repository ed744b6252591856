#pragma once
// The log of the process: LOG_ADAPTER, LOG_DEBUG, LOG_ERROR and LogRecord (trace.h) write to it
// between StartLogger and StopLogger.

#include <string>

#include "core/foundation/trace.h"

namespace corvane {

// Starts the logger (once, on the main thread). `baseName` is a path without ".log"; throws
// std::runtime_error when the file can't be opened.
void StartLogger(const std::string& baseName);
void StopLogger();

// The memory log, oldest record first; empty without a logger.
std::string GetMemoryLog();

}  // namespace corvane
