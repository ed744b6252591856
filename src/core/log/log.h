#pragma once
// The log as the program uses it. A debug line tests its gate before any of its values is worked out;
// a closed gate costs two bit tests.
//
//   LOG_ADAPTER(idx, DBG(16) | DBG(31), u"[%i] text %s", idx, name);
//   LOG_DEBUG(DBG(31), u"text");
//   LOG_ERROR(u"always, as an error");

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/foundation/format.h"

namespace corvane {

inline constexpr std::uint64_t kDefaultDebugMask = 0x1EF54BB2B0858;
inline constexpr std::uint32_t kDefaultDebugIFMask = 3;

// The gates, and whether the file output writes. Written by the main thread, read by all.
extern std::atomic<std::uint64_t> g_DebugMask;
extern std::atomic<std::uint32_t> g_DebugIFMask;
extern std::atomic<std::uint32_t> g_EnableFileLogging;

// Outputs of a record.
enum LogOutput : std::uint32_t { kLogFile = 1, kLogConsole = 2, kLogMemory = 4 };

constexpr std::uint64_t DBG(unsigned bit) { return std::uint64_t{1} << bit; }

namespace log {

inline bool IsOpen(std::uint64_t mask) {
  return (g_DebugMask.load(std::memory_order_relaxed) & mask) != 0;
}
// `adapter` is the adapter index; the gate looks at the bit of its value modulo 32.
inline bool IsOpen(int adapter, std::uint64_t mask) {
  return IsOpen(mask) && ((g_DebugIFMask.load(std::memory_order_relaxed) >>
                           (static_cast<unsigned>(adapter) % 32)) &
                          1) != 0;
}

// A formatted line: cut at 2047 characters, less one line feed at its end, to file and console.
// Cold, so that a call site is small.
void LineInfo(const WString& text);
void LineError(const WString& text);

}  // namespace log

// Starts the logger (once, on the main thread). `baseName` is a path without ".log"; throws
// std::runtime_error when the file can't be opened.
void StartLogger(const std::string& baseName);
void StopLogger();

// Records with the tags "<I>", "<E>", "<W>" to file and console; without a logger on standard output.
void LogInfo(WStringView text);
void LogError(WStringView text);
void LogWarning(WStringView text);
// A record with any outputs; `tag` is "<I>", "<W>" or "<E>".
void LogRecord(std::uint32_t outputs, const char* tag, std::string_view text);
// The memory log, oldest record first; empty without a logger.
std::string GetMemoryLog();

#define LOG_DEBUG(mask, ...)                                                            \
  do {                                                                                  \
    if (::corvane::log::IsOpen(mask)) ::corvane::log::LineInfo(::corvane::Format(__VA_ARGS__)); \
  } while (0)
#define LOG_ADAPTER(adapter, mask, ...)                                                 \
  do {                                                                                  \
    if (::corvane::log::IsOpen((adapter), (mask)))                                      \
      ::corvane::log::LineInfo(::corvane::Format(__VA_ARGS__));                         \
  } while (0)
#define LOG_INFO(...) ::corvane::log::LineInfo(::corvane::Format(__VA_ARGS__))
#define LOG_ERROR(...) ::corvane::log::LineError(::corvane::Format(__VA_ARGS__))

}  // namespace corvane
