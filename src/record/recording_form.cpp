#include "record/recording_form.h"

namespace corvane::recording {

namespace {

constexpr char kDigits[] = "0123456789abcdef";
constexpr unsigned kBitsOfDigit = 4;

std::optional<unsigned> DigitOf(char c) {
  const auto at = std::string_view(kDigits).find(c);
  if (at == std::string_view::npos) return std::nullopt;
  return static_cast<unsigned>(at);
}

}  // namespace

std::string ToHex(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += kDigits[value >> kBitsOfDigit];
    text += kDigits[value & ((1u << kBitsOfDigit) - 1)];
  }
  return text;
}

std::optional<std::string> FromHex(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const auto high = DigitOf(text[i]), low = DigitOf(text[i + 1]);
    if (!high || !low) return std::nullopt;
    bytes += static_cast<char>(*high << kBitsOfDigit | *low);
  }
  return bytes;
}

}  // namespace corvane::recording
