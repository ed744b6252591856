#pragma once
#include <string>
#include <string_view>

namespace corvane::platform {

// UTF-8 as UTF-16. Malformed input reads as U+FFFD, one for each bad byte.
std::u16string ToUtf16(std::string_view bytes);

}  // namespace corvane::platform
