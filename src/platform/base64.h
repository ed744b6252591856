#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace corvane::platform {

// The standard alphabet with padding, in one line.
std::string ToBase64(std::string_view bytes);

// The bytes of base64 text between a "-----BEGIN ...-----" and an "-----END ...-----" line, as keys
// are kept. None without both lines, or with a character in between that is neither of the alphabet
// nor white space.
std::optional<std::string> FromBase64WithHeaders(std::string_view text);

}  // namespace corvane::platform
