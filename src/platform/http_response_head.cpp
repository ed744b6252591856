#include "platform/http_response_head.h"

#include <algorithm>
#include <cstring>

namespace corvane::platform {

namespace {

constexpr std::string_view kEnd = "\r\n";

char Folded(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool EqualsFolded(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, Folded, Folded);
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// A number of 32 bits, in digits alone.
bool ReadNumber(std::string_view text, DWORD* number) {
  if (text.empty()) return false;
  std::uint64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + static_cast<unsigned>(c - '0');
    if (value > 0xFFFFFFFF) return false;
  }
  *number = static_cast<DWORD>(value);
  return true;
}

std::string_view StatusText(std::string_view lines) {
  const std::size_t blank = lines.find(' ');
  if (blank == lines.npos || blank > lines.find('\r')) return {};
  const std::string_view rest = lines.substr(blank + 1);
  return rest.substr(0, rest.find_first_of(" \r"));
}

DWORD GiveText(std::string_view text, void* buffer, DWORD* size) {
  const auto units = static_cast<DWORD>(text.size());
  const DWORD needed = (units + 1) * static_cast<DWORD>(sizeof(char16_t));
  if (!buffer || *size < needed) {
    *size = needed;
    return ERROR_INSUFFICIENT_BUFFER;
  }
  auto* out = static_cast<char16_t*>(buffer);
  for (const char byte : text) *out++ = static_cast<unsigned char>(byte);
  *out = 0;
  *size = needed - static_cast<DWORD>(sizeof(char16_t));
  return ERROR_SUCCESS;
}

DWORD GiveNumber(std::string_view text, void* buffer, DWORD* size) {
  DWORD number = 0;
  if (!ReadNumber(text, &number)) return ERROR_INVALID_DATA;
  if (!buffer || *size < sizeof number) {
    *size = sizeof number;
    return ERROR_INSUFFICIENT_BUFFER;
  }
  std::memcpy(buffer, &number, sizeof number);
  *size = sizeof number;
  return ERROR_SUCCESS;
}

}  // namespace

bool HttpResponseHead::AddLine(std::string_view line) {
  while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
  if (m_bComplete) {
    if (!line.starts_with("HTTP/")) return true;  // a trailer behind the body
    m_bComplete = false;
    m_Lines.clear();
  }
  if (m_Lines.size() + line.size() + kEnd.size() > kMaxSize) return false;
  m_Lines.append(line).append(kEnd);
  m_bComplete = line.empty();
  return true;
}

DWORD HttpResponseHead::StatusCode() const {
  DWORD status = 0;
  return ReadNumber(StatusText(m_Lines), &status) ? status : 0;
}

bool HttpResponseHead::Find(std::string_view name, DWORD nth, std::string_view* value) const {
  const std::string_view lines = m_Lines;
  // The first line is the status.
  for (std::size_t at = lines.find(kEnd); at != lines.npos;) {
    const std::size_t start = at + kEnd.size();
    at = lines.find(kEnd, start);
    if (at == lines.npos) break;
    const std::string_view line = lines.substr(start, at - start);
    const std::size_t colon = line.find(':');
    if (colon == line.npos || !EqualsFolded(Trimmed(line.substr(0, colon)), name)) continue;
    if (nth-- > 0) continue;
    *value = Trimmed(line.substr(colon + 1));
    return true;
  }
  return false;
}

DWORD HttpResponseHead::Query(DWORD infoLevel, void* buffer, DWORD* size, DWORD* index) const {
  if (!size) return ERROR_INVALID_PARAMETER;
  std::string_view text;
  switch (infoLevel & ~WINHTTP_QUERY_FLAG_NUMBER) {
    case WINHTTP_QUERY_RAW_HEADERS_CRLF:
      text = m_Lines;
      break;
    case WINHTTP_QUERY_STATUS_CODE:
      text = StatusText(m_Lines);
      break;
    case WINHTTP_QUERY_CONTENT_TYPE:
    case WINHTTP_QUERY_CONTENT_LENGTH:
    case WINHTTP_QUERY_SET_COOKIE: {
      const DWORD level = infoLevel & ~WINHTTP_QUERY_FLAG_NUMBER;
      const std::string_view name = level == WINHTTP_QUERY_CONTENT_TYPE     ? "content-type"
                                    : level == WINHTTP_QUERY_CONTENT_LENGTH ? "content-length"
                                                                            : "set-cookie";
      if (!Find(name, index ? *index : 0, &text)) return ERROR_WINHTTP_HEADER_NOT_FOUND;
      break;
    }
    default:
      return ERROR_INVALID_PARAMETER;
  }
  const DWORD code = (infoLevel & WINHTTP_QUERY_FLAG_NUMBER) ? GiveNumber(text, buffer, size)
                                                             : GiveText(text, buffer, size);
  if (code == ERROR_SUCCESS && index) ++*index;
  return code;
}

}  // namespace corvane::platform
