#pragma once
// Text in its two forms: wide is UTF-16 on every platform, narrow is bytes.

#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

using WString = std::u16string;
using WStringView = std::u16string_view;

// The low byte of each wide character, without a code page: the form of the log and the pipes.
std::string Narrow(WStringView text);
// Each byte as one wide character (ASCII).
WString Widen(std::string_view text);

// UTF-8 and UTF-16. Malformed input reads as U+FFFD, one for each bad byte or unit.
WString Utf8ToWide(std::string_view bytes);
std::string WideToUtf8(WStringView text);

// ASCII letters in lower case; everything else as it stands.
WString ToLower(WStringView text);
std::string ToLower(std::string_view text);
bool EqualsIgnoreCase(WStringView a, WStringView b);

}  // namespace corvane
