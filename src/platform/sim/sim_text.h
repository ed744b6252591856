#pragma once
#include <string>
#include <string_view>

namespace corvane::platform::sim {

// ASCII letters in lower case: what names are compared by.
std::u16string FoldCase(std::u16string_view text);
std::string ToUtf8(std::u16string_view text);

}  // namespace corvane::platform::sim
