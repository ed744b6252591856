#include "platform/http_url.h"

#include <algorithm>

namespace corvane::platform {

namespace {

constexpr WORD kHttpPort = 80, kHttpsPort = 443;
constexpr unsigned kMostPort = 65535;

bool StartsWithFolded(std::u16string_view text, std::u16string_view lower) {
  return text.size() >= lower.size() &&
         std::ranges::equal(text.substr(0, lower.size()), lower, [](char16_t a, char16_t b) {
           return (a >= u'A' && a <= u'Z' ? static_cast<char16_t>(a + 32) : a) == b;
         });
}

// What would end the request line or a header of a request, or cannot stand in an address.
bool IsForbidden(char16_t unit) { return unit <= 0x20 || unit == 0x7F; }

bool ReadPort(std::u16string_view text, WORD* port) {
  unsigned value = 0;
  for (const char16_t unit : text) {
    if (unit < u'0' || unit > u'9') return false;
    value = value * 10 + static_cast<unsigned>(unit - u'0');
    if (value > kMostPort) return false;
  }
  if (value == 0) return false;
  *port = static_cast<WORD>(value);
  return true;
}

// Host and port; the host of "[::1]:80" is "[::1]".
bool SplitAuthority(std::u16string_view authority, UrlParts* parts) {
  if (const std::size_t at = authority.rfind(u'@'); at != authority.npos)
    authority.remove_prefix(at + 1);
  std::size_t end = authority.find(u':');
  if (authority.starts_with(u'[')) {
    end = authority.find(u']');
    if (end == authority.npos) return false;
    ++end;
  }
  parts->host = authority.substr(0, end);
  if (parts->host.empty()) return false;
  if (end >= authority.size()) return true;
  return authority[end] == u':' && ReadPort(authority.substr(end + 1), &parts->port);
}

bool Put(std::u16string_view text, char16_t* buffer, DWORD* length) {
  const DWORD room = *length;
  *length = static_cast<DWORD>(text.size());
  if (!buffer) return true;
  if (text.size() >= room) return false;
  std::ranges::copy(text, buffer);
  buffer[text.size()] = 0;
  return true;
}

}  // namespace

DWORD SplitUrl(std::u16string_view url, UrlParts* parts) {
  *parts = {};
  constexpr std::u16string_view kHttp = u"http://", kHttps = u"https://";
  if (StartsWithFolded(url, kHttps)) {
    parts->scheme = INTERNET_SCHEME_HTTPS;
    parts->port = kHttpsPort;
    url.remove_prefix(kHttps.size());
  } else if (StartsWithFolded(url, kHttp)) {
    parts->scheme = INTERNET_SCHEME_HTTP;
    parts->port = kHttpPort;
    url.remove_prefix(kHttp.size());
  } else {
    return ERROR_WINHTTP_UNRECOGNIZED_SCHEME;
  }
  if (std::ranges::any_of(url, IsForbidden)) return ERROR_WINHTTP_INVALID_URL;
  url = url.substr(0, url.find(u'#'));
  const std::size_t path = std::min(url.find_first_of(u"/?"), url.size());
  if (!SplitAuthority(url.substr(0, path), parts)) return ERROR_WINHTTP_INVALID_URL;
  parts->path = url.substr(path);
  if (parts->path.starts_with(u'?')) parts->path.insert(0, 1, u'/');
  return ERROR_SUCCESS;
}

DWORD CrackUrl(LPCWSTR url, DWORD length, URL_COMPONENTS* out) {
  if (!url || !out) return ERROR_INVALID_PARAMETER;
  const std::u16string_view text =
      length == 0 ? std::u16string_view(url) : std::u16string_view(url, length);
  UrlParts parts;
  if (const DWORD code = SplitUrl(text, &parts); code != ERROR_SUCCESS) return code;
  out->nScheme = parts.scheme;
  out->nPort = parts.port;
  const bool host = Put(parts.host, out->lpszHostName, &out->dwHostNameLength);
  const bool path = Put(parts.path, out->lpszUrlPath, &out->dwUrlPathLength);
  return host && path ? ERROR_SUCCESS : ERROR_INSUFFICIENT_BUFFER;
}

}  // namespace corvane::platform
