#include "store/address_text.h"

#include <algorithm>

#include "foundation/format.h"

namespace corvane {

namespace {

int HexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// The low byte of a hexadecimal number; 0 for a text that does not begin as one.
std::uint8_t HexByte(WStringView text) {
  std::uint32_t value = 0;
  for (const char16_t c : text) {
    const int digit = HexDigit(c);
    if (digit < 0) break;
    value = value << 4 | static_cast<std::uint32_t>(digit);
  }
  return static_cast<std::uint8_t>(value);
}

constexpr char kHex[] = "0123456789abcdef";

}  // namespace

std::string MacTextA(const MacAddress& mac) {
  std::string text;
  text.reserve(17);
  for (std::size_t i = 0; i < mac.size(); ++i) {
    if (i > 0) text += '-';
    text += kHex[mac[i] >> 4];
    text += kHex[mac[i] & 15];
  }
  return text;
}

WString MacText(const MacAddress& mac) { return Widen(MacTextA(mac)); }

bool MacStringToBinary(char16_t separator, WStringView text, MacAddress* out) {
  std::size_t fields = 0;
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    // An empty text has no field, and a separator at the very end adds none.
    if (start == text.size()) break;
    if (fields < out->size()) (*out)[fields] = HexByte(text.substr(start, end - start));
    ++fields;
    start = end + 1;
  }
  return fields == out->size();
}

WString GuidText(const platform::GUID& guid) {
  const auto& d = guid.Data4;
  return Format(u"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1, guid.Data2,
                guid.Data3, d[0], d[1], d[2], d[3], d[4], d[5], d[6], d[7]);
}

bool GuidFromText(WStringView text, platform::GUID* out) {
  static constexpr WStringView kShape = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
  if (text.size() != kShape.size()) return false;
  std::uint8_t digits[32];
  std::size_t count = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kShape[i] != u'x') {
      if (text[i] != kShape[i]) return false;
      continue;
    }
    const int digit = HexDigit(text[i]);
    if (digit < 0) return false;
    digits[count++] = static_cast<std::uint8_t>(digit);
  }
  const auto number = [&digits](std::size_t from, std::size_t length) {
    std::uint32_t value = 0;
    for (std::size_t i = from; i < from + length; ++i) value = value << 4 | digits[i];
    return value;
  };
  out->Data1 = number(0, 8);
  out->Data2 = static_cast<std::uint16_t>(number(8, 4));
  out->Data3 = static_cast<std::uint16_t>(number(12, 4));
  for (std::size_t i = 0; i < 8; ++i)
    out->Data4[i] = static_cast<std::uint8_t>(number(16 + 2 * i, 2));
  return true;
}

std::string_view SsidView(const platform::DOT11_SSID& ssid) {
  const std::size_t length = std::min<std::size_t>(ssid.uSSIDLength, sizeof(ssid.ucSSID));
  const std::string_view bytes(reinterpret_cast<const char*>(ssid.ucSSID), length);
  return bytes.substr(0, bytes.find('\0'));
}

std::string SsidBytes(const platform::DOT11_SSID& ssid) { return std::string(SsidView(ssid)); }

WString SsidText(const platform::DOT11_SSID& ssid) { return Utf8ToWide(SsidView(ssid)); }

}  // namespace corvane
