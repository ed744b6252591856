#include "platform/base64.h"

#include <cstdint>

namespace corvane::platform {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view kDashes = "-----";

// What stands behind the first header line and before the line of the end.
std::optional<std::string_view> Body(std::string_view text) {
  const std::size_t begin = text.find("-----BEGIN ");
  if (begin == text.npos) return std::nullopt;
  const std::size_t body = text.find(kDashes, begin + kDashes.size());
  if (body == text.npos) return std::nullopt;
  const std::size_t end = text.find("-----END ", body + kDashes.size());
  if (end == text.npos) return std::nullopt;
  return text.substr(body + kDashes.size(), end - body - kDashes.size());
}

}  // namespace

std::string ToBase64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) {
      group = group << 8 | (at + i < bytes.size() ? static_cast<std::uint8_t>(bytes[at + i]) : 0U);
    }
    for (std::size_t i = 0; i < 4; ++i) {
      const bool padding = at + i > bytes.size();
      text += padding ? '=' : kAlphabet[group >> (18 - 6 * i) & 63];
    }
  }
  return text;
}

std::optional<std::string> FromBase64WithHeaders(std::string_view text) {
  const auto body = Body(text);
  if (!body) return std::nullopt;
  std::string bytes;
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : *body) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    if (c == '=') break;
    const std::size_t value = kAlphabet.find(c);
    if (value == kAlphabet.npos) return std::nullopt;
    bits = bits << 6 | static_cast<std::uint32_t>(value);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

}  // namespace corvane::platform
