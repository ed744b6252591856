#pragma once
#include <string>
#include <string_view>

#include "platform/http_api.h"

namespace corvane::platform {

// Status line and headers of a response, as WinHttpQueryHeaders tells them. Holds at most kMaxSize
// bytes, whatever a server sends.
class HttpResponseHead {
 public:
  static constexpr std::size_t kMaxSize = 64 * 1024;

  // Takes the next line, with or without its line end; the empty line completes the head. A status
  // line behind a complete head (an interim response, a redirect) begins a new one. False when the
  // head grows beyond its limit.
  bool AddLine(std::string_view line);

  bool IsComplete() const { return m_bComplete; }
  DWORD StatusCode() const;  // 0 without a status line that has one

  // WinHttpQueryHeaders: 0, or the error. Texts are the header's bytes, one unit each. `index`,
  // when given, counts among headers of one name and moves on.
  DWORD Query(DWORD infoLevel, void* buffer, DWORD* size, DWORD* index) const;

 private:
  bool Find(std::string_view name, DWORD nth, std::string_view* value) const;

  std::string m_Lines;  // each with CRLF; the empty line at the end, too
  bool m_bComplete = false;
};

}  // namespace corvane::platform
