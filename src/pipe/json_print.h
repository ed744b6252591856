#pragma once
#include <string>
#include <string_view>

namespace corvane {

// The JSON text with one member a line, four blanks of indent; "null" for what is no JSON. Costs no
// stack however deep it nests. The form of a text that nests deep is far longer than the text: it
// ends after about `limit` bytes.
inline constexpr std::size_t kPrintLimit = 1'000'000;
std::string PrettyJson(std::string_view text, std::size_t limit = kPrintLimit);

}  // namespace corvane
