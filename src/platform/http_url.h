#pragma once
// The parts of a web address, as WinHttpCrackUrl tells them. Pure.

#include <string>
#include <string_view>

#include "platform/http_api.h"

namespace corvane::platform {

struct UrlParts {
  int scheme = 0;       // INTERNET_SCHEME_HTTP or INTERNET_SCHEME_HTTPS
  std::u16string host;  // an IPv6 address keeps its brackets
  WORD port = 0;        // of the scheme where the address names none
  std::u16string path;  // with the query; empty for an address of nothing but a host
};

// 0, or the error: ERROR_WINHTTP_UNRECOGNIZED_SCHEME or ERROR_WINHTTP_INVALID_URL.
DWORD SplitUrl(std::u16string_view url, UrlParts* parts);

// The same into buffers of the caller; ERROR_INSUFFICIENT_BUFFER for a part that does not fit with
// its NUL. `length` 0 stands for the whole text.
DWORD CrackUrl(LPCWSTR url, DWORD length, URL_COMPONENTS* parts);

}  // namespace corvane::platform
