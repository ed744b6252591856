// What is the Windows host's own of its HTTP client.

#include <gtest/gtest.h>

#include "platform/windows/system_call.h"
#include "platform/windows/windows_http.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

std::vector<Operation<HttpApi>> Operations() {
  static URL_COMPONENTS parts;
  static DWORD number;
  static char text[8];
  static char16_t* url;
  static WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config;
  static WINHTTP_AUTOPROXY_OPTIONS options;
  static WINHTTP_PROXY_INFO info;
  constexpr HINTERNET kNone = nullptr;
  return {
      {"WinHttpOpen",
       [](auto& it) { return CodeOf(it.WinHttpOpen(u"a", 0, nullptr, nullptr, 0)); }},
      {"WinHttpSetTimeouts",
       [](auto& it) { return CodeOf(it.WinHttpSetTimeouts(kNone, 1, 1, 1, 1)); }},
      {"WinHttpCrackUrl", [](auto& it) { return CodeOf(it.WinHttpCrackUrl(u"a", 0, 0, &parts)); }},
      {"WinHttpConnect", [](auto& it) { return CodeOf(it.WinHttpConnect(kNone, u"a", 1, 0)); }},
      {"WinHttpOpenRequest",
       [](auto& it) {
         return CodeOf(it.WinHttpOpenRequest(kNone, u"GET", u"/", nullptr, nullptr, nullptr, 0));
       }},
      {"WinHttpSetOption",
       [](auto& it) { return CodeOf(it.WinHttpSetOption(kNone, 1, &number, 4)); }},
      {"WinHttpAddRequestHeaders",
       [](auto& it) { return CodeOf(it.WinHttpAddRequestHeaders(kNone, u"A: b", 4, 0)); }},
      {"WinHttpSendRequest",
       [](auto& it) { return CodeOf(it.WinHttpSendRequest(kNone, nullptr, 0, nullptr, 0, 0, 0)); }},
      {"WinHttpWriteData",
       [](auto& it) { return CodeOf(it.WinHttpWriteData(kNone, "a", 1, &number)); }},
      {"WinHttpReceiveResponse",
       [](auto& it) { return CodeOf(it.WinHttpReceiveResponse(kNone, nullptr)); }},
      {"WinHttpQueryHeaders",
       [](auto& it) {
         return CodeOf(it.WinHttpQueryHeaders(kNone, 1, nullptr, text, &number, nullptr));
       }},
      {"WinHttpQueryDataAvailable",
       [](auto& it) { return CodeOf(it.WinHttpQueryDataAvailable(kNone, &number)); }},
      {"WinHttpReadData",
       [](auto& it) { return CodeOf(it.WinHttpReadData(kNone, text, 8, &number)); }},
      {"WinHttpCloseHandle", [](auto& it) { return CodeOf(it.WinHttpCloseHandle(kNone)); }},
      {"WinHttpGetIEProxyConfigForCurrentUser",
       [](auto& it) { return CodeOf(it.WinHttpGetIEProxyConfigForCurrentUser(&config)); }},
      {"WinHttpGetProxyForUrl",
       [](auto& it) { return CodeOf(it.WinHttpGetProxyForUrl(kNone, u"a", &options, &info)); }},
      {"WinHttpDetectAutoProxyConfigUrl",
       [](auto& it) { return CodeOf(it.WinHttpDetectAutoProxyConfigUrl(1, &url)); }},
  };
}

}  // namespace

class WindowsHttpTest : public testing::Test {
 protected:
  WindowsHttpTest() {
    session = http.WinHttpOpen(u"Test/1", 1 /* no proxy */, nullptr, nullptr, 0);
  }
  ~WindowsHttpTest() override { EXPECT_TRUE(http.WinHttpCloseHandle(session)); }

  WindowsThreads threads;
  WindowsHttp http;
  HINTERNET session = nullptr;
};

TEST_F(WindowsHttpTest, NamesTheReasonOfAFailure) {
  const HINTERNET connection = http.WinHttpConnect(session, u"127.0.0.1", 1, 0);
  const HINTERNET request =
      http.WinHttpOpenRequest(connection, u"GET", u"/", nullptr, nullptr, nullptr, 0);
  EXPECT_FALSE(http.WinHttpSendRequest(request, nullptr, 0, nullptr, 0, 0, 0));
  EXPECT_EQ(threads.GetLastError(), ERROR_WINHTTP_CANNOT_CONNECT);
  http.WinHttpCloseHandle(request);
  http.WinHttpCloseHandle(connection);
  WINHTTP_AUTOPROXY_OPTIONS options{.dwFlags = WINHTTP_AUTOPROXY_AUTO_DETECT,
                                    .dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DNS_A};
  WINHTTP_PROXY_INFO info;
  EXPECT_FALSE(http.WinHttpGetProxyForUrl(session, u"http://a.invalid/", &options, &info));
  char16_t* url = nullptr;
  EXPECT_FALSE(http.WinHttpDetectAutoProxyConfigUrl(WINHTTP_AUTO_DETECT_TYPE_DNS_A, &url));
  WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config;
  if (http.WinHttpGetIEProxyConfigForCurrentUser(&config)) http.GlobalFree(config.lpszProxy);
}

TEST_F(WindowsHttpTest, TakesAddressesApartWithTheQueryInThePath) {
  char16_t host[64];
  char16_t path[64];
  URL_COMPONENTS parts{
      .lpszHostName = host, .dwHostNameLength = 64, .lpszUrlPath = path, .dwUrlPathLength = 64};
  ASSERT_TRUE(http.WinHttpCrackUrl(u"https://a.example:8443/b/c?d=1", 0, 0, &parts));
  EXPECT_EQ(parts.nScheme, INTERNET_SCHEME_HTTPS);
  EXPECT_EQ(parts.nPort, 8443);
  EXPECT_EQ(std::u16string_view(host, parts.dwHostNameLength), u"a.example");
  EXPECT_EQ(std::u16string_view(path, parts.dwUrlPathLength), u"/b/c?d=1");
  EXPECT_FALSE(http.WinHttpCrackUrl(u"nonsense", 0, 0, &parts));
  char16_t wide[8] = {};
  // The program's default code page is UTF-8, which knows none of the other flags.
  for (const DWORD flags : {DWORD{0}, DWORD{MB_PRECOMPOSED}}) {
    EXPECT_EQ(http.MultiByteToWideChar(CP_UTF8, flags, "\xC3\xA9x", 3, wide, 8), 2);
    EXPECT_EQ(std::u16string_view(wide), u"\u00E9x");
  }
}

TEST_F(WindowsHttpTest, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsHttp missing(&FindNothing), faulting(&FindFaulting);
  ExpectFailures<HttpApi>(Operations(), missing, faulting);
}

}  // namespace corvane::test
