#include "any_host/web_host.h"

#include <cstdlib>
#include <stdexcept>

#include "platform/http_api.h"
#include "platform/text_file.h"
#include "platform/windows/windows_host.h"
#include "support/source_dir.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

// scripts/with_web_servers starts the servers and names them.
std::string Named(const char* name) {
  const char* const value = std::getenv(name);
  if (!value) throw std::runtime_error("scripts/with_web_servers runs this test");
  return value;
}

}  // namespace

struct WebServers::Servers {
  const std::string log = Named("CORVANE_WEB_LOG");
  const std::size_t before = ReadTextFile(log).size();
};

WebServers::WebServers(const std::string&) : m_pServers(std::make_unique<Servers>()) {}
WebServers::~WebServers() = default;
int WebServers::PlainPort() const { return std::stoi(Named("CORVANE_WEB_PLAIN")); }
int WebServers::SecurePort() const { return std::stoi(Named("CORVANE_WEB_SECURE")); }
int WebServers::ProxyPort() const { return std::stoi(Named("CORVANE_WEB_PROXY")); }
std::string WebServers::Log() const {
  return ReadTextFile(m_pServers->log).substr(m_pServers->before);
}

// Wine counts redirects over all rounds, takes an address of an unknown scheme for a path of the
// same server, tells no more of a certificate than that the channel has failed, and takes the proxy
// of a request without a word and does not use it.
const int kLoopRequests = 13;
const DWORD kNoSchemeCode = 58;
const DWORD kBadCertificateCode = ERROR_WINHTTP_SECURE_CHANNEL_ERROR;
const bool kRequestsKeepToTheirProxy = false;

std::shared_ptr<void> NewWebHost(const std::string& home) {
  return std::make_shared<WindowsHost>(WindowsOptions{
      .home = home, .worldFile = SourceDir() + "/worlds/home.json", .shareHome = true});
}

}  // namespace corvane::test
