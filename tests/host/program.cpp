#include "host/program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace corvane::test {

Program::Program(const std::string& outputFile,
                 const std::map<std::string, std::string>& environment,
                 const std::vector<std::string>& arguments, const std::string& errorFile)
    : m_OutputFile(outputFile), m_Process(fork()) {
  if (m_Process < 0) throw std::runtime_error("no process for the program");
  if (m_Process > 0) return;
  const int output = open(outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(output, STDOUT_FILENO);
  const int error =
      errorFile.empty() ? output : open(errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(error, STDERR_FILENO);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::string path = CORVANE_PROGRAM;
  std::vector<std::string> words = arguments;
  std::vector<char*> argv{path.data()};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(path.c_str(), argv.data());
  _exit(127);
}

Program::~Program() {
  if (!IsRunning()) return;
  Signal(SIGKILL);
  waitpid(m_Process, nullptr, 0);
}

bool Program::IsRunning() {
  if (m_Process < 0) return false;
  int status = 0;
  if (waitpid(m_Process, &status, WNOHANG) != m_Process) return true;
  m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  m_Process = -1;
  return false;
}

void Program::Signal(int number) { kill(m_Process, number); }

int Program::Wait(std::chrono::seconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (IsRunning()) {
    if (std::chrono::steady_clock::now() > end) return -1;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return m_Status;
}

std::string Program::Output() const {
  std::ostringstream text;
  text << std::ifstream(m_OutputFile, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace corvane::test
