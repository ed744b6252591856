// Sessions, processes and their pipes, the desktop.

#include <gtest/gtest.h>

#include <string>

#include "platform/windows/system_call.h"
#include "platform/windows/windows_session.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr DWORD kLongMs = 20'000;

std::vector<Operation<SessionApi>> Operations() {
  static HANDLE token;
  static WTS_SESSION_INFOA* sessions;
  static DWORD count;
  static void* environment;
  static std::u16string controller;
  return {
      {"WTSQueryUserToken", [](auto& it) { return CodeOf(it.WTSQueryUserToken(1, &token)); }},
      {"WTSEnumerateSessionsA",
       [](auto& it) { return CodeOf(it.WTSEnumerateSessionsA(nullptr, 0, 1, &sessions, &count)); }},
      {"CreateEnvironmentBlock",
       [](auto& it) { return CodeOf(it.CreateEnvironmentBlock(&environment, nullptr, FALSE)); }},
      {"DestroyEnvironmentBlock",
       [](auto& it) { return CodeOf(it.DestroyEnvironmentBlock(nullptr)); }},
      {"NetGetDCName", [](auto& it) { return it.NetGetDCName(nullptr, u"D", &controller); }},
  };
}

}  // namespace

class WindowsSessionTest : public testing::Test {
 protected:
  // Of this process: it stands for the token of a user, as nobody is logged on.
  HANDLE OwnToken() {
    HANDLE own = nullptr;
    HANDLE token = nullptr;
    ::OpenProcessToken(::GetCurrentProcess(), TOKEN_ALL_ACCESS, &own);
    ::DuplicateTokenEx(own, MAXIMUM_ALLOWED, nullptr, SecurityImpersonation, TokenPrimary, &token);
    ::CloseHandle(own);
    return token;
  }

  WindowsThreads threads;
  WindowsSession session;
};

TEST_F(WindowsSessionTest, RunsAChildAndReadsWhatItPrints) {
  const HANDLE token = OwnToken();
  void* environment = nullptr;
  ASSERT_TRUE(session.CreateEnvironmentBlock(&environment, token, FALSE));
  SECURITY_ATTRIBUTES inherited;
  inherited.bInheritHandle = TRUE;
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  ASSERT_TRUE(session.CreatePipe(&readEnd, &writeEnd, &inherited, 0));
  STARTUPINFOW startup;
  startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;
  startup.hStdOutput = startup.hStdError = writeEnd;
  PROCESS_INFORMATION child;
  ASSERT_TRUE(session.CreateProcessAsUserW(token, nullptr, u"cmd.exe /c echo hello& exit 42", TRUE,
                                           CREATE_UNICODE_ENVIRONMENT, environment, nullptr,
                                           &startup, &child))
      << threads.GetLastError();
  EXPECT_TRUE(session.CloseHandle(writeEnd));
  EXPECT_EQ(session.WaitForSingleObject(child.hProcess, kLongMs), WAIT_OBJECT_0);
  DWORD code = 0;
  EXPECT_TRUE(session.GetExitCodeProcess(child.hProcess, &code));
  EXPECT_EQ(code, 42u);
  DWORD available = 0;
  EXPECT_TRUE(session.PeekNamedPipe(readEnd, &available));
  char text[100] = {};
  DWORD read = 0;
  EXPECT_TRUE(session.ReadFile(readEnd, text, sizeof(text) - 1, &read));
  EXPECT_EQ(read, available);
  EXPECT_EQ(std::string(text).substr(0, 5), "hello");
  EXPECT_FALSE(session.ReadFile(readEnd, text, sizeof(text) - 1, &read));
  EXPECT_EQ(threads.GetLastError(), ERROR_BROKEN_PIPE);
  EXPECT_TRUE(session.DestroyEnvironmentBlock(environment));
  for (const HANDLE handle : {readEnd, child.hProcess, child.hThread, token}) {
    EXPECT_TRUE(session.CloseHandle(handle));
  }
  EXPECT_FALSE(session.CloseHandle(reinterpret_cast<HANDLE>(std::uintptr_t{0x7FFF0})));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(WindowsSessionTest, ListsProcessesAndEndsOne) {
  STARTUPINFOW startup;
  PROCESS_INFORMATION child;
  ASSERT_TRUE(session.CreateProcessAsUserW(nullptr, nullptr, u"cmd.exe /c pause", FALSE, 0, nullptr,
                                           nullptr, &startup, &child));
  const HANDLE snapshot = session.CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  ASSERT_TRUE(snapshot);
  PROCESSENTRY32W entry;
  bool found = false;
  for (BOOL more = session.Process32FirstW(snapshot, &entry); more;
       more = session.Process32NextW(snapshot, &entry)) {
    found = found || entry.th32ProcessID == child.dwProcessId;
  }
  EXPECT_EQ(threads.GetLastError(), ERROR_NO_MORE_FILES);
  EXPECT_TRUE(found);
  EXPECT_EQ(ExecutableOfProcess(child.dwProcessId), u"cmd.exe");
  EXPECT_EQ(ExecutableOfProcess(0x7FFFFFF0), std::nullopt);
  EXPECT_EQ(session.WaitForSingleObject(child.hProcess, 10), WAIT_TIMEOUT);
  const HANDLE process = session.OpenProcess(PROCESS_ALL_ACCESS, FALSE, child.dwProcessId);
  ASSERT_TRUE(process);
  EXPECT_TRUE(session.TerminateProcess(process, 9));
  EXPECT_EQ(session.WaitForSingleObject(process, kLongMs), WAIT_OBJECT_0);
  for (const HANDLE handle : {snapshot, process, child.hProcess, child.hThread}) {
    session.CloseHandle(handle);
  }
  EXPECT_FALSE(session.OpenProcess(PROCESS_ALL_ACCESS, FALSE, 0x7FFFFFF0));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(WindowsSessionTest, TellsOfSessionsMachineAndFolders) {
  const DWORD console = session.WTSGetActiveConsoleSessionId();
  HANDLE token = nullptr;
  if (session.WTSQueryUserToken(console, &token)) session.CloseHandle(token);
  WTS_SESSION_INFOA* sessions = nullptr;
  DWORD count = 0;
  EXPECT_TRUE(session.WTSEnumerateSessionsA(nullptr, 0, 1, &sessions, &count));
  session.WTSFreeMemory(sessions);
  char16_t name[300] = {};
  DWORD length = 300;
  EXPECT_TRUE(session.GetComputerNameExW(ComputerNameDnsDomain, name, &length));
  EXPECT_EQ(std::u16string_view(name).size(), length);
  std::u16string controller;  // this machine is in no domain
  EXPECT_NE(session.NetGetDCName(nullptr, u"CORVANE-NO-SUCH", &controller), 0u);
  char path[300] = {};
  const DWORD size = session.GetTempPathA(sizeof(path), path);
  EXPECT_EQ(std::string(path).size(), size);
  EXPECT_TRUE(std::string(path).ends_with('\\'));
  EXPECT_EQ(session.GetTempPathA(2, path), size + 1);
  EXPECT_EQ(session.system("exit 3"), 3);
  EXPECT_EQ(session._wsystem(u"exit 4"), 4);
  int visits = 0;
  const auto visit = [](HANDLE, void* context) -> BOOL {
    ++*static_cast<int*>(context);
    throw 1;  // must not reach the system
  };
  session.EnumWindows(visit, &visits);
  EXPECT_LE(visits, 1);
  char16_t title[10] = {};
  EXPECT_EQ(session.GetWindowTextW(nullptr, title, 10), 0);
}

TEST_F(WindowsSessionTest, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsSession missing(&FindNothing), faulting(&FindFaulting);
  ExpectFailures<SessionApi>(Operations(), missing, faulting);
  missing.WTSFreeMemory(nullptr);
  EXPECT_EQ(FaultCodeOf([&] { faulting.WTSFreeMemory(nullptr); }), EXCEPTION_ACCESS_VIOLATION);
}

// What this process has made inheritable is not for a child with other rights.
TEST_F(WindowsSessionTest, AChildInheritsItsStandardHandlesAndNoOther) {
  SECURITY_ATTRIBUTES inherited;
  inherited.bInheritHandle = TRUE;
  HANDLE readEnd = nullptr;
  HANDLE writeEnd = nullptr;
  ASSERT_TRUE(session.CreatePipe(&readEnd, &writeEnd, &inherited, 0));
  const HANDLE event = ::CreateEventW(As<::SECURITY_ATTRIBUTES>(&inherited), TRUE, TRUE, nullptr);
  STARTUPINFOW startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = startup.hStdError = writeEnd;
  PROCESS_INFORMATION child;
  ASSERT_TRUE(session.CreateProcessAsUserW(nullptr, nullptr, u"cmd.exe /c pause", TRUE, 0, nullptr,
                                           nullptr, &startup, &child));
  // A handle has the same value in the child.
  const auto has = [&](HANDLE handle) {
    HANDLE copy = nullptr;
    if (!::DuplicateHandle(child.hProcess, handle, ::GetCurrentProcess(), &copy, 0, FALSE,
                           DUPLICATE_SAME_ACCESS)) {
      return false;
    }
    const bool isSet = ::WaitForSingleObject(copy, 0) == WAIT_OBJECT_0;
    ::CloseHandle(copy);
    return handle == writeEnd || isSet;
  };
  EXPECT_TRUE(has(writeEnd));
  EXPECT_FALSE(has(event));
  session.TerminateProcess(child.hProcess, 0);
  for (const HANDLE handle : {readEnd, writeEnd, event, child.hProcess, child.hThread}) {
    session.CloseHandle(handle);
  }
}

TEST_F(WindowsSessionTest, AWaitForAProcessEndsWhenItsThreadIsGivenUp) {
  STARTUPINFOW startup;
  struct Facts {
    WindowsSession& session;
    PROCESS_INFORMATION child;
    std::atomic<bool> waiting{false}, goneOn{false};
  } facts{session, {}};
  ASSERT_TRUE(session.CreateProcessAsUserW(nullptr, nullptr, u"cmd.exe /c pause", FALSE, 0, nullptr,
                                           nullptr, &startup, &facts.child));
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& it = *static_cast<Facts*>(parameter);
        it.waiting = true;
        it.session.WaitForSingleObject(it.child.hProcess, INFINITE);
        it.goneOn = true;
        return 0;
      },
      &facts, "waits", nullptr);
  while (!facts.waiting) ::Sleep(1);
  threads.TerminateThread(thread, 1);
  EXPECT_TRUE(threads.AwaitAbandoned(kLongMs));
  EXPECT_FALSE(facts.goneOn);
  threads.CloseHandle(thread);
  session.TerminateProcess(facts.child.hProcess, 0);
  session.CloseHandle(facts.child.hProcess);
  session.CloseHandle(facts.child.hThread);
}

}  // namespace corvane::test
