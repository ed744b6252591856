#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform::linux_host {

// What a command line client needs of its process and its terminal.

bool IsTerminal();  // standard output
// Writes to standard output, and gives up on Ctrl-C. False with errno set when it cannot be written
// to.
bool WriteOutput(std::string_view text);
int TerminalColumns();  // 80 when the terminal does not tell
int TerminalRows();     // 24 likewise
std::uint32_t OwnProcessId();
// Of the program that a process runs; none when there is no such process or it cannot be seen.
std::optional<std::string> ProgramFolderOf(std::uint32_t processId);
std::uint64_t MicrosecondsSince1970();
// Sleeps in life; a signal ends it.
void SleepMs(int ms);
std::string RandomGuid();  // "{8-4-4-4-12}", hexadecimal

// From now on Ctrl-C and SIGTERM only raise a flag.
void CatchInterrupts();
bool IsInterrupted();

}  // namespace corvane::platform::linux_host
