#include "platform/linux/host_child.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

namespace corvane::platform::linux_host {

namespace {

constexpr DWORD kEndedBySignal = 128;

// What a program expects of signals when it starts, whatever this process has made of them.
class SpawnAttributes {
 public:
  SpawnAttributes() {
    posix_spawnattr_init(&m_Attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_Attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    posix_spawnattr_setsigdefault(&m_Attributes, &signals);
    posix_spawnattr_setflags(&m_Attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  ~SpawnAttributes() { posix_spawnattr_destroy(&m_Attributes); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  const posix_spawnattr_t* Get() const { return &m_Attributes; }

 private:
  posix_spawnattr_t m_Attributes{};
};

// No input, both outputs to the pipe.
class SpawnFiles {
 public:
  explicit SpawnFiles(int output) {
    posix_spawn_file_actions_init(&m_Actions);
    posix_spawn_file_actions_addopen(&m_Actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&m_Actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&m_Actions, output, STDERR_FILENO);
  }
  ~SpawnFiles() { posix_spawn_file_actions_destroy(&m_Actions); }
  SpawnFiles(const SpawnFiles&) = delete;
  SpawnFiles& operator=(const SpawnFiles&) = delete;
  const posix_spawn_file_actions_t* Get() const { return &m_Actions; }

 private:
  posix_spawn_file_actions_t m_Actions{};
};

}  // namespace

std::shared_ptr<HostChild> HostChild::Start(const std::string& program,
                                            const std::vector<std::string>& arguments) {
  std::vector<std::string> words = arguments;
  words.insert(words.begin(), program);
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return nullptr;
  pid_t process = -1;
  const SpawnFiles files(ends[1]);
  const SpawnAttributes attributes;
  const int code =
      posix_spawn(&process, program.c_str(), files.Get(), attributes.Get(), argv.data(), environ);
  close(ends[1]);
  if (code != 0) {
    close(ends[0]);
    return nullptr;
  }
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  return std::shared_ptr<HostChild>(new HostChild(process, ends[0]));
}

HostChild::~HostChild() {
  End();
  close(m_hOutput);
}

bool HostChild::HasEnded(DWORD* exitCode) {
  if (m_Process >= 0) {
    int status = 0;
    if (waitpid(m_Process, &status, WNOHANG) != m_Process) return false;
    m_Process = -1;
    m_ExitCode = WIFEXITED(status) ? static_cast<DWORD>(WEXITSTATUS(status))
                                   : kEndedBySignal + static_cast<DWORD>(WTERMSIG(status));
  }
  *exitCode = m_ExitCode;
  return true;
}

const std::string& HostChild::Output() {
  char piece[4096];
  while (m_Output.size() < kMaxOutput) {
    const ssize_t size = read(m_hOutput, piece, sizeof piece);
    if (size <= 0) break;
    m_Output.append(piece, std::min(static_cast<std::size_t>(size), kMaxOutput - m_Output.size()));
  }
  return m_Output;
}

void HostChild::End() {
  DWORD exitCode = 0;
  if (HasEnded(&exitCode)) return;
  kill(m_Process, SIGKILL);
  int status = 0;
  waitpid(m_Process, &status, 0);
  m_Process = -1;
  m_ExitCode = kEndedBySignal + SIGKILL;
}

}  // namespace corvane::platform::linux_host
