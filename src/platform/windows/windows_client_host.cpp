#include "platform/windows/windows_client_host.h"

#include <atomic>
#include <cstdio>
#include <utility>

#include "platform/windows/console_text.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_error.h"

namespace corvane::platform::windows {

namespace {

constexpr int kUsualColumns = 80;
constexpr int kUsualRows = 24;
constexpr std::uint64_t kTicksTo1970 = 116'444'736'000'000'000;  // of 100 ns, from 1601

std::atomic<HANDLE> g_Interrupt{nullptr};

::BOOL WINAPI OnConsoleEvent(::DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  Interrupt();
  return TRUE;
}

::SMALL_RECT Window() {
  ::CONSOLE_SCREEN_BUFFER_INFO info{};
  return ::GetConsoleScreenBufferInfo(::GetStdHandle(STD_OUTPUT_HANDLE), &info)
             ? info.srWindow
             : ::SMALL_RECT{0, 0, -1, -1};
}

}  // namespace

bool IsTerminal() {
  ::DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), &mode) &&
         (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
}

int TerminalColumns() {
  const ::SMALL_RECT window = Window();
  const int columns = window.Right - window.Left + 1;
  return columns > 0 ? columns : kUsualColumns;
}

int TerminalRows() {
  const ::SMALL_RECT window = Window();
  const int rows = window.Bottom - window.Top + 1;
  return rows > 0 ? rows : kUsualRows;
}

DWORD WriteOutput(std::string_view text) { return WriteText(text, STD_OUTPUT_HANDLE); }
DWORD WriteError(std::string_view text) { return WriteText(text, STD_ERROR_HANDLE); }

std::uint32_t OwnProcessId() { return ::GetCurrentProcessId(); }

std::uint64_t MicrosecondsSince1970() {
  ::FILETIME now{};
  ::GetSystemTimeAsFileTime(&now);
  const std::uint64_t ticks = std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
  return (ticks - kTicksTo1970) / 10;
}

void SleepMs(int ms) {
  if (const HANDLE interrupt = InterruptEvent()) {
    ::WaitForSingleObject(interrupt, static_cast<::DWORD>(ms));
  } else {
    ::Sleep(static_cast<::DWORD>(ms));
  }
}

std::string RandomGuid() {
  ::GUID g{};
  if (::CoCreateGuid(&g) != S_OK) throw WindowsError("no random numbers");
  char text[40];
  std::snprintf(text, sizeof(text), "{%08lx-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}", g.Data1,
                g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4],
                g.Data4[5], g.Data4[6], g.Data4[7]);
  return text;
}

void CatchInterrupts() {
  if (!g_Interrupt) g_Interrupt = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE);
}

void Interrupt() { ::SetEvent(g_Interrupt); }
HANDLE InterruptEvent() { return g_Interrupt; }

bool IsInterrupted() {
  const HANDLE interrupt = InterruptEvent();
  return interrupt && ::WaitForSingleObject(interrupt, 0) == WAIT_OBJECT_0;
}

ConsoleMode::ConsoleMode() {
  const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  m_bChanged = ::GetConsoleMode(output, As32(&m_Before)) &&
               ::SetConsoleMode(
                   output, m_Before | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

ConsoleMode::~ConsoleMode() {
  if (m_bChanged) ::SetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), m_Before);
}

LiveConsole::LiveConsole() : m_Columns(TerminalColumns()), m_Rows(TerminalRows()) {
  WriteOutput("\x1b[?1049h\x1b[?25l\x1b[H\x1b[2J");
}

LiveConsole::~LiveConsole() { WriteOutput("\x1b[?25h\x1b[?1049l"); }

std::string LiveConsole::Keys() {
  std::string keys;
  while (::_kbhit() != 0) {
    const int key = ::_getch();
    if (key > 0 && key < 0x80) keys += static_cast<char>(key);
  }
  return keys;
}

bool LiveConsole::IsResized() {
  const int columns = std::exchange(m_Columns, TerminalColumns());
  const int rows = std::exchange(m_Rows, TerminalRows());
  return columns != m_Columns || rows != m_Rows;
}

}  // namespace corvane::platform::windows
