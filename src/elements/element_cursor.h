#pragma once
// Reading of element bytes. Bounds are proved here and nowhere else: what these types hand out is
// inside the bytes that they were given.

#include <cstdint>
#include <span>

namespace corvane {

using Bytes = std::span<const std::uint8_t>;

struct Element {
  std::uint8_t id = 0;
  Bytes value;
};

// Walks elements (IEEE Std 802.11-2020 9.4.2.1). An element that starts in the last two bytes is
// not looked at; one whose length runs past the end is dropped and ends the walk.
class ElementCursor {
 public:
  explicit ElementCursor(Bytes bytes) : m_Rest(bytes) {}

  bool Next(Element* element) {
    if (m_Rest.size() <= 2) return false;
    const std::size_t length = m_Rest[1];
    if (m_Rest.size() < 2 + length) return false;
    *element = {m_Rest[0], m_Rest.subspan(2, length)};
    m_Rest = m_Rest.subspan(2 + length);
    return true;
  }

 private:
  Bytes m_Rest;
};

// Takes numbers off the front of a value; a number that is not there whole leaves the bytes as they
// are.
class ValueReader {
 public:
  explicit ValueReader(Bytes bytes) : m_Rest(bytes) {}

  std::size_t Rest() const { return m_Rest.size(); }

  bool Skip(std::size_t count) {
    if (m_Rest.size() < count) return false;
    m_Rest = m_Rest.subspan(count);
    return true;
  }
  bool TakeU16(std::uint16_t* out) {  // little endian
    if (m_Rest.size() < 2) return false;
    *out = static_cast<std::uint16_t>(m_Rest[0] | m_Rest[1] << 8);
    return Skip(2);
  }
  bool TakeSuite(std::uint32_t* out) {  // four bytes in network order
    if (m_Rest.size() < 4) return false;
    *out = std::uint32_t{m_Rest[0]} << 24 | std::uint32_t{m_Rest[1]} << 16 |
           std::uint32_t{m_Rest[2]} << 8 | m_Rest[3];
    return Skip(4);
  }

 private:
  Bytes m_Rest;
};

// The 16-bit little-endian field at `offset`, which lies inside.
inline std::uint16_t FieldU16(Bytes bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}
inline bool Bit(std::uint8_t byte, unsigned bit) { return (byte >> bit & 1) != 0; }

}  // namespace corvane
