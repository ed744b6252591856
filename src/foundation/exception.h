#pragma once
#include <cstdint>
#include <exception>
#include <string_view>

#include "foundation/format.h"

namespace corvane {

// The failure type of the program: a message of at most 255 narrow characters and a code, 0 unless
// given.
class Exception : public std::exception {
 public:
  explicit Exception(std::string_view text) { SetMessage(text); }
  // `value` is the format's value and the code.
  template <typename V>
  Exception(std::string_view format, const V& value) : m_Code(static_cast<std::uint32_t>(value)) {
    SetMessage(FormatA(format, value));
  }
  // The second value is the code.
  template <typename A, typename V>
  Exception(std::string_view format, const A& first, const V& value)
      : m_Code(static_cast<std::uint32_t>(value)) {
    SetMessage(FormatA(format, first, value));
  }

  const char* what() const noexcept override { return m_Message; }
  std::uint32_t GetCode() const { return m_Code; }

 private:
  void SetMessage(std::string_view text);

  char m_Message[256] = {};
  std::uint32_t m_Code = 0;
};

}  // namespace corvane
