#pragma once
// printf-style formatting with the meaning of the Microsoft wide family: in a wide format %s takes
// wide text and %S or %hs narrow text, %I64u and %llu 64-bit numbers, %lu 32-bit ones, and %p
// prints 16 digits in upper case. Each value comes with its own type and width, so the size in the
// format counts for nothing: a mismatch prints the value by its type instead of crashing, a missing
// value prints "(missing)", and no value is truncated. What is no conversion stands in the result
// as it is.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "foundation/text.h"

namespace corvane {

class FormatArg {
 public:
  enum class Kind : std::uint8_t {
    kSigned,
    kUnsigned,
    kDouble,
    kLongDouble,
    kPointer,
    kNarrow,
    kWide
  };

  template <typename T>
  requires(std::is_integral_v<T> || std::is_enum_v<T>)
      FormatArg(T value)  // NOLINT: converts on purpose
      : m_Bits(sizeof(T) * 8) {
    if constexpr (std::is_enum_v<T>) {
      *this = FormatArg(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_signed_v<T>) {
      m_Kind = Kind::kSigned;
      m_Value.s = value;
    } else {
      m_Kind = Kind::kUnsigned;
      m_Value.u = value;
    }
  }
  FormatArg(double value) : m_Kind(Kind::kDouble) { m_Value.d = value; }
  FormatArg(long double value) : m_Kind(Kind::kLongDouble) { m_Value.ld = value; }
  // Text: a null pointer reads "(null)", an array ends at its first NUL or its last element. Any
  // other pointer prints as an address.
  template <typename T>
  requires std::is_pointer_v<T> FormatArg(const T& pointer) {  // NOLINT
    if constexpr (std::is_convertible_v<T, const char*>) {
      *this = FormatArg(std::string_view(pointer ? pointer : "(null)"));
    } else if constexpr (std::is_convertible_v<T, const char16_t*>) {
      *this = FormatArg(WStringView(pointer ? pointer : u"(null)"));
    } else {
      *this = FormatArg(static_cast<const void*>(pointer));
    }
  }
  template <std::size_t N>
  FormatArg(const char (&text)[N]) : FormatArg(UpToNul(std::string_view(text, N))) {}  // NOLINT
  template <std::size_t N>
  FormatArg(const char16_t (&text)[N]) : FormatArg(UpToNul(WStringView(text, N))) {}  // NOLINT
  FormatArg(const std::string& text) : FormatArg(std::string_view(text)) {}
  FormatArg(std::string_view text) : m_Kind(Kind::kNarrow) {
    m_Value.text = {text.data(), text.size()};
  }
  FormatArg(const WString& text) : FormatArg(WStringView(text)) {}
  FormatArg(WStringView text) : m_Kind(Kind::kWide) { m_Value.text = {text.data(), text.size()}; }
  FormatArg(const void* pointer) : m_Kind(Kind::kPointer) { m_Value.p = pointer; }
  template <typename T>
  FormatArg(const std::atomic<T>& value) : FormatArg(value.load()) {}  // NOLINT

  Kind GetKind() const { return m_Kind; }
  int GetBits() const { return m_Bits; }  // width of an integral argument
  std::int64_t Signed() const { return m_Value.s; }
  std::uint64_t Unsigned() const { return m_Value.u; }
  double Double() const { return m_Value.d; }
  long double LongDouble() const { return m_Value.ld; }
  const void* Pointer() const { return m_Value.p; }
  std::string_view NarrowText() const {
    return {static_cast<const char*>(m_Value.text.data), m_Value.text.size};
  }
  WStringView WideText() const {
    return {static_cast<const char16_t*>(m_Value.text.data), m_Value.text.size};
  }

 private:
  template <typename View>
  static View UpToNul(View text) {
    return text.substr(0, text.find(typename View::value_type{}));
  }

  struct TextRef {
    const void* data;
    std::size_t size;
  };
  union Value {
    std::int64_t s;
    std::uint64_t u;
    double d;
    long double ld;
    const void* p;
    TextRef text;
  } m_Value = {};
  Kind m_Kind = Kind::kSigned;
  int m_Bits = 0;
};

WString FormatV(WStringView format, const FormatArg* args, std::size_t count);
std::string FormatV(std::string_view format, const FormatArg* args, std::size_t count);
// The pieces one behind the other, each as %s prints it.
std::string JoinPieces(const FormatArg* pieces, std::size_t count);

// Wide and narrow form. In a narrow format %s takes narrow text and %S wide text.
template <typename... Args>
WString Format(WStringView format, const Args&... args) {
  const FormatArg list[sizeof...(Args) + 1] = {FormatArg(args)..., FormatArg(0)};
  return FormatV(format, list, sizeof...(Args));
}
template <typename... Args>
std::string FormatA(std::string_view format, const Args&... args) {
  const FormatArg list[sizeof...(Args) + 1] = {FormatArg(args)..., FormatArg(0)};
  return FormatV(format, list, sizeof...(Args));
}

}  // namespace corvane
