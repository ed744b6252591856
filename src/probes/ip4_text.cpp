#include "probes/ip4_text.h"

#include <charconv>
#include <cstring>

namespace corvane {

std::optional<Ip4Address> ReadIp4(std::string_view text) {
  std::uint8_t bytes[4] = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int i = 0; i < 4; ++i) {
    if (i > 0 && (at == end || *at++ != '.')) return std::nullopt;
    const auto [next, error] = std::from_chars(at, end, bytes[i]);
    if (error != std::errc() || next == at) return std::nullopt;
    at = next;
  }
  if (at != end) return std::nullopt;
  Ip4Address address;
  std::memcpy(&address, bytes, sizeof address);
  return address;
}

}  // namespace corvane
