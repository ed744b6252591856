#pragma once
// Base64 by the standard alphabet (RFC 4648, 4).

#include <string>
#include <string_view>

namespace corvane {

// With padding, without line breaks.
std::string Base64Encode(std::string_view bytes);
// Skips every character outside the alphabet, padding among them; bits that make no whole byte at
// the end are dropped.
std::string Base64Decode(std::string_view text);

}  // namespace corvane
