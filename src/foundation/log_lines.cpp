#include "foundation/log_lines.h"

#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

std::atomic<std::uint64_t> g_DebugMask{kDefaultDebugMask};
std::atomic<std::uint32_t> g_DebugIFMask{kDefaultDebugIFMask};
std::atomic<std::uint32_t> g_EnableFileLogging{1};

namespace {

constexpr std::size_t kMaxLineChars = 2047;
constexpr int kMaxWaitForSinkMs = 1000;

std::atomic<ILogSink*> s_pSink{nullptr};
std::atomic<int> s_SinkUsers{0};
std::atomic<std::uint64_t> s_Scopes{0};

// Keeps the sink in force from going while it is used. The user counts itself before it reads the
// sink, and the sink goes only after it was taken away and nobody counts.
class SinkUse {
 public:
  SinkUse() { s_SinkUsers.fetch_add(1); }
  ~SinkUse() { s_SinkUsers.fetch_sub(1); }
  SinkUse(const SinkUse&) = delete;
  SinkUse& operator=(const SinkUse&) = delete;

  ILogSink* Get() const { return s_pSink.load(); }
};

template <typename View>
void Write(std::uint32_t outputs, const char* tag, View text) {
  const log::Scope scope;
  const SinkUse use;
  if (ILogSink* sink = use.Get()) {
    sink->Write(outputs, tag, text);
  } else if (outputs & kLogConsole) {
    Os().console.WriteOutput(FormatA("%s\n", text));
  }
}

WStringView AsLine(WStringView text) {
  text = text.substr(0, kMaxLineChars);
  if (text.ends_with(u'\n')) text.remove_suffix(1);
  return text;
}

}  // namespace

bool SetLogSink(ILogSink* sink) {
  const ILogSink* const earlier = s_pSink.exchange(sink);
  if (!earlier) return true;
  for (int ms = 0; s_SinkUsers.load() != 0; ++ms) {
    if (ms == kMaxWaitForSinkMs) return false;
    Os().threads.Sleep(1);
  }
  return true;
}

namespace log {

Scope::Scope() : m_LastError(Os().threads.GetLastError()) {
  s_Scopes.fetch_add(1, std::memory_order_relaxed);
  Os().threads.BeginForLog();
}

Scope::~Scope() {
  Os().threads.EndForLog();
  Os().threads.SetLastError(m_LastError);
}

std::uint64_t Scope::Count() { return s_Scopes.load(std::memory_order_relaxed); }

void LineInfo(const WString& text) { LogInfo(AsLine(text)); }

void LineError(const WString& text) { LogError(AsLine(text)); }

void WritePieces(std::uint32_t outputs, const char* tag, const FormatArg* pieces,
                 std::size_t count) {
  Write(outputs, tag, std::string_view(JoinPieces(pieces, count)));
}

}  // namespace log

void LogInfo(WStringView text) { Write(kLogFile | kLogConsole, "<I>", text); }

void LogError(WStringView text) { Write(kLogFile | kLogConsole, "<E>", text); }

void LogWarning(WStringView text) { Write(kLogFile | kLogConsole, "<W>", text); }

std::string GetMemoryLog() {
  const SinkUse use;
  ILogSink* const sink = use.Get();
  return sink ? sink->GetMemoryLog() : std::string();
}

}  // namespace corvane
