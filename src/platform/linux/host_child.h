#pragma once
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/sim/kernel/sim_session.h"

namespace corvane::platform::linux_host {

// A process of this machine whose output is read: standard output and error together, at most
// kMaxOutput bytes of it. For one thread at a time.
class HostChild final : public sim::IProgramRun {
 public:
  static constexpr std::size_t kMaxOutput = 1024 * 1024;

  // Null when it cannot be started.
  static std::shared_ptr<HostChild> Start(const std::string& program,
                                          const std::vector<std::string>& arguments);
  ~HostChild() override;  // kills it when it still runs
  HostChild(const HostChild&) = delete;
  HostChild& operator=(const HostChild&) = delete;

  bool HasEnded(DWORD* exitCode) override;
  const std::string& Output() override;
  void End() override;

 private:
  HostChild(pid_t process, int output) : m_Process(process), m_hOutput(output) {}

  pid_t m_Process;  // -1 once it has ended
  int m_hOutput;
  DWORD m_ExitCode = 0;
  std::string m_Output;
};

}  // namespace corvane::platform::linux_host
