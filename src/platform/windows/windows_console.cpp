#include "platform/windows/windows_console.h"

#include <atomic>

#include "platform/windows/console_text.h"
#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

constexpr DWORD kMostStoppingMs = 20'000;  // the system ends the process before that

// What the handler of the console touches lives outside of any object: it runs on a thread of the
// system's own.
std::atomic<HANDLE> g_Stop{nullptr};

// Never closed: a handler's thread may be about to look.
HANDLE Stopped() {
  static const HANDLE event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  return event;
}

::BOOL WINAPI OnConsoleEvent(::DWORD event) {
  const HANDLE stop = g_Stop;
  if (!stop) return FALSE;
  ::DWORD session = 0;
  ::ProcessIdToSessionId(::GetCurrentProcessId(), &session);
  if (!WindowsConsole::IsStop(event, session)) return TRUE;
  ::SetEvent(stop);
  if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
    ::WaitForSingleObject(Stopped(), kMostStoppingMs);
  }
  return TRUE;
}

}  // namespace

WindowsConsole::WindowsConsole(HANDLE stopEvent) : m_Stop(stopEvent) {
  ::DWORD mode = 0;
  m_IsConsole = ::GetConsoleMode(::GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
  ::ResetEvent(Stopped());
  g_Stop = m_Stop;
  ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
  m_pEndOfSession = std::make_unique<EndSessionWindow>(m_Stop, Stopped());
}

WindowsConsole::~WindowsConsole() {
  g_Stop = nullptr;
  ::SetConsoleCtrlHandler(&OnConsoleEvent, FALSE);
  ::SetEvent(Stopped());
}

bool WindowsConsole::IsStop(DWORD event, DWORD session) {
  return event != CTRL_LOGOFF_EVENT || session != 0;
}

void WindowsConsole::PressKey() { ::SetEvent(m_Stop); }

bool WindowsConsole::_kbhit() {
  if (m_IsConsole && ::_kbhit() != 0) PressKey();
  return ::WaitForSingleObject(m_Stop, 0) == WAIT_OBJECT_0;
}

void WindowsConsole::WriteOutput(std::string_view text) { WriteText(text, STD_OUTPUT_HANDLE); }
void WindowsConsole::WriteError(std::string_view text) { WriteText(text, STD_ERROR_HANDLE); }

}  // namespace corvane::platform::windows
