#include "platform/linux/host_console.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <iterator>

namespace corvane::platform::linux_host {

namespace {

constexpr int kKeySignals[] = {SIGINT, SIGTERM, SIGHUP};

// What a signal handler touches has to live outside of any object.
std::atomic<bool> g_KeyPressed{false};
static_assert(std::atomic<bool>::is_always_lock_free);
struct sigaction g_Before[std::size(kKeySignals)];
struct sigaction g_PipeBefore;

void OnSignal(int number) {
  if (g_KeyPressed.exchange(true)) _exit(128 + number);
  constexpr char kNote[] = "corvane: stopping in order; once more ends it at once\n";
  const int before = errno;
  [[maybe_unused]] const ssize_t told = write(STDERR_FILENO, kNote, sizeof(kNote) - 1);
  errno = before;
}

void Put(std::string_view text, std::FILE* to) { std::fwrite(text.data(), 1, text.size(), to); }

}  // namespace

HostConsole::HostConsole() {
  g_KeyPressed = false;
  struct sigaction action {};
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  action.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &action, &g_PipeBefore);
  action.sa_handler = &OnSignal;
  for (std::size_t i = 0; i < std::size(kKeySignals); ++i) {
    sigaction(kKeySignals[i], &action, &g_Before[i]);
  }
}

HostConsole::~HostConsole() {
  FlushOutput();
  for (std::size_t i = 0; i < std::size(kKeySignals); ++i) {
    sigaction(kKeySignals[i], &g_Before[i], nullptr);
  }
  sigaction(SIGPIPE, &g_PipeBefore, nullptr);
}

void HostConsole::PressKey() { g_KeyPressed = true; }

bool HostConsole::_kbhit() { return g_KeyPressed; }

void HostConsole::WriteOutput(std::string_view text) {
  Put(text, stdout);
  // Whoever reads through a pipe sees each line when it is written.
  if (text.ends_with('\n')) std::fflush(stdout);
}

void HostConsole::WriteError(std::string_view text) { Put(text, stderr); }

void HostConsole::FlushOutput() { std::fflush(stdout); }

}  // namespace corvane::platform::linux_host
