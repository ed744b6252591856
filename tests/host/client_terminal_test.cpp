// The command line client at a terminal, beside a running service.

#include <gmock/gmock.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
#include "host/program.h"

namespace corvane::test {

using testing::HasSubstr;
using testing::Not;

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 60s;
constexpr char kTake[] = "\x1b[?1049h\x1b[?25l\x1b[?7l";
constexpr char kGiveBack[] = "\x1b[?7h\x1b[?25h\x1b[?1049l";

// "corvane-client watch" on a terminal of its own.
class Watched {
 public:
  Watched(const std::string& home, winsize size) {
    m_Process = forkpty(&m_Terminal, nullptr, nullptr, &size);
    if (m_Process == 0) {
      setenv("CORVANE_HOME", home.c_str(), 1);
      setenv("TERM", "xterm", 1);
      execl(CORVANE_CLIENT_PROGRAM, "corvane-client", "watch", nullptr);
      _exit(127);
    }
    tcgetattr(m_Terminal, &m_Before);
  }
  ~Watched() {
    if (m_Process > 0) {
      kill(m_Process, SIGKILL);
      waitpid(m_Process, nullptr, 0);
    }
    close(m_Terminal);
  }
  Watched(const Watched&) = delete;
  Watched& operator=(const Watched&) = delete;

  // What has come since the last call, up to and with the text; all there is when it does not come.
  std::string Until(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (m_Seen.find(text) == m_Seen.npos && std::chrono::steady_clock::now() < end) {
      pollfd ready{.fd = m_Terminal, .events = POLLIN, .revents = 0};
      char block[4096];
      if (poll(&ready, 1, 100) <= 0) continue;
      const ssize_t count = read(m_Terminal, block, sizeof block);
      if (count <= 0) break;
      m_Seen.append(block, static_cast<std::size_t>(count));
    }
    const std::size_t at = m_Seen.find(text);
    const std::string seen = m_Seen.substr(0, at == m_Seen.npos ? at : at + text.size());
    m_Seen.erase(0, seen.size());
    return seen;
  }
  void Type(const std::string& keys) {
    EXPECT_EQ(write(m_Terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  void Resize(winsize size) { ioctl(m_Terminal, TIOCSWINSZ, &size); }
  bool IsAsBefore() const {
    termios now{};
    tcgetattr(m_Terminal, &now);
    return now.c_lflag == m_Before.c_lflag;
  }
  int ExitStatus() {
    int status = 0;
    waitpid(m_Process, &status, 0);
    m_Process = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  int m_Terminal = -1;
  pid_t m_Process = -1;
  termios m_Before{};
  std::string m_Seen;  // and not asked for yet
};

}  // namespace

class ClientTerminalTest : public testing::Test {
 protected:
  ClientTerminalTest()
      : service(directory / "output", {{"CORVANE_HOME", home}, {"CORVANE_SPEED", "20"}}) {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (!PipePeer(home + "/pipe/TRLSPipe_N").IsConnected() &&
           std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(20ms);
    }
  }

  TempDirectory directory;
  const std::string home = directory / "home";
  Program service;
};

TEST_F(ClientTerminalTest, DrawsInPlaceAndGivesTheTerminalBack) {
  Watched watched(home, {.ws_row = 30, .ws_col = 120, .ws_xpixel = 0, .ws_ypixel = 0});
  std::string seen = watched.Until("is connected to Home");
  EXPECT_THAT(seen, testing::StartsWith(kTake));
  EXPECT_THAT(seen, HasSubstr("\x1b[1;1HAdapter 0"));
  EXPECT_FALSE(watched.IsAsBefore());
  watched.Type("xy\n");  // shows nowhere
  watched.Resize({.ws_row = 12, .ws_col = 20, .ws_xpixel = 0, .ws_ypixel = 0});
  seen = watched.Until("\x1b[12;1H");
  EXPECT_THAT(seen, HasSubstr("Van…\x1b[2;1H"));  // the first line ends at the edge
  EXPECT_THAT(seen, Not(HasSubstr("xy")));
  EXPECT_THAT(seen, Not(HasSubstr("\x1b[2J")));
  // Ctrl-Z gives the terminal back, too. Nobody could take this process up again, so that the
  // system lets it go on.
  watched.Type("\x1a");
  EXPECT_THAT(watched.Until(kTake), HasSubstr(kGiveBack));
  EXPECT_THAT(watched.Until("\x1b[12;1H"), HasSubstr("Adapter 0"));
  watched.Type("\x03");
  EXPECT_THAT(watched.Until(kGiveBack), Not(HasSubstr("^C")));
  EXPECT_EQ(watched.ExitStatus(), 0);
  EXPECT_TRUE(watched.IsAsBefore());
}

TEST_F(ClientTerminalTest, TellsBehindThePictureThatTheServiceHasGone) {
  Watched watched(home, {.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0});
  watched.Until("Adapter 0");
  service.Signal(SIGTERM);
  watched.Until(kGiveBack);
  EXPECT_THAT(watched.Until("connection"), HasSubstr("the service has closed the connection"));
  EXPECT_EQ(watched.ExitStatus(), 3);
  EXPECT_TRUE(watched.IsAsBefore());
}

}  // namespace corvane::test
