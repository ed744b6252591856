#pragma once
// Addresses and identities as text.

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/text.h"
#include "platform/types.h"
#include "platform/wlan_types.h"

namespace corvane {

using MacAddress = std::array<std::uint8_t, 6>;

using MacList = std::vector<MacAddress>;

inline MacAddress ToMac(const std::uint8_t* bytes) {
  MacAddress mac;
  for (std::size_t i = 0; i < mac.size(); ++i) mac[i] = bytes[i];
  return mac;
}
inline bool IsZero(const MacAddress& mac) { return mac == MacAddress{}; }

// "%02x-%02x-%02x-%02x-%02x-%02x", lower case.
WString MacText(const MacAddress& mac);
std::string MacTextA(const MacAddress& mac);
// Splits at the separator; a field that is no hexadecimal number gives 0. True exactly when there
// are six fields.
[[nodiscard]] bool MacStringToBinary(char16_t separator, WStringView text, MacAddress* out);

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper case (StringFromCLSID), and back
// (CLSIDFromString).
WString GuidText(const platform::GUID& guid);
[[nodiscard]] bool GuidFromText(WStringView text, platform::GUID* out);

// The bytes of an SSID record up to the first NUL, at most 32, and their wide form (UTF-8).
std::string_view SsidView(const platform::DOT11_SSID& ssid);
std::string SsidBytes(const platform::DOT11_SSID& ssid);
WString SsidText(const platform::DOT11_SSID& ssid);

}  // namespace corvane
