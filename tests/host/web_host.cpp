#include "any_host/web_host.h"

#include "host/web_servers.h"
#include "platform/http_api.h"
#include "platform/linux/linux_host.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "support/source_dir.h"

namespace corvane::test {

using namespace platform;

namespace {

std::string Pages() { return ReadTextFile(SourceDir() + "/tests/any_host/pages.conf"); }

}  // namespace

struct WebServers::Servers {
  explicit Servers(const std::string& directory)
      : web(directory, Pages(), Pages()), proxy(directory, {}, "known.invalid", web.PlainPort()) {}

  Nginx web;
  TinyProxy proxy;
};

WebServers::WebServers(const std::string& directory)
    : m_pServers(std::make_unique<Servers>(directory)) {}
WebServers::~WebServers() = default;
int WebServers::PlainPort() const { return m_pServers->web.PlainPort(); }
int WebServers::SecurePort() const { return m_pServers->web.SecurePort(); }
int WebServers::ProxyPort() const { return m_pServers->proxy.Port(); }
std::string WebServers::Log() const { return m_pServers->web.Log(); }

const int kLoopRequests = 33;
const DWORD kNoSchemeCode = ERROR_WINHTTP_REDIRECT_FAILED;
const DWORD kBadCertificateCode = ERROR_WINHTTP_SECURE_FAILURE;
const bool kRequestsKeepToTheirProxy = true;

std::shared_ptr<void> NewWebHost(const std::string& home) {
  return std::make_shared<linux_host::LinuxHost>(linux_host::HostOptions{.home = home},
                                                 sim::ParseWorld("{}", "test"));
}

}  // namespace corvane::test
