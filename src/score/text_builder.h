#pragma once
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

// Appends texts and numbers to one string; for logs that are built in every round.
class TextBuilder {
 public:
  explicit TextBuilder(std::string* out) : m_Out(*out) {}

  TextBuilder& operator<<(std::string_view text) {
    m_Out.append(text);
    return *this;
  }
  TextBuilder& operator<<(std::int64_t number) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    m_Out.append(digits, end);
    return *this;
  }

 private:
  std::string& m_Out;
};

}  // namespace corvane
