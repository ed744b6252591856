#include "platform/linux/client_host.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/random.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "platform/linux/host_error.h"

namespace corvane::platform::linux_host {

namespace {

constexpr int kUsualColumns = 80;
constexpr int kUsualRows = 24;

volatile sig_atomic_t interrupted = 0;

void Interrupt(int) { interrupted = 1; }

winsize Size() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) size = {};
  return size;
}

}  // namespace

bool IsTerminal() { return isatty(STDOUT_FILENO) == 1; }

bool WriteOutput(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = write(STDOUT_FILENO, text.data(), text.size());
    if (count >= 0) {
      text.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      return false;
    } else if (IsInterrupted()) {
      break;
    }
  }
  return true;
}

int TerminalColumns() {
  const int columns = Size().ws_col;
  return columns > 0 ? columns : kUsualColumns;
}

int TerminalRows() {
  const int rows = Size().ws_row;
  return rows > 0 ? rows : kUsualRows;
}

std::uint32_t OwnProcessId() { return static_cast<std::uint32_t>(getpid()); }

std::optional<std::string> ProgramFolderOf(std::uint32_t processId) {
  std::error_code error;
  const auto program =
      std::filesystem::read_symlink("/proc/" + std::to_string(processId) + "/exe", error);
  if (error) return std::nullopt;
  return program.parent_path().string();
}

std::uint64_t MicrosecondsSince1970() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 +
         static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

void SleepMs(int ms) {
  const timespec span{.tv_sec = ms / 1000, .tv_nsec = ms % 1000 * 1'000'000L};
  nanosleep(&span, nullptr);
}

std::string RandomGuid() {
  unsigned char b[16];
  if (getrandom(b, sizeof(b), 0) != sizeof(b)) throw HostError("no random numbers");
  char text[40];
  std::snprintf(text, sizeof(text),
                "{%02x%02x%02x%02x-%02x%02x-%02x%02x-%02x%02x-%02x%02x%02x%02x%02x%02x}", b[0],
                b[1], b[2], b[3], b[4], b[5], b[6], b[7], b[8], b[9], b[10], b[11], b[12], b[13],
                b[14], b[15]);
  return text;
}

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = &Interrupt;  // without SA_RESTART: waits end
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool IsInterrupted() { return interrupted != 0; }

}  // namespace corvane::platform::linux_host
