#include "monitors/ip_address.h"

#include <cstring>

#include "foundation/format.h"

namespace corvane {

WString Ip4Text(Ip4Address address) {
  std::uint8_t b[4];
  std::memcpy(b, &address, sizeof(b));
  return Format(u"%u.%u.%u.%u", b[0], b[1], b[2], b[3]);
}

WString Ip6Text(const Ip6Address& address) {
  constexpr int kGroups = 8;
  const auto group = [&address](int i) {
    const auto at = static_cast<std::size_t>(2 * i);
    return static_cast<std::uint32_t>(address[at] << 8 | address[at + 1]);
  };
  // The first of the longest runs of at least two zero groups is left out (RFC 5952, 4.2).
  int gap = kGroups, gapLength = 1;
  for (int i = 0; i < kGroups; ++i) {
    int end = i;
    while (end < kGroups && group(end) == 0) ++end;
    if (end - i > gapLength) gap = i, gapLength = end - i;
    if (end > i) i = end - 1;
  }
  WString text;
  for (int i = 0; i < kGroups; ++i) {
    if (i == gap) {
      text += u"::";
      i += gapLength - 1;
      continue;
    }
    if (!text.empty() && text.back() != u':') text += u':';
    text += Format(u"%x", group(i));
  }
  return text;
}

MacAddress MacFromValue(MacValue value) {
  MacAddress mac;
  for (std::size_t i = 0; i < mac.size(); ++i) mac[i] = static_cast<std::uint8_t>(value >> (8 * i));
  return mac;
}

MacList MacsFromValues(const std::vector<MacValue>& values) {
  MacList macs;
  for (const MacValue value : values) macs.push_back(MacFromValue(value));
  return macs;
}

}  // namespace corvane
