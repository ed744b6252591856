#include "platform/utf.h"

#include <cstdint>

namespace corvane::platform {

namespace {

// Length of the well-formed sequence (RFC 3629, 4) at the head of `bytes`, with its code point; 0
// for a malformed one.
std::size_t Decode(std::string_view bytes, std::uint32_t* code) {
  static constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const auto first = static_cast<unsigned char>(bytes[0]);
  const std::size_t length = first < 0x80       ? 1
                             : first >> 5 == 6  ? 2
                             : first >> 4 == 14 ? 3
                             : first >> 3 == 30 ? 4
                                                : 0;
  if (length == 0 || length > bytes.size()) return 0;
  *code = length == 1 ? first : first & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(bytes[i]);
    if (next >> 6 != 2) return 0;
    *code = *code << 6 | (next & 0x3F);
  }
  const bool surrogate = *code >= 0xD800 && *code <= 0xDFFF;
  return *code < kSmallest[length] || *code > 0x10FFFF || surrogate ? 0 : length;
}

}  // namespace

std::u16string ToUtf16(std::string_view bytes) {
  std::u16string out;
  while (!bytes.empty()) {
    std::uint32_t code = 0xFFFD;
    const std::size_t length = Decode(bytes, &code);
    if (length == 0) code = 0xFFFD;
    bytes.remove_prefix(length == 0 ? 1 : length);
    if (code < 0x10000) {
      out += static_cast<char16_t>(code);
    } else {
      out += static_cast<char16_t>(0xD7C0 + (code >> 10));
      out += static_cast<char16_t>(0xDC00 | (code & 0x3FF));
    }
  }
  return out;
}

}  // namespace corvane::platform
