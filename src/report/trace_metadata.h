#pragma once
// Metadata of self-describing events (TraceLogging), made at compile time: a 16-bit size that
// counts itself, one tag byte 0, the event's name, then each field's name and type byte.

#include <array>
#include <cstddef>
#include <cstdint>

#include "foundation/text.h"
#include "platform/trace_logging.h"

namespace corvane {

using platform::TlgIn;

// Writes forward into a blob of known size. Constexpr only: clang 14 refuses a parameter of one
// consteval function as the argument of another.
template <std::size_t Size>
class TraceBlobWriter {
 public:
  constexpr void Byte(unsigned value) { m_Blob[m_At++] = static_cast<std::uint8_t>(value); }
  constexpr void Size16() { Byte(Size & 0xFF), Byte(Size >> 8); }
  template <std::size_t N>
  constexpr void Name(const std::array<char, N>& name) {
    for (const char c : name) Byte(static_cast<unsigned char>(c));
  }
  constexpr std::array<std::uint8_t, Size> Finish() const {
    if (m_At != Size) throw "the size of the metadata is wrong";  // stops the compilation
    return m_Blob;
  }

 private:
  std::array<std::uint8_t, Size> m_Blob{};
  std::size_t m_At = 0;
};

// A field of an event: its type, and its name with the NUL.
template <TlgIn Type, std::size_t N>
struct TraceFieldOf {
  static constexpr TlgIn kType = Type;
  static constexpr std::size_t kSize = N + 1;
  std::array<char, N> name;
};
template <std::size_t N>
consteval auto TextField(const char (&name)[N]) {
  return TraceFieldOf<TlgIn::kUnicodeString, N>{std::to_array(name)};
}
template <std::size_t N>
consteval auto Int32Field(const char (&name)[N]) {
  return TraceFieldOf<TlgIn::kInt32, N>{std::to_array(name)};
}
template <std::size_t N>
consteval auto UInt32Field(const char (&name)[N]) {
  return TraceFieldOf<TlgIn::kUInt32, N>{std::to_array(name)};
}

template <std::size_t N, class... Fields>
constexpr auto MakeEventMetadata(const std::array<char, N>& name, const Fields&... fields) {
  TraceBlobWriter<2 + 1 + N + (Fields::kSize + ... + 0)> blob;
  blob.Size16();
  blob.Byte(0);
  blob.Name(name);
  ((blob.Name(fields.name), blob.Byte(static_cast<unsigned>(Fields::kType))), ...);
  return blob.Finish();
}

// The provider's traits: the size and the provider's name.
template <std::size_t N>
consteval auto MakeProviderMetadata(const char (&name)[N]) {
  TraceBlobWriter<2 + N> blob;
  blob.Size16();
  blob.Name(std::to_array(name));
  return blob.Finish();
}

// The field type of a value.
template <class Value>
struct TraceTypeOf;
template <>
struct TraceTypeOf<std::int32_t> {
  static constexpr TlgIn kType = TlgIn::kInt32;
};
template <>
struct TraceTypeOf<std::uint32_t> {
  static constexpr TlgIn kType = TlgIn::kUInt32;
};
template <>
struct TraceTypeOf<WString> {
  static constexpr TlgIn kType = TlgIn::kUnicodeString;
};

// The value as event data; it must outlive the write.
template <class Number>
platform::EVENT_DATA_DESCRIPTOR TraceDataOf(const Number& number) {
  return {reinterpret_cast<std::uintptr_t>(&number), sizeof(Number),
          platform::EVENT_DATA_DESCRIPTOR_TYPE_NONE, 0, 0};
}
inline platform::EVENT_DATA_DESCRIPTOR TraceDataOf(const WString& text) {
  return {reinterpret_cast<std::uintptr_t>(text.c_str()),
          static_cast<std::uint32_t>((text.size() + 1) * sizeof(char16_t)),
          platform::EVENT_DATA_DESCRIPTOR_TYPE_NONE, 0, 0};
}

}  // namespace corvane
