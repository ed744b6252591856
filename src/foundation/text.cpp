#include "foundation/text.h"

#include <algorithm>

namespace corvane {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// One code point at the head of `bytes`, which is not empty. `used` gets its length; a byte that
// begins no well-formed sequence (RFC 3629: no overlong form, no surrogate, nothing over U+10FFFF)
// is used up alone.
char32_t DecodeUtf8(std::string_view bytes, std::size_t* used) {
  const auto at = [bytes](std::size_t i) { return static_cast<std::uint8_t>(bytes[i]); };
  *used = 1;
  const std::uint8_t lead = at(0);
  if (lead < 0x80) return lead;

  std::size_t length;
  char32_t code;
  char32_t least;
  if ((lead & 0xE0) == 0xC0) {
    length = 2, code = lead & 0x1F, least = 0x80;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, code = lead & 0x0F, least = 0x800;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, code = lead & 0x07, least = 0x10000;
  } else {
    return kReplacement;
  }
  if (bytes.size() < length) return kReplacement;
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return kReplacement;
    code = (code << 6) | (at(i) & 0x3Fu);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < least || surrogate || code > 0x10FFFF) return kReplacement;
  *used = length;
  return code;
}

// One code point at the head of `units`, which is not empty; a lone surrogate is used up alone.
char32_t DecodeUtf16(WStringView units, std::size_t* used) {
  *used = 1;
  const char16_t first = units[0];
  if (first < 0xD800 || first > 0xDFFF) return first;
  if (first > 0xDBFF || units.size() < 2) return kReplacement;
  const char16_t second = units[1];
  if (second < 0xDC00 || second > 0xDFFF) return kReplacement;
  *used = 2;
  return 0x10000 + ((static_cast<char32_t>(first) - 0xD800) << 10) + (second - 0xDC00u);
}

void AppendUtf8(char32_t code, std::string* out) {
  const auto put = [out](char32_t byte) { out->push_back(static_cast<char>(byte)); };
  if (code < 0x80) {
    put(code);
    return;
  }
  if (code < 0x800) {
    put(0xC0 | (code >> 6));
  } else {
    if (code < 0x10000) {
      put(0xE0 | (code >> 12));
    } else {
      put(0xF0 | (code >> 18));
      put(0x80 | ((code >> 12) & 0x3F));
    }
    put(0x80 | ((code >> 6) & 0x3F));
  }
  put(0x80 | (code & 0x3F));
}

template <typename Ch>
Ch LowerAscii(Ch c) {
  return c >= Ch{'A'} && c <= Ch{'Z'} ? static_cast<Ch>(c + ('a' - 'A')) : c;
}

}  // namespace

std::string Narrow(WStringView text) {
  std::string out(text.size(), '\0');
  std::transform(text.begin(), text.end(), out.begin(),
                 [](char16_t c) { return static_cast<char>(c); });
  return out;
}

WString Widen(std::string_view text) {
  WString out(text.size(), u'\0');
  std::transform(text.begin(), text.end(), out.begin(),
                 [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
  return out;
}

WString Utf8ToWide(std::string_view bytes) {
  WString out;
  out.reserve(bytes.size());
  while (!bytes.empty()) {
    std::size_t used = 0;
    const char32_t code = DecodeUtf8(bytes, &used);
    bytes.remove_prefix(used);
    if (code < 0x10000) {
      out.push_back(static_cast<char16_t>(code));
    } else {
      out.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

std::string WideToUtf8(WStringView text) {
  std::string out;
  out.reserve(text.size());
  while (!text.empty()) {
    std::size_t used = 0;
    AppendUtf8(DecodeUtf16(text, &used), &out);
    text.remove_prefix(used);
  }
  return out;
}

WString ToLower(WStringView text) {
  WString out(text);
  std::transform(out.begin(), out.end(), out.begin(), LowerAscii<char16_t>);
  return out;
}

std::string ToLower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(), LowerAscii<char>);
  return out;
}

bool EqualsIgnoreCase(WStringView a, WStringView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char16_t x, char16_t y) { return LowerAscii(x) == LowerAscii(y); });
}

}  // namespace corvane
