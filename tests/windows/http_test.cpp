// HTTP by the system, against a server of the test's own.

#include <gtest/gtest.h>

#include <string>
#include <thread>

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

// Answers one connection after the other on the loopback, and keeps what was asked.
class WebServer {
 public:
  WebServer() {
    ::WSADATA data;
    ::WSAStartup(MAKEWORD(2, 2), &data);
    m_Listener = ::socket(AF_INET, SOCK_STREAM, 0);
    ::sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    ::bind(m_Listener, reinterpret_cast<::sockaddr*>(&address), sizeof(address));
    ::listen(m_Listener, 5);
    int size = sizeof(address);
    ::getsockname(m_Listener, reinterpret_cast<::sockaddr*>(&address), &size);
    port = ::ntohs(address.sin_port);
    m_Thread = std::thread([this] { Serve(); });
  }
  ~WebServer() {
    ::closesocket(m_Listener);
    m_Thread.join();
    ::WSACleanup();
  }
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  WORD port = 0;
  std::string asked;  // read behind a response

 private:
  void Serve() {
    for (;;) {
      const ::SOCKET client = ::accept(m_Listener, nullptr, nullptr);
      if (client == INVALID_SOCKET) return;
      std::string text;
      char block[4096];
      const auto complete = [&] {
        const std::size_t end = text.find("\r\n\r\n");
        const bool posts = text.starts_with("POST");
        return end != text.npos && (!posts || text.size() >= end + 4 + 7);
      };
      for (int count; !complete() && (count = ::recv(client, block, sizeof(block), 0)) > 0;) {
        text.append(block, static_cast<std::size_t>(count));
      }
      asked = text;
      const bool found = text.find(" /ok") != text.npos;
      const std::string body = found ? "fine" : "no";
      const std::string answer =
          std::string("HTTP/1.1 ") + (found ? "200 OK" : "404 Not Found") +
          "\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) +
          "\r\nConnection: close\r\n\r\n" + body;
      ::send(client, answer.data(), static_cast<int>(answer.size()), 0);
      ::closesocket(client);
    }
  }

  ::SOCKET m_Listener;
  std::thread m_Thread;
};

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

TEST_F(WindowsHttpTest, AsksPostsAndReadsAnswers) {
  WebServer server;
  ASSERT_TRUE(session);
  EXPECT_TRUE(http.WinHttpSetTimeouts(session, 5000, 5000, 5000, 5000));
  const HINTERNET connection = http.WinHttpConnect(session, u"127.0.0.1", server.port, 0);
  ASSERT_TRUE(connection);
  for (const bool posts : {false, true}) {
    const HINTERNET request =
        http.WinHttpOpenRequest(connection, posts ? u"POST" : u"GET", posts ? u"/none" : u"/ok?a=1",
                                nullptr, nullptr, nullptr, 0);
    ASSERT_TRUE(request);
    const DWORD noRedirects = WINHTTP_DISABLE_REDIRECTS;
    EXPECT_TRUE(http.WinHttpSetOption(request, WINHTTP_OPTION_DISABLE_FEATURE, &noRedirects, 4));
    EXPECT_TRUE(http.WinHttpAddRequestHeaders(request, u"X-Test: yes\r\n", 0xFFFFFFFF,
                                              WINHTTP_ADDREQ_FLAG_ADD));
    const std::string body = posts ? "{\"a\":1}" : "";
    const auto size = static_cast<DWORD>(body.size());
    EXPECT_TRUE(http.WinHttpSendRequest(request, nullptr, 0, nullptr, 0, size, 0));
    DWORD written = 0;
    if (posts) {
      EXPECT_TRUE(http.WinHttpWriteData(request, body.data(), size, &written));
      EXPECT_EQ(written, size);
    }
    EXPECT_TRUE(http.WinHttpReceiveResponse(request, nullptr)) << threads.GetLastError();
    DWORD status = 0;
    DWORD bytes = sizeof(status);
    EXPECT_TRUE(http.WinHttpQueryHeaders(request,
                                         WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                                         nullptr, &status, &bytes, nullptr));
    EXPECT_EQ(status, posts ? 404u : 200u);
    bytes = 0;
    EXPECT_FALSE(http.WinHttpQueryHeaders(request, WINHTTP_QUERY_CONTENT_TYPE, nullptr, nullptr,
                                          &bytes, nullptr));
    EXPECT_EQ(threads.GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(bytes, sizeof(u"text/plain"));
    DWORD available = 0;
    EXPECT_TRUE(http.WinHttpQueryDataAvailable(request, &available));
    char text[16] = {};
    DWORD read = 0;
    EXPECT_TRUE(http.WinHttpReadData(request, text, sizeof(text), &read));
    EXPECT_EQ(std::string(text, read), posts ? "no" : "fine");
    EXPECT_NE(server.asked.find("X-Test: yes"), std::string::npos);
    EXPECT_EQ(server.asked.ends_with(body), true);
    EXPECT_TRUE(http.WinHttpCloseHandle(request));
  }
  EXPECT_TRUE(http.WinHttpCloseHandle(connection));
}

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
