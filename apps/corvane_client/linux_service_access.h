#pragma once
#include <cstdint>

#include "corvane_client/service_access.h"

namespace corvane::platform::linux_host {
class PipeClient;
}

namespace corvane::client {

// The service of a home directory on this host.
class CLinuxServiceAccess : public IServiceAccess {
 public:
  explicit CLinuxServiceAccess(std::string home);
  ~CLinuxServiceAccess() override;

  std::string Ask(const std::string& request) override;
  std::unique_ptr<IEventSource> Subscribe() override;
  Values Settings(const std::string& adapterGuid) override;
  void CheckIsServed() override;
  std::string ProgramFolder() override;
  std::string DataFolder() override { return m_Home + "/OstrelNetworks/Corvane"; }
  void Sleep(int ms) override;
  bool IsInterrupted() override;

 private:
  std::string Token();

  const std::string m_Home;
  std::string m_Session;
  std::uint64_t m_LastNonce = 0;
  std::unique_ptr<platform::linux_host::PipeClient> m_pPipe;  // null until the first request
};

// How to start a service, and where this one was looked for.
std::string HowToStart(const std::string& home, const std::string& reason);

}  // namespace corvane::client
