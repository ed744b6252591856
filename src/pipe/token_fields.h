#pragma once
// The plain text of a client's token. Pure.

#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/text.h"

namespace corvane {

struct TokenFields {
  WString guid;  // the client's session
  std::uint32_t pid = 0;
  std::uint64_t nonce = 0;
  WString x;  // the client's own; may be empty
};

// Up to the first NUL, each byte one character. Nothing unless there are exactly three commas.
// Throws Exception for a pid or a nonce that is not all digits, or too large.
std::optional<TokenFields> ParseToken(std::string_view plain);

}  // namespace corvane
