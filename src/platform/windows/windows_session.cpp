#include "platform/windows/windows_session.h"

#include <algorithm>
#include <string>

#include "platform/sim/kernel/sim_text.h"
#include "platform/utf.h"
#include "platform/windows/inherited_handles.h"
#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

// The visitor of a walk over windows, and what it was handed.
struct Walk {
  WNDENUMPROC visit;
  void* context;
};

// The system calls it: an exception ends the walk and goes no further.
::BOOL CALLBACK Visit(::HWND window, ::LPARAM parameter) {
  const auto& walk = *reinterpret_cast<const Walk*>(parameter);
  try {
    return walk.visit(window, walk.context);
  } catch (...) {
    return FALSE;
  }
}

}  // namespace

std::optional<std::u16string> ExecutableOfProcess(DWORD processId) {
  constexpr std::size_t kLongestPath = 32'768;  // characters
  const HANDLE process = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
  if (!process) return std::nullopt;
  std::u16string path(kLongestPath, u'\0');
  auto length = static_cast<::DWORD>(path.size());
  const bool told = ::QueryFullProcessImageNameW(process, 0, Wide(path.data()), &length) != 0;
  ::CloseHandle(process);
  if (!told) return std::nullopt;
  path.resize(length);
  return path.substr(path.rfind(u'\\') + 1);
}

// ---- sessions and users ---------------------------------------------------------------------

DWORD WindowsSession::WTSGetActiveConsoleSessionId() {
  return Forward("WTSGetActiveConsoleSessionId", [] { return ::WTSGetActiveConsoleSessionId(); });
}

BOOL WindowsSession::WTSQueryUserToken(DWORD session, HANDLE* token) {
  return ForwardOrFailIfFound(
      "WTSQueryUserToken", CORVANE_FIND(m_Libraries.sessions, WTSQueryUserToken), session, token);
}

BOOL WindowsSession::WTSEnumerateSessionsA(HANDLE server, DWORD reserved, DWORD version,
                                           WTS_SESSION_INFOA** sessions, DWORD* count) {
  return ForwardOrFailIfFound(
      "WTSEnumerateSessionsA", CORVANE_FIND(m_Libraries.sessions, WTSEnumerateSessionsA), server,
      reserved, version, reinterpret_cast<::WTS_SESSION_INFOA**>(sessions), As32(count));
}

void WindowsSession::WTSFreeMemory(void* memory) {
  const auto call = CORVANE_FIND(m_Libraries.sessions, WTSFreeMemory);
  if (call) Forward("WTSFreeMemory", [&] { call(memory); });
}

BOOL WindowsSession::CreateEnvironmentBlock(void** environment, HANDLE token, BOOL inherit) {
  return ForwardOrFailIfFound("CreateEnvironmentBlock",
                              CORVANE_FIND(m_Libraries.users, CreateEnvironmentBlock), environment,
                              token, inherit);
}

BOOL WindowsSession::DestroyEnvironmentBlock(void* environment) {
  return ForwardOrFailIfFound("DestroyEnvironmentBlock",
                              CORVANE_FIND(m_Libraries.users, DestroyEnvironmentBlock),
                              environment);
}

// ---- processes ------------------------------------------------------------------------------

// The system writes into the command line (CreateProcessAsUserW, lpCommandLine). A child that
// inherits gets its standard handles and nothing else that this process has made inheritable.
BOOL WindowsSession::CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPCWSTR commandLine,
                                          BOOL inheritHandles, DWORD flags, void* environment,
                                          LPCWSTR directory, const STARTUPINFOW* startup,
                                          PROCESS_INFORMATION* process) {
  std::u16string command(commandLine ? commandLine : u"");
  InheritedHandles inherited(*As<const ::STARTUPINFOW>(startup), inheritHandles != FALSE);
  return ForwardOrFail("CreateProcessAsUserW", [&] {
    return ::CreateProcessAsUserW(
        token, Wide(application), commandLine ? Wide(command.data()) : nullptr, nullptr, nullptr,
        inherited.Any(), flags | EXTENDED_STARTUPINFO_PRESENT, environment, Wide(directory),
        inherited.Startup(), As<::PROCESS_INFORMATION>(process));
  });
}

// Ends also when the thread is given up.
DWORD WindowsSession::WaitForSingleObject(HANDLE process, DWORD milliseconds) {
  EnterGate("WaitForSingleObject");
  const HANDLE objects[] = {process, WindowsThreads::OwnGiveUpEvent()};
  const ::DWORD count = objects[1] && !WindowsThreads::IsAbandoned() ? 2 : 1;
  ::DWORD error = ERROR_SUCCESS;
  const DWORD result = OrFault([&] {
    const ::DWORD waited = ::WaitForMultipleObjects(count, objects, FALSE, milliseconds);
    error = ::GetLastError();
    return waited;
  });
  if (result == WAIT_FAILED) WindowsThreads::KeepLastError(error);
  if (result != WAIT_OBJECT_0 + 1) return result;
  WindowsThreads::ThrowIfAbandoned();
  return WAIT_TIMEOUT;
}

BOOL WindowsSession::GetExitCodeProcess(HANDLE process, DWORD* exitCode) {
  return ForwardOrFail("GetExitCodeProcess",
                       [&] { return ::GetExitCodeProcess(process, As32(exitCode)); });
}

BOOL WindowsSession::CloseHandle(HANDLE handle) {
  return ForwardOrFail("CloseHandle", [&] { return ::CloseHandle(handle); });
}

BOOL WindowsSession::CreatePipe(HANDLE* readEnd, HANDLE* writeEnd,
                                const SECURITY_ATTRIBUTES* attributes, DWORD size) {
  SECURITY_ATTRIBUTES copy = attributes ? *attributes : SECURITY_ATTRIBUTES{};
  auto* const given = attributes ? As<::SECURITY_ATTRIBUTES>(&copy) : nullptr;
  return ForwardOrFail("CreatePipe", [&] { return ::CreatePipe(readEnd, writeEnd, given, size); });
}

BOOL WindowsSession::PeekNamedPipe(HANDLE readEnd, DWORD* available) {
  return ForwardOrFail("PeekNamedPipe", [&] {
    return ::PeekNamedPipe(readEnd, nullptr, 0, nullptr, As32(available), nullptr);
  });
}

BOOL WindowsSession::ReadFile(HANDLE readEnd, void* buffer, DWORD size, DWORD* read) {
  return ForwardOrFail("ReadFile",
                       [&] { return ::ReadFile(readEnd, buffer, size, As32(read), nullptr); });
}

HANDLE WindowsSession::CreateToolhelp32Snapshot(DWORD flags, DWORD processId) {
  return NullIfInvalid(ForwardOrFail("CreateToolhelp32Snapshot",
                                     [&] { return ::CreateToolhelp32Snapshot(flags, processId); }));
}

BOOL WindowsSession::Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) {
  return ForwardOrFail("Process32FirstW",
                       [&] { return ::Process32FirstW(snapshot, As<::PROCESSENTRY32W>(entry)); });
}

BOOL WindowsSession::Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) {
  return ForwardOrFail("Process32NextW",
                       [&] { return ::Process32NextW(snapshot, As<::PROCESSENTRY32W>(entry)); });
}

HANDLE WindowsSession::OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId) {
  return ForwardOrFail("OpenProcess",
                       [&] { return ::OpenProcess(access, inheritHandle, processId); });
}

BOOL WindowsSession::TerminateProcess(HANDLE process, DWORD exitCode) {
  return ForwardOrFail("TerminateProcess", [&] { return ::TerminateProcess(process, exitCode); });
}

// UTF-8 like all narrow text of the program, whatever the system's code page.
int WindowsSession::system(const char* command) { return _wsystem(ToUtf16(command).c_str()); }

int WindowsSession::_wsystem(LPCWSTR command) {
  return Forward("_wsystem", [&] { return ::_wsystem(Wide(command)); });
}

// ---- the desktop and the machine ------------------------------------------------------------

BOOL WindowsSession::EnumWindows(WNDENUMPROC visit, void* context) {
  const Walk walk{visit, context};
  return ForwardOrFail("EnumWindows",
                       [&] { return ::EnumWindows(&Visit, reinterpret_cast<::LPARAM>(&walk)); });
}

int WindowsSession::GetWindowTextW(HANDLE window, char16_t* title, int size) {
  return Forward("GetWindowTextW",
                 [&] { return ::GetWindowTextW(static_cast<::HWND>(window), Wide(title), size); });
}

BOOL WindowsSession::GetComputerNameExW(int nameType, char16_t* name, DWORD* size) {
  return ForwardOrFail("GetComputerNameExW", [&] {
    return ::GetComputerNameExW(static_cast<::COMPUTER_NAME_FORMAT>(nameType), Wide(name),
                                As32(size));
  });
}

// The name's buffer goes back by NetApiBufferFree (lmaccess.h).
DWORD WindowsSession::NetGetDCName(LPCWSTR server, LPCWSTR domain, std::u16string* controller) {
  using GetName = ::DWORD WINAPI(const wchar_t*, const wchar_t*, BYTE**);
  using Free = ::DWORD WINAPI(void*);
  const auto call = m_Libraries.networks.Find<GetName>("NetGetDCName");
  const auto give = m_Libraries.networks.Find<Free>("NetApiBufferFree");
  if (!call || !give) return ERROR_CALL_NOT_IMPLEMENTED;
  BYTE* name = nullptr;
  const DWORD result =
      Forward("NetGetDCName", [&] { return call(Wide(server), Wide(domain), &name); });
  if (result == ERROR_SUCCESS && name) *controller = reinterpret_cast<const char16_t*>(name);
  if (name) Forward("NetApiBufferFree", [&] { return give(name); });
  return result;
}

// In UTF-8: the system's own narrow text would lose what its code page lacks.
DWORD WindowsSession::GetTempPathA(DWORD size, char* buffer) {
  char16_t wide[MAX_PATH + 1] = {};
  const DWORD length =
      ForwardOrFail("GetTempPathA", [&] { return ::GetTempPathW(MAX_PATH + 1, Wide(wide)); });
  if (length == 0) return 0;
  const std::string path = sim::ToUtf8(wide);
  const auto needed = static_cast<DWORD>(path.size()) + 1;
  if (size < needed) return needed;
  std::copy_n(path.c_str(), needed, buffer);
  return needed - 1;
}

}  // namespace corvane::platform::windows
