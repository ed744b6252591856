#include "launch/session_launch.h"

#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char16_t kDesktop[] = u"winsta0\\default";

WString Prefix(const LaunchTag& tag) { return Format(tag.colon ? u"%S:" : u"[%S]", tag.operation); }

void Warn(const LaunchTag& tag, const WString& what) {
  LOG_INFO(u"=WARNING= | %s %s\n", Prefix(tag), what);
}

// The first session of the machine that has a user.
bool QueryAnyUserToken(const LaunchTag& tag, CSessionHandle* token) {
  auto& os = Os();
  WTS_SESSION_INFOA* sessions = nullptr;
  DWORD count = 0;
  if (!os.session.WTSEnumerateSessionsA(nullptr, 0, 1, &sessions, &count)) {
    Warn(tag, Format(u"WTSEnumerateSessionsA() failed %lu", os.threads.GetLastError()));
    return false;
  }
  LogProgress(tag, Format(u"%s %lu sessions", Prefix(tag), count));
  DWORD last = NO_CONSOLE_SESSION;
  DWORD code = ERROR_NO_TOKEN;
  bool found = false;
  for (DWORD i = 0; i < count && !found; ++i) {
    last = sessions[i].SessionId;
    found = os.session.WTSQueryUserToken(last, token->Receive()) != FALSE;
    if (!found) code = os.threads.GetLastError();
  }
  os.session.WTSFreeMemory(sessions);
  if (!found) Warn(tag, Format(u"WTSQueryUserToken(%lu) failed %lu", last, code));
  return found;
}

// The user's environment block; null where there is none, and the launch goes on without.
class CEnvironmentBlock {
 public:
  CEnvironmentBlock(const LaunchTag& tag, HANDLE token) {
    auto& os = Os();
    if (os.session.CreateEnvironmentBlock(&m_pBlock, token, TRUE)) return;
    m_pBlock = nullptr;
    Warn(tag, Format(u"CreateEnvironmentBlock() failed %lu", os.threads.GetLastError()));
  }
  ~CEnvironmentBlock() {
    if (!m_pBlock) return;
    GiveBack("CEnvironmentBlock", "DestroyEnvironmentBlock",
             [this] { Os().session.DestroyEnvironmentBlock(m_pBlock); });
  }
  CEnvironmentBlock(const CEnvironmentBlock&) = delete;
  CEnvironmentBlock& operator=(const CEnvironmentBlock&) = delete;
  void* Get() const { return m_pBlock; }

 private:
  void* m_pBlock = nullptr;
};

}  // namespace

HANDLE* CSessionHandle::Receive() {
  Close();
  return &m_hHandle;
}

void CSessionHandle::Close() {
  const HANDLE handle = std::exchange(m_hHandle, nullptr);
  if (!handle) return;
  GiveBack("CSessionHandle", "CloseHandle", [handle] { Os().session.CloseHandle(handle); });
}

void LogProgress(const LaunchTag& tag, const WString& text) {
  const bool open =
      tag.adapter < 0 ? log::IsOpen(tag.progressBits) : log::IsOpen(tag.adapter, tag.progressBits);
  if (open) log::LineInfo(text);
}

bool QueryUserToken(const LaunchTag& tag, CSessionHandle* token) {
  auto& os = Os();
  const DWORD session = os.session.WTSGetActiveConsoleSessionId();
  if (session == NO_CONSOLE_SESSION) {
    Warn(tag, Format(u"WTSGetActiveConsoleSessionId() failed %lu", os.threads.GetLastError()));
    return false;
  }
  LogProgress(tag, Format(u"%s console session %lu", Prefix(tag), session));
  if (!os.session.WTSQueryUserToken(session, token->Receive()) && !QueryAnyUserToken(tag, token))
    return false;
  LogProgress(tag, Format(u"%s WTSQueryUserToken() SUCCESS", Prefix(tag)));
  return true;
}

bool LaunchAsUser(const LaunchTag& tag, const CSessionHandle& token, WStringView commandLine,
                  const STARTUPINFOW& startup, CSessionHandle* process, DWORD* processId) {
  auto& os = Os();
  STARTUPINFOW onDesktop = startup;
  onDesktop.lpDesktop = kDesktop;
  const CEnvironmentBlock environment(tag, token.Get());
  if (environment.Get())
    LogProgress(tag, Format(u"%s CreateEnvironmentBlock() SUCCESS", Prefix(tag)));
  const bool inherit = (startup.dwFlags & STARTF_USESTDHANDLES) != 0;
  PROCESS_INFORMATION started;
  if (!os.session.CreateProcessAsUserW(token.Get(), nullptr, WString(commandLine).c_str(),
                                       inherit ? TRUE : FALSE,
                                       CREATE_UNICODE_ENVIRONMENT | HIGH_PRIORITY_CLASS,
                                       environment.Get(), nullptr, &onDesktop, &started)) {
    const DWORD code = os.threads.GetLastError();
    LOG_ERROR(u"-FATAL- | %s CreateProcessAsUser(%S) failed %lu%S\n", Prefix(tag), tag.program,
              code, code == ERROR_FILE_NOT_FOUND ? " [ERROR_FILE_NOT_FOUND]" : "");
    return false;
  }
  const CSessionHandle thread(started.hThread);
  *process->Receive() = started.hProcess;
  *processId = started.dwProcessId;
  LogProgress(tag, Format(u"%s CreateProcessAsUser(%S) SUCCESS, process %lu", Prefix(tag),
                          tag.program, *processId));
  return true;
}

bool LaunchInSession(const LaunchTag& tag, WStringView commandLine) {
  CSessionHandle token, process;
  DWORD processId = 0;
  return QueryUserToken(tag, &token) &&
         LaunchAsUser(tag, token, commandLine, STARTUPINFOW(), &process, &processId);
}

}  // namespace corvane
