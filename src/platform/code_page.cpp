#include "platform/code_page.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "platform/http_api.h"
#include "platform/utf.h"

namespace corvane::platform {

namespace {

constexpr unsigned kWestern = 1252;
constexpr DWORD ERROR_INVALID_FLAGS = 1004;

// 0x80 to 0x9F of Windows-1252; what it leaves open reads as itself.
constexpr char16_t kWesternHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char16_t Western(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x80 && value < 0xA0 ? kWesternHigh[value - 0x80] : value;
}

int Give(std::u16string_view text, char16_t* wide, int wideSize, DWORD* code) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    *code = ERROR_INVALID_PARAMETER;
    return 0;
  }
  const int length = static_cast<int>(text.size());
  if (!wide || wideSize == 0) return length;
  if (wideSize < length) {
    *code = ERROR_INSUFFICIENT_BUFFER;
    return 0;
  }
  std::ranges::copy(text, wide);
  return length;
}

}  // namespace

int CodePageToWide(unsigned codePage, DWORD flags, const char* bytes, int size, char16_t* wide,
                   int wideSize, DWORD* code) {
  *code = ERROR_INVALID_PARAMETER;
  if (!bytes || size == 0 || size < -1 || wideSize < 0) return 0;
  const std::string_view text(bytes,
                              size < 0 ? std::strlen(bytes) + 1 : static_cast<std::size_t>(size));
  if (codePage == CP_UTF8) {
    if (flags != 0) *code = ERROR_INVALID_FLAGS;
    return flags != 0 ? 0 : Give(ToUtf16(text), wide, wideSize, code);
  }
  if (codePage != CP_ACP && codePage != kWestern) return 0;
  std::u16string out(text.size(), 0);
  std::ranges::transform(text, out.begin(), Western);
  return Give(out, wide, wideSize, code);
}

}  // namespace corvane::platform
