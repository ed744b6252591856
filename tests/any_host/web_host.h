#pragma once
// A host whose HTTP client is tested on the wire, and the servers that it asks.

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "any_host/temp_directory.h"
#include "foundation/text.h"
#include "web/win_http_helper.h"

namespace corvane::test {

// What a client of the program's has got.
class WebTest : public testing::Test {
 protected:
  platform::DWORD Get(const std::string& url, bool noRedirect = false, bool forceProxy = false,
                      bool strict = false) {
    CWinHTTPHelper helper(Utf8ToWide(url));
    helper.SetStrictCertificates(strict);
    const platform::DWORD code =
        helper.SyncSendHttpRequest(u"GET", noRedirect, forceProxy, nullptr, 0);
    status = helper.GetStatusCode();
    text = WideToUtf8(helper.GetResponseText());
    headers = WideToUtf8(helper.GetResponseHeaders());
    received = helper.GetBytesReceived();
    return code;
  }
  static std::string At(int port, const std::string& path = "/") {
    return "http://127.0.0.1:" + std::to_string(port) + path;
  }

  TempDirectory directory;
  platform::DWORD status = 0, received = 0;
  std::string text, headers;
};

// How often the log of a server holds the text, once it does so `count` times or some seconds have
// passed: a server writes behind its answer.
template <class Server>
int AwaitInLog(const Server& server, std::string_view text, int count = 1) {
  for (int tries = 0;; ++tries) {
    const std::string log = server.Log();
    int found = 0;
    for (std::size_t at = 0; (at = log.find(text, at)) != log.npos; ++at) ++found;
    if (found >= count || tries == 250) return found;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

// nginx with the pages of pages.conf on two ports, and tinyproxy that asks it for what is on
// known.invalid.
class WebServers {
 public:
  explicit WebServers(const std::string& directory);
  ~WebServers();
  WebServers(const WebServers&) = delete;
  WebServers& operator=(const WebServers&) = delete;

  int PlainPort() const;
  int SecurePort() const;
  int ProxyPort() const;
  std::string Log() const;  // nginx's, since this was made

 private:
  struct Servers;
  std::unique_ptr<Servers> m_pServers;
};

// What hosts do in their own ways: how many requests a page that leads to itself gets in the rounds
// of one call; how one ends that leads to an unknown scheme; a bad certificate's code; and whether
// a request goes through the proxy that it is given after it was opened.
extern const int kLoopRequests;
extern const platform::DWORD kNoSchemeCode;
extern const platform::DWORD kBadCertificateCode;
extern const bool kRequestsKeepToTheirProxy;

// A host of this system, in force as long as it lives.
std::shared_ptr<void> NewWebHost(const std::string& home);

}  // namespace corvane::test
