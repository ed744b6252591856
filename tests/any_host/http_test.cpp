// The HTTP client on the host, on the wire.

#include "any_host/user_proxy.h"
#include "any_host/web_host.h"
#include "platform/http_api.h"

namespace corvane::test {

using namespace platform;

class HostHttpOfAny : public WebTest {
 protected:
  // The user's proxy for plain addresses, in force from now on.
  void Start(const std::string& proxy = {}, const std::string& bypass = {}) {
    m_Proxy.Set(proxy, bypass);
    m_pHost.reset();
    m_pHost = NewWebHost(directory / "home");
  }

  const WebServers server{directory.Path()};

 private:
  UserProxy m_Proxy;
  std::shared_ptr<void> m_pHost;
};

TEST_F(HostHttpOfAny, PagesOfAServer) {
  Start();
  const int port = server.PlainPort();
  EXPECT_EQ(Get(At(port)), 0u);
  EXPECT_EQ(text, "hello");
  EXPECT_TRUE(headers.starts_with("HTTP/1.1 200 OK\r\n")) << headers;
  EXPECT_EQ(Get(At(port, "/whole")), 0u);
  EXPECT_EQ(Get(At(port, "/latin")), 0u);
  EXPECT_EQ(text, "\u00C3\u00A4") << "by the default code page";
  EXPECT_EQ(Get(At(port, "/none")), 0u);
  EXPECT_EQ(text, "");
  EXPECT_EQ(Get(At(port, "/moved")), 0u);
  EXPECT_EQ(text, "hello");
  EXPECT_EQ(Get(At(port, "/moved"), true), 0u);
  EXPECT_EQ(status, 302u);
  EXPECT_EQ(Get(At(port, "/loop"), true), 0u);
  EXPECT_EQ(Get(At(port, "/missing")), 58u);
  EXPECT_EQ(status, 404u);
  EXPECT_EQ(Get(At(port, "/away")), kNoSchemeCode);
  EXPECT_EQ(Get("http://127.0.0.1:1/"), ERROR_WINHTTP_CANNOT_CONNECT);
  EXPECT_EQ(Get("http://no-such-host.invalid/"), ERROR_WINHTTP_NAME_NOT_RESOLVED);
}

TEST_F(HostHttpOfAny, AnIncompletePageIsFetchedThreeTimesAndALoopIsLeft) {
  Start();
  EXPECT_EQ(Get(At(server.PlainPort(), "/half")), 31u);
  EXPECT_EQ(AwaitInLog(server, "GET /half 200", 3), 3);
  EXPECT_EQ(Get(At(server.PlainPort(), "/half"), true), 0u);
  EXPECT_EQ(text, "<html>half");
  EXPECT_EQ(Get(At(server.PlainPort(), "/loop")), ERROR_WINHTTP_REDIRECT_FAILED);
  EXPECT_EQ(AwaitInLog(server, "GET /loop 302", kLoopRequests), kLoopRequests);
}

TEST_F(HostHttpOfAny, PostsABodyWithTheHeadersThatItIsGiven) {
  Start();
  const std::string body(200'000, 'x');
  CWinHTTPHelper helper(Utf8ToWide(At(server.PlainPort(), "/sink")));
  helper.SetExtraHeaders1(u"Content-Length: 200000\r\nX-Test: yes\r\n");
  EXPECT_EQ(
      helper.SyncSendHttpRequest(u"POST", true, false, reinterpret_cast<const BYTE*>(body.data()),
                                 static_cast<DWORD>(body.size())),
      0u);
  EXPECT_EQ(helper.GetStatusCode(), 200u);
  EXPECT_EQ(AwaitInLog(server, "POST /sink 200 200"), 1) << "with its whole body";
}

TEST_F(HostHttpOfAny, CertificatesAreTakenOrRefused) {
  Start();
  const std::string url = "https://127.0.0.1:" + std::to_string(server.SecurePort()) + "/";
  // The strict way first, as a connection that was let through may be used again.
  EXPECT_EQ(Get(url, false, false, true), kBadCertificateCode);
  EXPECT_EQ(Get(url), 0u) << "signed by itself, and for another name";
  EXPECT_EQ(text, "hello");
}

TEST_F(HostHttpOfAny, TheSecondTryGoesThroughTheProxyThatIsDiscovered) {
  const std::string proxy = "http://127.0.0.1:" + std::to_string(server.ProxyPort());
  // The names mean nothing here, so that the direct way fails; the proxy knows one of them.
  Start(proxy, "other.example");
  WString found;
  EXPECT_TRUE(ProxyPresent(&found));
  EXPECT_NE(WideToUtf8(found).find(std::to_string(server.ProxyPort())), std::string::npos)
      << WideToUtf8(found);
  if (!kRequestsKeepToTheirProxy) return;
  EXPECT_EQ(Get("http://known.invalid/whole"), 0u);
  EXPECT_EQ(text, "<html>whole</html>");
  EXPECT_EQ(Get("http://no-such-host.invalid:" + std::to_string(server.PlainPort()) + "/"), 58u);
  EXPECT_GE(status, 500u) << "the proxy's own answer";
  EXPECT_EQ(Get(At(server.PlainPort()), false, true), 0u);
  EXPECT_EQ(text, "hello");
  EXPECT_NE(headers.find("Via: "), std::string::npos) << headers;
  Start(proxy, "127.0.0.1");
  EXPECT_EQ(Get(At(server.PlainPort()), false, true), 0u);
  EXPECT_EQ(headers.find("Via: "), std::string::npos) << "the user's settings name it";
}

}  // namespace corvane::test
