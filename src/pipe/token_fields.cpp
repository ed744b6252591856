#include "pipe/token_fields.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "foundation/exception.h"

namespace corvane {

namespace {

constexpr std::size_t kFields = 4;

template <typename Number>
Number ParseDecimal(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  // An unsigned number takes no sign, and nothing skips blanks.
  const auto [at, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc::result_out_of_range && at == end)
    throw Exception("stoull argument out of range");
  if (error != std::errc() || at != end) throw Exception("invalid stoull argument");
  return number;
}

}  // namespace

std::optional<TokenFields> ParseToken(std::string_view plain) {
  plain = plain.substr(0, plain.find('\0'));
  if (std::count(plain.begin(), plain.end(), ',') != kFields - 1) return std::nullopt;
  std::array<std::string_view, kFields> fields;
  for (std::string_view& field : fields) {
    field = plain.substr(0, plain.find(','));
    plain.remove_prefix(std::min(plain.size(), field.size() + 1));
  }
  TokenFields token;
  token.guid = Widen(fields[0]);
  token.pid = ParseDecimal<std::uint32_t>(fields[1]);
  token.nonce = ParseDecimal<std::uint64_t>(fields[2]);
  token.x = Widen(fields[3]);
  return token;
}

}  // namespace corvane
