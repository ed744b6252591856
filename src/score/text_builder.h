#pragma once
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

// Appends texts and numbers to one string, or to none where nobody reads it.
class TextBuilder {
 public:
  explicit TextBuilder(std::string* out) : m_pOut(out) {}

  TextBuilder& operator<<(std::string_view text) {
    if (m_pOut) m_pOut->append(text);
    return *this;
  }
  TextBuilder& operator<<(std::int64_t number) {
    if (!m_pOut) return *this;
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof(digits), number).ptr;
    m_pOut->append(digits, end);
    return *this;
  }

 private:
  std::string* const m_pOut;  // may be null
};

}  // namespace corvane
