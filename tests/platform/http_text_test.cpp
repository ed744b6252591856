// Addresses, heads of responses and code pages, as the HTTP services of all platforms read them.

#include <gtest/gtest.h>

#include "platform/code_page.h"
#include "platform/http_response_head.h"
#include "platform/http_url.h"

namespace corvane::test {
namespace {

using namespace platform;

TEST(HttpUrl, PartsOfAddressesAndWhatIsNone) {
  const struct {
    const char16_t* url;
    DWORD code;
    int scheme;
    const char16_t* host;
    WORD port;
    const char16_t* path;
  } kCases[] = {
      {u"http://a.example", 0, 1, u"a.example", 80, u""},
      {u"HTTPS://a.example/x?y=1#z", 0, 2, u"a.example", 443, u"/x?y=1"},
      {u"http://a?q", 0, 1, u"a", 80, u"/?q"},
      {u"http://user:pw@a:8080/", 0, 1, u"a", 8080, u"/"},
      {u"http://[::1]:81/x", 0, 1, u"[::1]", 81, u"/x"},
      {u"http://[::1/x", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"http://a:0/", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"http://a:65536/", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"http://a:8o/", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"http:///x", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"http://a/x\r\nHost: b", ERROR_WINHTTP_INVALID_URL, 0, u"", 0, u""},
      {u"ftp://a/", ERROR_WINHTTP_UNRECOGNIZED_SCHEME, 0, u"", 0, u""},
      {u"", ERROR_WINHTTP_UNRECOGNIZED_SCHEME, 0, u"", 0, u""},
  };
  for (const auto& one : kCases) {
    UrlParts parts;
    ASSERT_EQ(SplitUrl(one.url, &parts), one.code);
    if (one.code != 0) continue;
    EXPECT_EQ(parts.scheme, one.scheme);
    EXPECT_EQ(parts.host, one.host);
    EXPECT_EQ(parts.port, one.port);
    EXPECT_EQ(parts.path, one.path);
  }
}

TEST(HttpUrl, ABufferHasToHoldThePartWithItsNul) {
  char16_t host[5], path[3];
  URL_COMPONENTS parts;
  const auto crack = [&](LPCWSTR url) {
    parts = {
        .lpszHostName = host, .dwHostNameLength = 5, .lpszUrlPath = path, .dwUrlPathLength = 3};
    return CrackUrl(url, 0, &parts);
  };
  EXPECT_EQ(crack(u"http://abcd/x"), ERROR_SUCCESS);
  EXPECT_EQ(std::u16string(host), u"abcd");
  EXPECT_EQ(parts.dwUrlPathLength, 2u);
  EXPECT_EQ(crack(u"http://abcde/x"), ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(crack(u"http://abcd/xy"), ERROR_INSUFFICIENT_BUFFER);
}

HttpResponseHead HeadOf(std::initializer_list<std::string_view> lines) {
  HttpResponseHead head;
  for (const std::string_view line : lines) EXPECT_TRUE(head.AddLine(line));
  return head;
}

std::u16string TextOf(const HttpResponseHead& head, DWORD level, DWORD* index = nullptr) {
  char16_t text[300];
  DWORD size = sizeof text;
  return head.Query(level, text, &size, index) == ERROR_SUCCESS
             ? std::u16string(text, size / sizeof(char16_t))
             : u"(none)";
}

TEST(HttpResponseHead, TellsStatusNumbersAndTexts) {
  const auto head = HeadOf({"HTTP/1.1 401 No Way\r\n", "Content-LENGTH:  12 \n", "Set-Cookie: a=1",
                            "set-cookie:b=2", "X: y", ""});
  EXPECT_TRUE(head.IsComplete());
  EXPECT_EQ(head.StatusCode(), 401u);
  DWORD number = 0, size = sizeof number;
  EXPECT_EQ(
      head.Query(WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER, &number, &size, nullptr),
      ERROR_SUCCESS);
  EXPECT_EQ(number, 12u);
  DWORD index = 0;
  EXPECT_EQ(TextOf(head, WINHTTP_QUERY_SET_COOKIE, &index), u"a=1");
  EXPECT_EQ(TextOf(head, WINHTTP_QUERY_SET_COOKIE, &index), u"b=2");
  EXPECT_EQ(TextOf(head, WINHTTP_QUERY_SET_COOKIE, &index), u"(none)");
  EXPECT_EQ(TextOf(head, WINHTTP_QUERY_RAW_HEADERS_CRLF),
            u"HTTP/1.1 401 No Way\r\nContent-LENGTH:  12 \r\nSet-Cookie: a=1\r\nset-cookie:b=2\r\n"
            u"X: y\r\n\r\n");
  size = 4;
  char16_t small[2];
  EXPECT_EQ(head.Query(WINHTTP_QUERY_STATUS_CODE, small, &size, nullptr),
            ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(size, 8u);
}

TEST(HttpResponseHead, TheLastResponseCountsAndBadNumbersDoNot) {
  auto head = HeadOf({"HTTP/1.1 100 Continue", "", "HTTP/1.1 200 OK", "Content-Length: 4294967296",
                      "no colon here", "", "Trailer: x"});
  EXPECT_EQ(head.StatusCode(), 200u);
  EXPECT_EQ(TextOf(head, WINHTTP_QUERY_RAW_HEADERS_CRLF).find(u"Trailer"), std::u16string::npos);
  DWORD number = 0, size = sizeof number;
  EXPECT_EQ(
      head.Query(WINHTTP_QUERY_CONTENT_LENGTH | WINHTTP_QUERY_FLAG_NUMBER, &number, &size, nullptr),
      ERROR_INVALID_DATA);
  EXPECT_EQ(HeadOf({"HTTP/1.1", ""}).StatusCode(), 0u);
  EXPECT_EQ(HeadOf({"", ""}).StatusCode(), 0u);
}

TEST(HttpResponseHead, DoesNotGrowWithoutEnd) {
  HttpResponseHead head;
  head.AddLine("HTTP/1.1 200 OK");
  std::size_t lines = 0;
  while (head.AddLine("X-Filler: " + std::string(1000, 'x')) && lines < 1000) ++lines;
  EXPECT_EQ(lines, HttpResponseHead::kMaxSize / 1012);
}

TEST(CodePage, Utf8AndTheDefaultOne) {
  const auto convert = [](unsigned page, DWORD flags, std::string_view bytes) {
    char16_t wide[16];
    DWORD code = 0;
    const int length =
        CodePageToWide(page, flags, bytes.data(), static_cast<int>(bytes.size()), wide, 16, &code);
    return length > 0 ? std::u16string(wide, static_cast<std::size_t>(length)) : u"(none)";
  };
  EXPECT_EQ(convert(CP_UTF8, 0, "\xC3\xA4\xF0\x9F\x98\x80"), u"\u00E4\U0001F600");
  EXPECT_EQ(convert(CP_UTF8, MB_PRECOMPOSED, "a"), u"(none)");
  EXPECT_EQ(convert(CP_ACP, MB_PRECOMPOSED, "\xC3\xA4\x80"), u"\u00C3\u00A4\u20AC");
  EXPECT_EQ(convert(932, 0, "a"), u"(none)");
  EXPECT_EQ(convert(CP_UTF8, 0, ""), u"(none)");
  DWORD code = 0;
  char16_t two[2];
  EXPECT_EQ(CodePageToWide(CP_UTF8, 0, "abc", 3, two, 2, &code), 0);
  EXPECT_EQ(code, ERROR_INSUFFICIENT_BUFFER);
  EXPECT_EQ(CodePageToWide(CP_UTF8, 0, "abc", -1, nullptr, 0, &code), 4) << "the NUL counts";
}

}  // namespace
}  // namespace corvane::test
