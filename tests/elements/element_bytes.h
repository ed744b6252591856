#pragma once
// Element bytes for tests of the decoder, field by field, and what it makes of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "elements/element_decoder.h"

namespace corvane::test {

using ByteList = std::vector<std::uint8_t>;

inline ByteList Join(std::initializer_list<ByteList> parts) {
  ByteList all;
  for (const ByteList& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

inline ByteList Ie(std::uint8_t id, const ByteList& value) {
  return Join({{id, static_cast<std::uint8_t>(value.size())}, value});
}

inline ByteList LittleEndian(std::uint16_t value) {
  return {static_cast<std::uint8_t>(value & 0xFF), static_cast<std::uint8_t>(value >> 8)};
}

// Capabilities byte 0 (0x02: 40 MHz, 0x20 and 0x40: short GI) and the first bytes of the MCS
// bitmask.
inline ByteList HtCapabilities(std::uint8_t info, const ByteList& mcs, std::size_t length = 26) {
  ByteList value(26);
  value[0] = info;
  std::copy(mcs.begin(), mcs.end(), value.begin() + 3);
  value.resize(length);
  return Ie(45, value);
}

// `offset`: 1 for a secondary channel above, 3 below, 0 for none.
inline ByteList HtOperation(std::uint8_t primary, std::uint8_t offset, std::size_t length = 22) {
  ByteList value(22);
  value[0] = primary;
  value[1] = offset;
  value.resize(length);
  return Ie(61, value);
}

// Capabilities byte 0 (0x20 and 0x40: short GI) and the maps.
inline ByteList VhtCapabilities(std::uint8_t info, std::uint16_t rx, std::uint16_t tx) {
  return Ie(191, Join({{info, 0, 0, 0}, LittleEndian(rx), {0, 0}, LittleEndian(tx), {0, 0}}));
}

// Width code 0 to 3 for 20 (or 40), 80, 160, 80+80 MHz.
inline ByteList VhtOperation(std::uint8_t code, std::uint8_t seg0, std::uint8_t seg1 = 0) {
  return Ie(192, {code, seg0, seg1, 0, 0});
}

// Of a whole length, extension id included; the maps in their order, as far as they fit.
inline ByteList HeCapabilities(std::size_t length, const std::vector<std::uint16_t>& maps) {
  ByteList value(18, 0);
  value[0] = 35;
  for (const std::uint16_t map : maps) value = Join({value, LittleEndian(map)});
  value.resize(length);
  return Ie(255, value);
}

struct Decoded : ElementFields {
  std::string notes;  // of the topics that were asked for
};

inline std::unique_ptr<Decoded> Decode(const ByteList& bytes, std::uint32_t channel = 0,
                                       std::uint32_t width = 20, double ghz = 5.18,
                                       std::uint32_t topics = 0) {
  auto decoded = std::make_unique<Decoded>();
  decoded->m_CenterChannel = channel;
  decoded->m_ChannelWidth = width;
  decoded->m_CenterFreqGHz = ghz;
  ElementNotes notes(topics);
  DecodeElements(bytes, *decoded, notes);
  for (const ElementNote& note : notes) decoded->notes += Narrow(note.text);
  return decoded;
}

// Every field by name.
inline std::vector<std::string> Printed(const ElementFields& fields) {
  std::vector<std::string> lines;
  ForEachField(fields, [&lines](const char* name, const auto& value) {
    lines.push_back(std::string(name) + " " + testing::PrintToString(value));
  });
  return lines;
}

}  // namespace corvane::test
