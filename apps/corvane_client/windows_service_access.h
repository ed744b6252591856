#pragma once
#include <cstdint>

#include "corvane_client/service_access.h"

namespace corvane::platform::windows {
class WindowsPipeClient;
}

namespace corvane::client {

// The service of this PC: pipes and registry are the machine's, and the public key lies in the
// installation's folder.
class CWindowsServiceAccess : public IServiceAccess {
 public:
  // Where a service is looked for; what is not said is that of an installation.
  struct Places {
    std::string root = {};  // in the place of %ProgramData%
    std::u16string pipes = u"\\\\.\\pipe\\";
    std::string key = "SOFTWARE\\OstrelNetworks\\Corvane";
  };

  explicit CWindowsServiceAccess(Places places);
  ~CWindowsServiceAccess() override;

  std::string Ask(const std::string& request) override;
  std::unique_ptr<IEventSource> Subscribe() override;
  Values Settings(const std::string& adapterGuid) override;
  void CheckIsServed() override;
  std::string ProgramFolder() override;
  std::string DataFolder() override;
  void Sleep(int ms) override;
  bool IsInterrupted() override;

 private:
  std::string Token();

  const Places m_Places;
  const std::string m_Session;
  std::uint64_t m_LastNonce = 0;
  std::unique_ptr<platform::windows::WindowsPipeClient> m_pPipe;  // null until the first request
};

}  // namespace corvane::client
