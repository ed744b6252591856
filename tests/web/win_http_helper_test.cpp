#include "web/win_http_helper.h"

#include <cstring>

#include "foundation/log_lines.h"
#include "web/response_text.h"
#include "web/web_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;
using sim::FaultPlan;

constexpr char16_t kUrl[] = u"https://a.example/x";

class WinHttpHelperTest : public WebTest {
 protected:
  DWORD Get(const char16_t* url = kUrl, bool noRedirect = false, bool forceProxy = false) {
    CWinHTTPHelper helper(url);
    const DWORD code = helper.SyncSendHttpRequest(u"GET", noRedirect, forceProxy, nullptr, 0);
    status = helper.GetStatusCode();
    text = helper.GetResponseText();
    headers = helper.GetResponseHeaders();
    return code;
  }

  DWORD status = 0;
  WString text, headers;
};

TEST_F(WinHttpHelperTest, RefusesOtherVerbsBeforeItOpensAnything) {
  BootWeb(R"({"hosts": [{"host": "a.example"}]})");
  CWinHTTPHelper helper(kUrl);
  for (const char16_t* verb :
       {u"PUT", u"get", u"POST ", u"", static_cast<const char16_t*>(nullptr)})
    EXPECT_EQ(helper.SyncSendHttpRequest(verb, false, false, nullptr, 0), 87u);
  EXPECT_EQ(Outstanding(), 0u);
  EXPECT_EQ(helper.SyncSendHttpRequest(u"GET", false, false, nullptr, 0), 0u);
  EXPECT_EQ(Outstanding(), 1u) << "the session stays";
}

TEST_F(WinHttpHelperTest, PostsTheBodyAndTheExtraHeadersInTheirOrder) {
  BootWeb(R"({"hosts": [{"host": "a.example", "body": "thanks",
                         "headers": ["Set-Cookie: k=v"]}]})");
  CWinHTTPHelper helper(kUrl);
  helper.SetExtraHeaders1(u"One: 1\r\n");
  helper.SetExtraHeaders2(u"Two: 2\r\n");
  const char body[] = {'a', 0, 'b'};
  EXPECT_EQ(helper.SyncSendHttpRequest(u"POST", true, false, reinterpret_cast<const BYTE*>(body),
                                       sizeof body),
            0u);
  const auto requests = Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].verb, "POST");
  EXPECT_EQ(requests[0].url, "https://a.example/x");
  EXPECT_EQ(requests[0].headers, "One: 1\r\nTwo: 2\r\n");
  EXPECT_EQ(requests[0].body, std::string(body, sizeof body));
  EXPECT_EQ(helper.GetResponseText(), u"thanks");
  EXPECT_EQ(helper.GetSetCookie(), u"k=v");
  EXPECT_EQ(helper.GetContentLength(), 6u);
  EXPECT_EQ(helper.GetBytesReceived(), 6u);
  EXPECT_TRUE(helper.GetResponseHeaders().starts_with(u"HTTP/1.1 200 OK\r\n"));
}

TEST_F(WinHttpHelperTest, CountsItsRounds) {
  const struct {
    const char* answer;
    bool noRedirect;
    DWORD code;
    std::size_t requests;
  } kCases[] = {
      {R"("body": "")", false, 0, 1},
      {R"("body": "<html>whole</html>")", false, 0, 1},
      {R"("body": "<html>half")", false, 31, 3},
      {R"("body": "<html>half")", true, 0, 1},
      {R"("status": 404, "body": "<html>half")", false, 58, 1},
      {R"("status": 404, "reason": "Not Found")", false, 58, 1},
      {R"("status": 399, "reason": "Odd")", false, 0, 1},
      {R"("status": 400, "reason": "Bad")", false, 58, 1},
      {R"("delay": "31s")", false, ERROR_WINHTTP_TIMEOUT, 3},
      {R"("redirect": "https://a.example/x")", false, ERROR_WINHTTP_REDIRECT_FAILED, 33},
      {R"("redirect": "https://a.example/x")", true, 0, 1},
      {R"("certificate": "unknown")", false, 0, 1},
      {R"("certificate": "refused")", false, ERROR_WINHTTP_SECURE_CHANNEL_ERROR, 0},
      {R"("reach": "none")", false, ERROR_WINHTTP_CANNOT_CONNECT, 0},
  };
  BootWeb("{}");
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.answer);
    Do(std::string(R"({"do": "web", "host": "a.example", )") + one.answer + "}");
    EXPECT_EQ(Get(kUrl, one.noRedirect), one.code);
    EXPECT_EQ(Requests().size(), one.requests);
    EXPECT_EQ(Outstanding(), 0u);
  }
}

TEST_F(WinHttpHelperTest, StrictCertificatesAreAskedFor) {
  BootWeb(R"({"hosts": [{"host": "a.example", "certificate": "unknown"}]})");
  CWinHTTPHelper helper(kUrl);
  helper.SetStrictCertificates(true);
  EXPECT_EQ(helper.SyncSendHttpRequest(u"GET", false, false, nullptr, 0),
            ERROR_WINHTTP_SECURE_FAILURE);
}

TEST_F(WinHttpHelperTest, AStalledServerHoldsItForThreeTimeOuts) {
  BootWeb(R"({"hosts": [{"host": "a.example", "delay": "10m"}]})");
  const auto start = Pc().Now();
  EXPECT_EQ(Get(), ERROR_WINHTTP_TIMEOUT);
  EXPECT_GE(Pc().Now() - start, 90s);
  EXPECT_LT(Pc().Now() - start, 91s);
}

TEST_F(WinHttpHelperTest, TextFollowsTheCharset) {
  const struct {
    const char* type;
    const char16_t* text;
  } kCases[] = {
      {"", u"\u00E4"},
      {"text/html", u"\u00E4"},
      {"text/html; charset=UTF-8", u"\u00E4"},
      {"text/html; charset=x-utf-8-y", u"\u00E4"},
      {"text/html; charset=iso-8859-1", u"\u00C3\u00A4"},
      {"text/html; charset=utf8", u"\u00C3\u00A4"},
      {"text/html; charset=", u"\u00C3\u00A4"},
  };
  BootWeb("{}");
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.type);
    const std::string header = *one.type ? R"("Content-Type: )" + std::string(one.type) + "\"" : "";
    Do(R"({"do": "web", "host": "a.example", "body": "\u00E4", "headers": [)" + header + "]}");
    EXPECT_EQ(Get(), 0u);
    EXPECT_EQ(text, one.text);
  }
  Pc().Faults().FailCall("MultiByteToWideChar", 1, 5);
  Do(R"({"do": "web", "host": "a.example", "body": "\u00E4"})");
  EXPECT_EQ(Get(), 0u);
  EXPECT_EQ(text, u"\u00C3\u00A4") << "what UTF-8 refuses goes through the default code page";
}

// ---- proxies

TEST_F(WinHttpHelperTest, TheSameRoundSendsAgainThroughTheProxyThatIsFound) {
  BootWeb(R"({"hosts": [{"host": "a.example", "reach": "proxy"}],
              "proxies": {"proxy": "proxy.example:8080"}})");
  g_DebugMask = DBG(32);
  EXPECT_EQ(Get(), 0u);
  const auto requests = Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].proxy, "proxy.example:8080");
  EXPECT_TRUE(Printed(":SET PROXY CONFIGURATION FOR RETRY"));
  EXPECT_TRUE(Printed("[ProxyWasSet=1] GOT RESPONSE CODE: 200"));
}

TEST_F(WinHttpHelperTest, LooksForAProxyOnceAndTellsWhyTheSendFailed) {
  BootWeb(R"({"hosts": [{"host": "a.example", "reach": "none"}]})");
  g_DebugMask = DBG(32);
  EXPECT_EQ(Get(), ERROR_WINHTTP_CANNOT_CONNECT) << "not the reason of the look-up";
  const std::string log = Pc().ConsoleText();
  const auto count = [&](std::string_view text) {
    int found = 0;
    for (std::size_t at = 0; (at = log.find(text, at)) != log.npos; ++at) ++found;
    return found;
  };
  EXPECT_EQ(count("WinHttpSendRequest() failed -- 12029"), 3);
  EXPECT_EQ(count("NO url returned by WinHttpDetectAutoProxyConfigUrl()"), 1);
}

TEST_F(WinHttpHelperTest, ProxiesAreFoundInTheirOrder) {
  const struct {
    const char* proxies;
    bool probed;
    const char16_t* probe;
    const char* used;
  } kCases[] = {
      {R"("proxy": "u:1", "configUrl": "http://c/", "detectedProxy": "d:2")", true, u"http://c/",
       "d:2"},
      {R"("proxy": "u:1", "configUrl": "http://c/")", true, u"http://c/", "u:1"},
      {R"("proxy": "u:1")", true, u"u:1", "u:1"},
      {R"("proxy": "u:1", "bypass": "*.example;b")", true, u"u:1", "u:1"},
      {R"("detectedUrl": "http://w/", "detectedProxy": "d:2")", false, u"", "d:2"},
      {R"("known": false, "proxy": "u:1", "detectedUrl": "http://w/", "detectedProxy": "d:2")",
       true, u"d:2", "d:2"},
      {R"("known": false, "detectedUrl": "http://w/")", true, u"http://w/", ""},
      {R"("known": false, "detectedProxy": "d:2")", false, u"", ""},
      {R"("known": true)", false, u"", ""},
  };
  BootWeb(R"({"hosts": [{"host": "a.example"}]})");
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.proxies);
    Do(std::string(R"({"do": "proxies", )") + one.proxies + "}");
    WString found = u"before";
    {
      CWinHTTPHelper helper(kUrl);
      EXPECT_EQ(helper.GetProxyInfo(&found), one.probed);
      EXPECT_EQ(found, one.probe);
    }
    EXPECT_EQ(Get(kUrl, false, true), 0u);
    const auto requests = Requests();
    ASSERT_EQ(requests.size(), 1u);
    EXPECT_EQ(requests[0].proxy, one.used);
    EXPECT_EQ(Outstanding(), 0u);
  }
}

TEST_F(WinHttpHelperTest, AFixedProxyIsUsedAndNoneLookedFor) {
  BootWeb(R"({"hosts": [{"host": "a.example"}], "proxies": {"proxy": "u:1"}})");
  CWinHTTPHelper helper(kUrl);
  helper.SetProxy(u"fixed:3", u"me", u"secret");
  EXPECT_EQ(helper.SyncSendHttpRequest(u"GET", false, true, nullptr, 0), 0u);
  EXPECT_EQ(Requests().at(0).proxy, "fixed:3");
}

// ---- what fails

TEST_F(WinHttpHelperTest, AFailedStepGivesItsCodeAndLeavesNothingOpen) {
  const struct {
    const char* operation;
    std::uint64_t call;
    DWORD code;  // 0: the next round mends it
  } kCases[] = {
      {"WinHttpOpen", 1, 5},
      {"WinHttpSetTimeouts", 1, 5},
      {"WinHttpCrackUrl", 1, 5},
      {"WinHttpConnect", 1, 5},
      {"WinHttpOpenRequest", 1, 5},
      {"WinHttpSetOption", 1, 5},
      {"WinHttpSetOption", 2, 5},
      {"WinHttpAddRequestHeaders", 1, 5},
      {"WinHttpSendRequest", 1, 0},
      {"WinHttpWriteData", 1, 5},
      {"WinHttpReceiveResponse", 1, 0},
      {"WinHttpQueryHeaders", 1, 5},
      {"WinHttpQueryHeaders", 2, 5},
      {"WinHttpQueryHeaders", 3, 5},
      {"WinHttpQueryHeaders", 4, 0},
      {"WinHttpQueryHeaders", 5, 0},
      {"WinHttpQueryHeaders", 6, 0},
      {"WinHttpQueryDataAvailable", 1, 0},
      {"WinHttpReadData", 1, 0},
  };
  BootWeb(R"({"hosts": [{"host": "a.example", "body": "x"}]})");
  const auto post = [] {
    CWinHTTPHelper helper(kUrl);
    helper.SetExtraHeaders1(u"One: 1\r\n");
    return helper.SyncSendHttpRequest(u"POST", true, false, reinterpret_cast<const BYTE*>("b"), 1);
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(std::string(one.operation) + " " + std::to_string(one.call));
    Pc().Faults().FailCall(one.operation, one.call, 5);
    EXPECT_EQ(post(), one.code);
    EXPECT_EQ(Outstanding(), 0u);
    Pc().Faults().Clear();
    Pc().Faults().FailCall(one.operation, one.call, FaultPlan::kFault);
    const bool mended = post() == 0;
    EXPECT_FALSE(mended) << "a fault ends the call";
    EXPECT_EQ(Outstanding(), 0u);
    Pc().Faults().Clear();
  }
}

TEST_F(WinHttpHelperTest, FailedQuestionsAboutProxiesAreNoProxyAndLeaveNothing) {
  BootWeb(R"({"proxies": {"known": false, "detectedUrl": "http://w/", "detectedProxy": "d:2"}})");
  const auto probe = [] {
    WString found;
    return ProxyPresent(&found) ? found : u"(none)";
  };
  EXPECT_EQ(probe(), u"d:2");
  Pc().Faults().FailAlways("WinHttpGetProxyForUrl", 5);
  EXPECT_EQ(probe(), u"http://w/");
  Pc().Faults().FailAlways("WinHttpDetectAutoProxyConfigUrl", 5);
  EXPECT_EQ(probe(), u"(none)");
  Pc().Faults().Clear();
  Pc().Faults().FailAlways("WinHttpOpen", 5);
  EXPECT_EQ(probe(), u"http://w/") << "without a session the platform asks nobody";
  Pc().Faults().FailAlways("WinHttpGetIEProxyConfigForCurrentUser", FaultPlan::kFault);
  EXPECT_EQ(probe(), u"(none)");
  Pc().Faults().Clear();
  for (const char* givenBack : {"GlobalFree", "WinHttpCloseHandle"})
    Pc().Faults().FailAlways(givenBack, FaultPlan::kFault);
  EXPECT_EQ(probe(), u"d:2") << "what fails when it is given back harms nobody";
  EXPECT_EQ(Outstanding(), 0u);
}

// ---- bodies without end

// Answers every request with a body that does not end.
class EndlessWeb : public HttpApi {
 public:
  std::uint64_t given = 0;
  HINTERNET WinHttpOpen(LPCWSTR, DWORD, LPCWSTR, LPCWSTR, DWORD) override { return this; }
  BOOL WinHttpSetTimeouts(HINTERNET, int, int, int, int) override { return TRUE; }
  BOOL WinHttpCrackUrl(LPCWSTR, DWORD, DWORD, URL_COMPONENTS*) override { return TRUE; }
  HINTERNET WinHttpConnect(HINTERNET, LPCWSTR, WORD, DWORD) override { return this; }
  HINTERNET WinHttpOpenRequest(HINTERNET, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, const LPCWSTR*,
                               DWORD) override {
    return this;
  }
  BOOL WinHttpSendRequest(HINTERNET, LPCWSTR, DWORD, const void*, DWORD, DWORD,
                          std::uintptr_t) override {
    return TRUE;
  }
  BOOL WinHttpReceiveResponse(HINTERNET, void*) override { return TRUE; }
  BOOL WinHttpQueryHeaders(HINTERNET, DWORD, LPCWSTR, void* buffer, DWORD* size, DWORD*) override {
    if (buffer) std::memset(buffer, 0, *size);
    return TRUE;
  }
  BOOL WinHttpQueryDataAvailable(HINTERNET, DWORD* available) override {
    *available = 0xFFFFFFFF;
    return TRUE;
  }
  BOOL WinHttpReadData(HINTERNET, void* buffer, DWORD size, DWORD* read) override {
    std::memset(buffer, 'x', size);
    given += * read = size;
    return TRUE;
  }
  BOOL WinHttpCloseHandle(HINTERNET) override { return TRUE; }
};

class EndlessBodyTest : public KernelTest {};

TEST_F(EndlessBodyTest, IsGivenUpAtTheLimitAndNotTriedAgain) {
  auto& web = Install<EndlessWeb>();
  CWinHTTPHelper helper(kUrl);
  EXPECT_EQ(helper.SyncSendHttpRequest(u"GET", false, false, nullptr, 0),
            ERROR_WINHTTP_RESPONSE_DRAIN_OVERFLOW);
  EXPECT_GT(web.given, CWinHTTPHelper::kMaxBody);
  EXPECT_LT(web.given, CWinHTTPHelper::kMaxBody + 2 * 1024 * 1024);
}

TEST(ResponseText, APageIsWholeWithItsClosingTag) {
  EXPECT_TRUE(IsIncompletePage(u"a<html>b"));
  EXPECT_FALSE(IsIncompletePage(u"<html></html>"));
  EXPECT_FALSE(IsIncompletePage(u"<HTML>b"));
  EXPECT_FALSE(IsIncompletePage(u""));
}

}  // namespace
}  // namespace corvane::test
