#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace corvane::platform::windows {

// What a command line client needs of its process and its console.

// Standard output, which is a console that draws in place (escape sequences, since Windows 10).
bool IsTerminal();
int TerminalColumns();  // 80 when there is no console
int TerminalRows();     // 24 likewise
// UTF-8, also on a console. A system error code.
DWORD WriteOutput(std::string_view text);
DWORD WriteError(std::string_view text);
std::uint32_t OwnProcessId();
std::uint64_t MicrosecondsSince1970();
// Sleeps in life; Ctrl-C ends it.
void SleepMs(int ms);
std::string RandomGuid();  // "{8-4-4-4-12}", hexadecimal

// From now on Ctrl-C and Ctrl-Break only raise a flag.
void CatchInterrupts();
bool IsInterrupted();
// Signalled from Ctrl-C on, and by Interrupt(); null before CatchInterrupts. The process's own.
HANDLE InterruptEvent();
void Interrupt();  // what Ctrl-C does

// The console as the client needs it, and at the end as it was: its mode is the shell's, too.
class ConsoleMode {
 public:
  ConsoleMode();
  ~ConsoleMode();
  ConsoleMode(const ConsoleMode&) = delete;
  ConsoleMode& operator=(const ConsoleMode&) = delete;

 private:
  DWORD m_Before = 0;
  bool m_bChanged = false;
};

// Takes a console that IsTerminal for a picture: its second screen, without a cursor. The end of
// this object gives it back as it was. One at a time, on one thread.
class LiveConsole {
 public:
  LiveConsole();
  ~LiveConsole();
  LiveConsole(const LiveConsole&) = delete;
  LiveConsole& operator=(const LiveConsole&) = delete;

  std::string Keys();  // those that were typed since the last call, ASCII ones; never waits
  bool IsResized();    // since the last call

 private:
  int m_Columns;
  int m_Rows;
};

}  // namespace corvane::platform::windows
