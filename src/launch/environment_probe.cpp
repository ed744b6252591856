#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "launch/session_launch.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kName[] = "InvokeSelfFromServiceToGetUserTempPath";
constexpr LaunchTag kTag{kName, "Corvane.exe", DBG(14), -1, true};
constexpr char16_t kCommandLine[] = u"Corvane.exe -u";
constexpr DWORD kSliceMs = 50;
constexpr DWORD kReadSize = 1023;
constexpr DWORD kHungExitCode = 0xFFFFFFFF;

// What the pipe holds now, in pieces, each up to its first zero byte.
void Drain(HANDLE readEnd, std::string* text) {
  DWORD available = 0;
  while (Os().session.PeekNamedPipe(readEnd, &available) && available > 0) {
    char piece[kReadSize + 1] = {};
    DWORD read = 0;
    if (!Os().session.ReadFile(readEnd, piece, kReadSize, &read) || read == 0) return;
    piece[read] = '\0';
    *text += piece;
  }
}

// Reads until the child has ended; a child that hangs is ended, as the main loop waits here.
void ReadToEnd(HANDLE process, HANDLE readEnd, std::string* text) {
  const ULONGLONG start = Os().clock.GetTickCount64();
  for (;;) {
    const DWORD wait = Os().session.WaitForSingleObject(process, kSliceMs);
    Drain(readEnd, text);
    if (wait != WAIT_TIMEOUT) return;
    if (Os().clock.GetTickCount64() - start < kProbeLimitMs) continue;
    LOG_ERROR(u"%S: the child did not end in %u ms and is ended", kName, kProbeLimitMs);
    Os().session.TerminateProcess(process, kHungExitCode);
    return;
  }
}

WString TimeOfDay() {
  const SYSTEMTIME now = SystemTimeNow();
  return Format(u"[%02u:%02u:%02u]", now.wHour, now.wMinute, now.wSecond);
}

bool IsGoodEnd(HANDLE process) {
  DWORD exitCode = 0xFFFFFFFF;
  const bool known = Os().session.GetExitCodeProcess(process, &exitCode) != FALSE;
  LogProgress(
      kTag,
      Format(u"%s %S: CreateProcessAsUser(Corvane.exe) - GetExitCodeProcess() ret exitCode=%lu\n",
             TimeOfDay(), kName, exitCode));
  return known && (exitCode == 0 || exitCode == 999);
}

bool RunProbe(std::string* text) {
  CSessionHandle token;
  if (!QueryUserToken(kTag, &token)) return false;

  CSessionHandle readEnd, writeEnd;
  SECURITY_ATTRIBUTES inheritable;
  inheritable.bInheritHandle = TRUE;
  if (!Os().session.CreatePipe(readEnd.Receive(), writeEnd.Receive(), &inheritable, 0)) {
    LOG_ERROR(u"-FATAL- | %S: CreatePipe() failed %lu\n", kName, Os().threads.GetLastError());
    return false;
  }
  STARTUPINFOW startup;
  startup.dwFlags = STARTF_USESTDHANDLES | STARTF_USESHOWWINDOW;  // show state 0: hidden
  startup.hStdOutput = writeEnd.Get();
  startup.hStdError = writeEnd.Get();

  CSessionHandle process;
  DWORD processId = 0;
  if (!LaunchAsUser(kTag, token, kCommandLine, startup, &process, &processId)) return false;
  ReadToEnd(process.Get(), readEnd.Get(), text);
  const bool good = IsGoodEnd(process.Get());
  LogProgress(
      kTag,
      Format(u"%s %S: CreateProcessAsUser(Corvane.exe) _DONE_ [pi.dwProcessId=%lu][bResult=%i]\n",
             TimeOfDay(), kName, processId, good));
  return good;
}

}  // namespace

bool InvokeSelfFromServiceToGetUserTempPath(std::string* text) {
  text->clear();
  const auto probe = [text] {
    return Guarded("Launcher", kName, false, [text] { return RunProbe(text); });
  };
  return Contained(probe, [](const Failure& failure) {
    ReportFailure(kName, failure);
    return false;
  });
}

}  // namespace corvane
