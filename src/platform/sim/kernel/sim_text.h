#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane::platform::sim {

// ASCII letters in lower case: what names are compared by.
std::u16string FoldCase(std::u16string_view text);
// The order of FoldCase's texts, for maps that keep names as they were spelled.
struct FoldedLess {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const;
};
// A text that may be null, as one that is empty.
inline std::u16string_view ViewOf(const char16_t* text) {
  return text ? std::u16string_view(text) : std::u16string_view();
}
// The text with its NUL into a buffer of *chars characters, and its length into *chars; false, with
// nothing written, when there is no room.
bool GiveText(std::u16string_view text, char16_t* buffer, std::uint32_t* chars);
std::string ToUtf8(std::u16string_view text);

}  // namespace corvane::platform::sim
