#include "platform/sim/kernel/sim_text.h"

#include <algorithm>
#include <cstdint>

namespace corvane::platform::sim {

namespace {

char16_t Folded(char16_t c) {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
}

}  // namespace

std::u16string FoldCase(std::u16string_view text) {
  std::u16string folded(text);
  std::ranges::transform(folded, folded.begin(), Folded);
  return folded;
}

bool FoldedLess::operator()(std::u16string_view a, std::u16string_view b) const {
  const auto [atA, atB] = std::ranges::mismatch(a, b, [](char16_t one, char16_t other) {
    return one == other || Folded(one) == Folded(other);
  });
  if (atB == b.end()) return false;
  return atA == a.end() || Folded(*atA) < Folded(*atB);
}

bool GiveText(std::u16string_view text, char16_t* buffer, std::uint32_t* chars) {
  if (text.size() >= *chars) return false;
  text.copy(buffer, text.size());
  buffer[text.size()] = u'\0';
  *chars = static_cast<std::uint32_t>(text.size());
  return true;
}

std::string ToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::uint32_t code = text[i];
    const bool pair =
        (code & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00;
    if (pair) {
      code = 0x10000 + ((code & 0x3FF) << 10) + (text[++i] & 0x3FFU);
    } else if ((code & 0xF800) == 0xD800) {
      code = 0xFFFD;
    }
    const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
    if (code < 0x80) {
      put(code);
    } else if (code < 0x800) {
      put(0xC0 | code >> 6);
      put(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      put(0xE0 | code >> 12);
      put(0x80 | (code >> 6 & 0x3F));
      put(0x80 | (code & 0x3F));
    } else {
      put(0xF0 | code >> 18);
      put(0x80 | (code >> 12 & 0x3F));
      put(0x80 | (code >> 6 & 0x3F));
      put(0x80 | (code & 0x3F));
    }
  }
  return out;
}

}  // namespace corvane::platform::sim
