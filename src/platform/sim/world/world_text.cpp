#include "platform/sim/world/world_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace corvane::platform::sim {

namespace {

int DigitOf(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

// A whole number in all of the text.
bool ReadNumber(std::string_view text, int base, unsigned most, unsigned* value) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (text.empty() || error != std::errc() || end != text.data() + text.size() || number > most) {
    return false;
  }
  *value = number;
  return true;
}

bool ReadV4(std::string_view text, std::array<BYTE, 16>* bytes) {
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t dot = i < 3 ? text.find('.') : text.size();
    unsigned value = 0;
    if (dot == std::string_view::npos || !ReadNumber(text.substr(0, dot), 10, 255, &value)) {
      return false;
    }
    (*bytes)[i] = static_cast<BYTE>(value);
    text.remove_prefix(std::min(text.size(), dot + 1));
  }
  return true;
}

// The groups of one side of "::"; false for more than eight or one that is no group.
bool ReadGroups(std::string_view text, std::vector<unsigned>* groups) {
  while (!text.empty()) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    unsigned value = 0;
    if (groups->size() == 8 || !ReadNumber(text.substr(0, colon), 16, 0xFFFF, &value)) return false;
    groups->push_back(value);
    if (colon + 1 == text.size()) return false;  // ends in a single colon
    text.remove_prefix(std::min(text.size(), colon + 1));
  }
  return true;
}

// RFC 4291, section 2.2, without the form that ends in dots.
bool ReadV6(std::string_view text, std::array<BYTE, 16>* bytes) {
  const std::size_t gap = text.find("::");
  std::vector<unsigned> head, tail;
  if (!ReadGroups(text.substr(0, gap), &head)) return false;
  if (gap != std::string_view::npos && !ReadGroups(text.substr(gap + 2), &tail)) return false;
  const std::size_t count = head.size() + tail.size();
  if (gap == std::string_view::npos ? count != 8 : count > 7) return false;
  bytes->fill(0);
  head.resize(8 - tail.size());
  head.insert(head.end(), tail.begin(), tail.end());
  for (std::size_t i = 0; i < 8; ++i) {
    (*bytes)[2 * i] = static_cast<BYTE>(head[i] >> 8);
    (*bytes)[2 * i + 1] = static_cast<BYTE>(head[i]);
  }
  return true;
}

// Reads one code point off the front of the text; U+FFFD for what is none.
char32_t TakeCodePoint(std::string_view* text) {
  constexpr char32_t kBad = 0xFFFD;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>((*text)[i]); };
  const unsigned char first = byte(0);
  const std::size_t length = first < 0x80       ? 1
                             : first >> 5 == 6  ? 2
                             : first >> 4 == 14 ? 3
                             : first >> 3 == 30 ? 4
                                                : 0;
  if (length == 0 || length > text->size()) {
    text->remove_prefix(1);
    return kBad;
  }
  constexpr unsigned char kMasks[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  char32_t point = first & kMasks[length];
  for (std::size_t i = 1; i < length; ++i) {
    if (byte(i) >> 6 != 2) {
      text->remove_prefix(i);
      return kBad;
    }
    point = point << 6 | (byte(i) & 0x3F);
  }
  text->remove_prefix(length);
  const bool good =
      point >= kLeast[length] && point <= 0x10FFFF && !(point >= 0xD800 && point < 0xE000);
  return good ? point : kBad;
}

void AppendHex(std::string* out, std::uint64_t value, int digits, const char* alphabet) {
  for (int i = digits - 1; i >= 0; --i) *out += alphabet[value >> (4 * i) & 15];
}

}  // namespace

std::u16string FromUtf8(std::string_view text) {
  std::u16string out;
  while (!text.empty()) {
    const char32_t point = TakeCodePoint(&text);
    if (point < 0x10000) {
      out += static_cast<char16_t>(point);
    } else {
      out += static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    }
  }
  return out;
}

bool ReadDuration(std::string_view text, std::uint64_t* ms) {
  struct Unit {
    std::string_view name;
    double ms;
  };
  constexpr Unit kUnits[] = {{"ms", 1.0}, {"s", 1'000.0}, {"m", 60'000.0}, {"h", 3'600'000.0}};
  constexpr double kMost = 1e12;  // some thirty years
  if (text.empty()) return false;
  double total = 0.0;
  while (!text.empty()) {
    double number = 0.0;
    const auto [end, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (error != std::errc() || text.front() == '-') return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    const std::string_view name = text.substr(0, text.find_first_not_of("mhs"));
    const auto* unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                    [&](const Unit& candidate) { return candidate.name == name; });
    if (unit == std::end(kUnits)) return false;
    text.remove_prefix(name.size());
    total += number * unit->ms;
    if (!(total <= kMost)) return false;
  }
  *ms = static_cast<std::uint64_t>(std::llround(total));
  return true;
}

bool ReadMac(std::string_view text, Mac* mac) {
  constexpr std::size_t kLength = 17;
  if (text.size() != kLength) return false;
  Mac read{};
  for (std::size_t i = 0; i < read.size(); ++i) {
    const int high = DigitOf(text[3 * i]), low = DigitOf(text[3 * i + 1]);
    if (high < 0 || low < 0) return false;
    if (i < 5 && text[3 * i + 2] != '-' && text[3 * i + 2] != ':') return false;
    read[i] = static_cast<BYTE>(high << 4 | low);
  }
  *mac = read;
  return true;
}

bool ReadGuid(std::string_view text, GUID* guid) {
  constexpr std::string_view kForm = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
  if (text.size() != kForm.size()) return false;
  std::vector<std::uint8_t> digits;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    const int digit = DigitOf(text[i]);
    if (kForm[i] == 'x' ? digit < 0 : text[i] != kForm[i]) return false;
    if (kForm[i] == 'x') digits.push_back(static_cast<std::uint8_t>(digit));
  }
  const auto number = [&](std::size_t from, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = from; i < from + count; ++i) value = value << 4 | digits[i];
    return value;
  };
  guid->Data1 = number(0, 8);
  guid->Data2 = static_cast<std::uint16_t>(number(8, 4));
  guid->Data3 = static_cast<std::uint16_t>(number(12, 4));
  for (std::size_t i = 0; i < 8; ++i)
    guid->Data4[i] = static_cast<std::uint8_t>(number(16 + 2 * i, 2));
  return true;
}

bool ReadHex(std::string_view text, std::string* bytes) {
  if (text.size() % 2 != 0) return false;
  std::string read;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = DigitOf(text[i]), low = DigitOf(text[i + 1]);
    if (high < 0 || low < 0) return false;
    read += static_cast<char>(high << 4 | low);
  }
  *bytes = std::move(read);
  return true;
}

bool ReadIpAddress(std::string_view text, IpAddress* address) {
  IpAddress read;
  const std::size_t slash = text.find('/');
  const std::string_view host = text.substr(0, slash);
  const bool v6 = host.find(':') != std::string_view::npos;
  read.family = v6 ? IpAddress::kV6 : IpAddress::kV4;
  unsigned prefix = v6 ? 128 : 32;
  if (slash != std::string_view::npos && !ReadNumber(text.substr(slash + 1), 10, prefix, &prefix))
    return false;
  read.prefix = static_cast<int>(prefix);
  if (!(v6 ? ReadV6(host, &read.bytes) : ReadV4(host, &read.bytes))) return false;
  *address = read;
  return true;
}

std::string MacText(const Mac& mac) {
  std::string out;
  for (const BYTE byte : mac) {
    if (!out.empty()) out += '-';
    AppendHex(&out, byte, 2, "0123456789abcdef");
  }
  return out;
}

std::u16string GuidText(const GUID& guid) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string out = "{";
  AppendHex(&out, guid.Data1, 8, kDigits);
  out += '-';
  AppendHex(&out, guid.Data2, 4, kDigits);
  out += '-';
  AppendHex(&out, guid.Data3, 4, kDigits);
  for (std::size_t i = 0; i < 8; ++i) {
    if (i == 0 || i == 2) out += '-';
    AppendHex(&out, guid.Data4[i], 2, kDigits);
  }
  out += '}';
  return std::u16string(out.begin(), out.end());
}

}  // namespace corvane::platform::sim
