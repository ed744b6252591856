#pragma once
#include <optional>
#include <string>

#include "platform/session_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// The file name of a running process's program, without its folder; none when it cannot be told.
std::optional<std::u16string> ExecutableOfProcess(DWORD processId);

// Sessions of users over wtsapi32.dll and userenv.dll, processes, and the pipes of children.
class WindowsSession final : public SessionApi {
 public:
  // What a test puts in the place of the system's libraries.
  struct Libraries {
    SystemLibrary sessions{L"wtsapi32.dll"};
    SystemLibrary users{L"userenv.dll"};
    SystemLibrary networks{L"netapi32.dll"};
  };
  WindowsSession() = default;
  explicit WindowsSession(SystemLibrary::Resolver resolver)
      : m_Libraries{SystemLibrary(resolver), SystemLibrary(resolver), SystemLibrary(resolver)} {}

  DWORD WTSGetActiveConsoleSessionId() override;
  BOOL WTSQueryUserToken(DWORD session, HANDLE* token) override;
  BOOL WTSEnumerateSessionsA(HANDLE server, DWORD reserved, DWORD version,
                             WTS_SESSION_INFOA** sessions, DWORD* count) override;
  void WTSFreeMemory(void* memory) override;
  BOOL CreateEnvironmentBlock(void** environment, HANDLE token, BOOL inherit) override;
  BOOL DestroyEnvironmentBlock(void* environment) override;
  BOOL CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPCWSTR commandLine,
                            BOOL inheritHandles, DWORD flags, void* environment, LPCWSTR directory,
                            const STARTUPINFOW* startup, PROCESS_INFORMATION* process) override;
  DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds) override;
  BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode) override;
  BOOL CloseHandle(HANDLE handle) override;
  BOOL CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, const SECURITY_ATTRIBUTES* attributes,
                  DWORD size) override;
  BOOL PeekNamedPipe(HANDLE readEnd, DWORD* available) override;
  BOOL ReadFile(HANDLE readEnd, void* buffer, DWORD size, DWORD* read) override;
  HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId) override;
  BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry) override;
  BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry) override;
  HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId) override;
  BOOL TerminateProcess(HANDLE process, DWORD exitCode) override;
  int system(const char* command) override;
  int _wsystem(LPCWSTR command) override;
  BOOL EnumWindows(WNDENUMPROC visit, void* context) override;
  int GetWindowTextW(HANDLE window, char16_t* title, int size) override;
  BOOL GetComputerNameExW(int nameType, char16_t* name, DWORD* size) override;
  DWORD NetGetDCName(LPCWSTR server, LPCWSTR domain, std::u16string* controller) override;
  DWORD GetTempPathA(DWORD size, char* buffer) override;

 private:
  const Libraries m_Libraries;
};

}  // namespace corvane::platform::windows
