#pragma once
// Lines for the log as every room writes them, and the gates in front of them. A debug line tests
// its gate before any of its values is worked out; a closed gate costs two bit tests.
//
//   LOG_ADAPTER(idx, DBG(16) | DBG(31), u"[%i] text %s", idx, name);
//   LOG_DEBUG(DBG(31), u"text");
//   LOG_ERROR(u"always, as an error");
//
// Where the lines go is the sink's business (the logger of log/); without one they go to standard
// output.

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/format.h"

namespace corvane {

inline constexpr std::uint64_t kDefaultDebugMask = 0x1EF54BB2B0858;
inline constexpr std::uint32_t kDefaultDebugIFMask = 3;

// The gates, and whether the file output writes. Written by the main thread, read by all.
extern std::atomic<std::uint64_t> g_DebugMask;
extern std::atomic<std::uint32_t> g_DebugIFMask;
extern std::atomic<std::uint32_t> g_EnableFileLogging;

// Outputs of a record, as a mask.
enum LogOutput : std::uint32_t { kLogFile = 1, kLogConsole = 2, kLogMemory = 4 };

constexpr std::uint64_t DBG(unsigned bit) { return std::uint64_t{1} << bit; }

// Takes the records. `tag` is "<I>", "<W>" or "<E>"; wide text loses its high bytes. Called by
// every thread; may throw std::runtime_error.
class ILogSink {
 public:
  virtual void Write(std::uint32_t outputs, const char* tag, WStringView text) = 0;
  virtual void Write(std::uint32_t outputs, const char* tag, std::string_view text) = 0;
  virtual std::string GetMemoryLog() = 0;

 protected:
  ~ILogSink() = default;
};

// Sets the sink, null for none. True once no thread is inside the earlier sink any more, so that it
// may go; false when a thread did not leave it within a second.
bool SetLogSink(ILogSink* sink);

namespace log {

inline bool IsOpen(std::uint64_t mask) {
  return (g_DebugMask.load(std::memory_order_relaxed) & mask) != 0;
}
// `adapter` is the adapter index; the gate looks at the bit of its value modulo 32.
inline bool IsOpen(int adapter, std::uint64_t mask) {
  return IsOpen(mask) &&
         ((g_DebugIFMask.load(std::memory_order_relaxed) >> (static_cast<unsigned>(adapter) % 32)) &
          1) != 0;
}

// A formatted line: cut at 2047 characters, less one line feed at its end, to file and console.
// Cold, so that a call site is small.
void LineInfo(const WString& text);
void LineError(const WString& text);

// What is asked and written in it serves the log alone: watching a run must not change it. Keeps
// the calling thread's last error.
class Scope {
 public:
  Scope();
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  // Scopes of the process so far: where two readings differ, something was written in between.
  static std::uint64_t Count();

 private:
  const std::uint32_t m_LastError;
};

// A gate for more than one line: open for as long as it lives, if it was.
//
//   if (const log::Open open(idx, mask); open) DumpEverything();
class Open {
 public:
  explicit Open(std::uint64_t mask) {
    if (IsOpen(mask)) m_Scope.emplace();
  }
  Open(int adapter, std::uint64_t mask) {
    if (IsOpen(adapter, mask)) m_Scope.emplace();
  }
  explicit operator bool() const { return m_Scope.has_value(); }

 private:
  std::optional<Scope> m_Scope;
};

void WritePieces(std::uint32_t outputs, const char* tag, const FormatArg* pieces,
                 std::size_t count);

}  // namespace log

// Records with the tags "<I>", "<E>", "<W>" to file and console; without a sink the text and a line
// feed go to standard output.
void LogInfo(WStringView text);
void LogError(WStringView text);
void LogWarning(WStringView text);

// A record with any outputs, of pieces that are narrow or wide texts and numbers. Without a sink it
// goes to standard output if kLogConsole is among them.
template <typename... Pieces>
void LogRecord(std::uint32_t outputs, const char* tag, const Pieces&... pieces) {
  const FormatArg list[sizeof...(Pieces) + 1] = {FormatArg(pieces)..., FormatArg(0)};
  log::WritePieces(outputs, tag, list, sizeof...(Pieces));
}

// The memory log, oldest record first; empty without a sink.
std::string GetMemoryLog();

// The values of a line are worked out inside the scope, too.
#define LOG_LINE(write, ...)               \
  do {                                     \
    const ::corvane::log::Scope logScope;  \
    write(::corvane::Format(__VA_ARGS__)); \
  } while (0)
#define LOG_DEBUG(mask, ...)                                                           \
  do {                                                                                 \
    if (::corvane::log::IsOpen(mask)) LOG_LINE(::corvane::log::LineInfo, __VA_ARGS__); \
  } while (0)
#define LOG_ADAPTER(adapter, mask, ...)                \
  do {                                                 \
    if (::corvane::log::IsOpen((adapter), (mask)))     \
      LOG_LINE(::corvane::log::LineInfo, __VA_ARGS__); \
  } while (0)
#define LOG_INFO(...) LOG_LINE(::corvane::log::LineInfo, __VA_ARGS__)
#define LOG_ERROR(...) LOG_LINE(::corvane::log::LineError, __VA_ARGS__)

}  // namespace corvane
