#pragma once
#include <cstddef>

#include "platform/types.h"

namespace corvane::platform {

inline constexpr DWORD NO_CONSOLE_SESSION = 0xFFFFFFFF;
inline constexpr DWORD CREATE_UNICODE_ENVIRONMENT = 0x400;
inline constexpr DWORD HIGH_PRIORITY_CLASS = 0x80;
inline constexpr DWORD STARTF_USESHOWWINDOW = 0x1;
inline constexpr DWORD STARTF_USESTDHANDLES = 0x100;
inline constexpr DWORD PROCESS_TERMINATE = 0x1;
inline constexpr DWORD PROCESS_ALL_ACCESS = 0x1FFFFF;
inline constexpr DWORD TH32CS_SNAPPROCESS = 0x2;
inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_NO_TOKEN = 1008;

struct WTS_SESSION_INFOA {
  DWORD SessionId = 0;
  const char* pWinStationName = nullptr;
  DWORD State = 0;  // WTS_CONNECTSTATE_CLASS; 0 is WTSActive
};
static_assert(sizeof(WTS_SESSION_INFOA) == 24);

struct SECURITY_ATTRIBUTES {
  DWORD nLength = 24;
  void* lpSecurityDescriptor = nullptr;
  BOOL bInheritHandle = FALSE;
};
static_assert(sizeof(SECURITY_ATTRIBUTES) == 24);

struct STARTUPINFOW {
  DWORD cb = 104;
  char16_t* lpReserved = nullptr;
  const char16_t* lpDesktop = nullptr;
  const char16_t* lpTitle = nullptr;
  DWORD dwX = 0, dwY = 0, dwXSize = 0, dwYSize = 0;
  DWORD dwXCountChars = 0, dwYCountChars = 0, dwFillAttribute = 0;
  DWORD dwFlags = 0;
  WORD wShowWindow = 0;
  WORD cbReserved2 = 0;
  BYTE* lpReserved2 = nullptr;
  HANDLE hStdInput = nullptr;
  HANDLE hStdOutput = nullptr;
  HANDLE hStdError = nullptr;
};
static_assert(sizeof(STARTUPINFOW) == 104);

struct PROCESS_INFORMATION {
  HANDLE hProcess = nullptr;
  HANDLE hThread = nullptr;
  DWORD dwProcessId = 0;
  DWORD dwThreadId = 0;
};
static_assert(sizeof(PROCESS_INFORMATION) == 24);

struct PROCESSENTRY32W {
  DWORD dwSize = 568;
  DWORD cntUsage = 0;
  DWORD th32ProcessID = 0;
  std::uint64_t th32DefaultHeapID = 0;
  DWORD th32ModuleID = 0;
  DWORD cntThreads = 0;
  DWORD th32ParentProcessID = 0;
  LONG pcPriClassBase = 0;
  DWORD dwFlags = 0;
  char16_t szExeFile[260] = {};
};
static_assert(sizeof(PROCESSENTRY32W) == 568);

inline constexpr int ComputerNameDnsDomain = 2;  // COMPUTER_NAME_FORMAT

// FALSE ends the walk.
using WNDENUMPROC = BOOL (*)(HANDLE window, void* context);

// The sessions of users and the processes in them. Operations that give BOOL or a null handle leave
// the reason in ThreadApi::GetLastError(). All handles of this service (tokens, processes, threads
// of processes, pipe ends, snapshots) are its own and are closed by its CloseHandle, exactly once.
class SessionApi {
 public:
  virtual ~SessionApi() = default;

  virtual DWORD WTSGetActiveConsoleSessionId();  // NO_CONSOLE_SESSION: none
  virtual BOOL WTSQueryUserToken(DWORD session, HANDLE* token);
  // `server` null is this machine. The list is freed by WTSFreeMemory.
  virtual BOOL WTSEnumerateSessionsA(HANDLE server, DWORD reserved, DWORD version,
                                     WTS_SESSION_INFOA** sessions, DWORD* count);
  virtual void WTSFreeMemory(void* memory);
  virtual BOOL CreateEnvironmentBlock(void** environment, HANDLE token, BOOL inherit);
  virtual BOOL DestroyEnvironmentBlock(void* environment);

  // Without an application name: the first word of the command line is searched for by the
  // platform.
  virtual BOOL CreateProcessAsUserW(HANDLE token, LPCWSTR application, LPCWSTR commandLine,
                                    BOOL inheritHandles, DWORD flags, void* environment,
                                    LPCWSTR directory, const STARTUPINFOW* startup,
                                    PROCESS_INFORMATION* process);
  // WAIT_OBJECT_0 once the process has ended, WAIT_TIMEOUT or WAIT_FAILED.
  virtual DWORD WaitForSingleObject(HANDLE process, DWORD milliseconds);
  virtual BOOL GetExitCodeProcess(HANDLE process, DWORD* exitCode);
  virtual BOOL CloseHandle(HANDLE handle);

  // An anonymous pipe, by which a child's output is read.
  virtual BOOL CreatePipe(HANDLE* readEnd, HANDLE* writeEnd, const SECURITY_ATTRIBUTES* attributes,
                          DWORD size);
  virtual BOOL PeekNamedPipe(HANDLE readEnd, DWORD* available);
  virtual BOOL ReadFile(HANDLE readEnd, void* buffer, DWORD size, DWORD* read);

  // The processes of all sessions; null on failure. The first entry is the idle process. An id
  // other than 0 is the process that is looked for: a platform may leave the others behind it out.
  virtual HANDLE CreateToolhelp32Snapshot(DWORD flags, DWORD processId);
  virtual BOOL Process32FirstW(HANDLE snapshot, PROCESSENTRY32W* entry);
  virtual BOOL Process32NextW(HANDLE snapshot, PROCESSENTRY32W* entry);
  virtual HANDLE OpenProcess(DWORD access, BOOL inheritHandle, DWORD processId);
  virtual BOOL TerminateProcess(HANDLE process, DWORD exitCode);

  // The command interpreter: what the command gave, -1 when it could not be run.
  virtual int system(const char* command);
  virtual int _wsystem(LPCWSTR command);

  // The top-level windows of the desktop that this process sees. A service sees none; where there
  // is no desktop, the terminal of an interactive process stands for one, by the title "Default
  // IME".
  virtual BOOL EnumWindows(WNDENUMPROC visit, void* context);
  // Length of the title, cut to `size` characters with its NUL; 0 for none.
  virtual int GetWindowTextW(HANDLE window, char16_t* title, int size);
  // A name of this machine. *size is that of the buffer with the NUL, and becomes the length
  // without it; ERROR_MORE_DATA sets it to what is needed.
  virtual BOOL GetComputerNameExW(int nameType, char16_t* name, DWORD* size);
  // The domain controller of a domain as "\\NAME"; `server` null is this machine. 0, or the error
  // itself (2453 is "not found"). May ask the network, and block for seconds.
  virtual DWORD NetGetDCName(LPCWSTR server, LPCWSTR domain, std::u16string* controller);

  // The temporary path of this process, with a separator at its end: its length without the NUL, or
  // the size needed with it when `size` is too small; 0 on failure.
  virtual DWORD GetTempPathA(DWORD size, char* buffer);
};

}  // namespace corvane::platform
