#include "platform/linux/live_terminal.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/linux/client_host.h"

namespace corvane::platform::linux_host {

namespace {

// The second screen, the cursor, and the wrapping of lines that are too long. Where there is no
// second screen, what follows stands below the picture.
constexpr std::string_view kTake = "\x1b[?1049h\x1b[?25l\x1b[?7l";
constexpr std::string_view kGiveBack = "\x1b[999;1H\n\x1b[?7h\x1b[?25h\x1b[?1049l";

volatile sig_atomic_t stopAsked = 0;
volatile sig_atomic_t resized = 0;

void AskStop(int) { stopAsked = 1; }
void Resize(int) { resized = 1; }

// Without SA_RESTART: waits end.
void Catch(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigaction(signal, &action, nullptr);
}

}  // namespace

struct LiveTerminal::Usual {
  termios settings{};
};

bool LiveTerminal::IsUsable() {
  const char* const kind = std::getenv("TERM");
  return IsTerminal() && kind && *kind != '\0' && std::string_view(kind) != "dumb";
}

LiveTerminal::LiveTerminal() {
  stopAsked = 0;
  resized = 0;
  Catch(SIGTSTP, &AskStop);
  Catch(SIGWINCH, &Resize);
  Enter();
}

LiveTerminal::~LiveTerminal() {
  Leave();
  Catch(SIGTSTP, SIG_DFL);
  Catch(SIGWINCH, SIG_DFL);
}

void LiveTerminal::Enter() {
  auto usual = std::make_unique<Usual>();
  if (tcgetattr(STDIN_FILENO, &usual->settings) == 0) {
    m_pUsual = std::move(usual);
    termios keys = m_pUsual->settings;
    keys.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO));
    keys.c_cc[VMIN] = keys.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSADRAIN, &keys);
  }
  WriteOutput(kTake);
}

void LiveTerminal::Leave() {
  WriteOutput(kGiveBack);
  if (m_pUsual) tcsetattr(STDIN_FILENO, TCSADRAIN, &m_pUsual->settings);
  m_pUsual = nullptr;
}

std::string LiveTerminal::Keys() {
  std::string keys;
  char block[64];
  ssize_t count = 0;
  while (m_pUsual && (count = read(STDIN_FILENO, block, sizeof block)) > 0)
    keys.append(block, static_cast<std::size_t>(count));
  return keys;
}

bool LiveTerminal::IsResized() {
  if (!resized) return false;
  resized = 0;
  return true;
}

bool LiveTerminal::StopIfAsked() {
  if (!stopAsked) return false;
  Leave();
  Catch(SIGTSTP, SIG_DFL);
  raise(SIGTSTP);  // it goes on here
  stopAsked = 0;
  Catch(SIGTSTP, &AskStop);
  Enter();
  return true;
}

}  // namespace corvane::platform::linux_host
