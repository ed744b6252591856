#pragma once
#include <sys/types.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace corvane::test {

// The service program as a process of its own.
class Program {
 public:
  // Starts it with this environment added to the test's; both outputs go to the file, or standard
  // error to one of its own.
  Program(const std::string& outputFile, const std::map<std::string, std::string>& environment,
          const std::vector<std::string>& arguments = {}, const std::string& errorFile = {});
  ~Program();  // kills it when it still runs
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool IsRunning();
  pid_t Id() const { return m_Process; }  // while it runs
  void Signal(int number);
  // The exit status; -1 for an end by a signal, or when it still runs after the limit.
  int Wait(std::chrono::seconds limit);
  std::string Output() const;

 private:
  std::string m_OutputFile;
  pid_t m_Process = -1;
  int m_Status = -1;
};

}  // namespace corvane::test
