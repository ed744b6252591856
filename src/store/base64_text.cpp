#include "store/base64_text.h"

#include <array>
#include <cstdint>

namespace corvane {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kOutside = 0xFF;

constexpr std::array<std::uint8_t, 256> MakeValues() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kOutside);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i)
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  return values;
}

constexpr std::array<std::uint8_t, 256> kValues = MakeValues();

}  // namespace

std::string Base64Encode(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      group <<= 8;
      if (i + j < bytes.size()) group |= static_cast<unsigned char>(bytes[i + j]);
    }
    text += kAlphabet[group >> 18];
    text += kAlphabet[(group >> 12) & 0x3F];
    text += i + 1 < bytes.size() ? kAlphabet[(group >> 6) & 0x3F] : '=';
    text += i + 2 < bytes.size() ? kAlphabet[group & 0x3F] : '=';
  }
  return text;
}

std::string Base64Decode(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 2);
  std::uint32_t bits = 0;
  int held = 0;  // bits that wait for the rest of their byte
  for (const char c : text) {
    const std::uint8_t value = kValues[static_cast<unsigned char>(c)];
    if (value == kOutside) continue;
    bits = (bits << 6) | value;
    held += 6;
    if (held < 8) continue;
    held -= 8;
    bytes += static_cast<char>(bits >> held);
    bits &= (1U << held) - 1;
  }
  return bytes;
}

}  // namespace corvane
