#include "engine/driver_version.h"

#include "engine/registry_key.h"
#include "foundation/format.h"

namespace corvane {

namespace {

constexpr char16_t kNetworkClass[] =
    u"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\";
// Values of a driver's key.
constexpr char16_t kProvider[] = u"Provider", kNetType[] = u"NetType",
                   kVersion[] = u"DriverVersion";
constexpr std::uint32_t kMostSubkeys = 10'000;  // their names have four digits

}  // namespace

std::uint32_t ReadWlanDriverVersion() {
  for (std::uint32_t i = 0; i < kMostSubkeys; ++i) {
    const CLBRegistryKey key(kNetworkClass + Format(u"%04u", i));
    if (!key) break;
    if (key.Text(kProvider).starts_with(u"Intel") && key.Text(kNetType).starts_with(u"WLAN")) {
      return PackedVersion(key.Text(kVersion));
    }
  }
  return 0;
}

std::uint32_t PackedVersion(WStringView text) {
  constexpr int kParts = 4;
  constexpr std::uint32_t kMost = 255;
  std::uint32_t packed = 0;
  for (int part = 0; part < kParts; ++part) {
    std::uint32_t number = 0;
    std::size_t digits = 0;
    while (digits < text.size() && text[digits] >= u'0' && text[digits] <= u'9') {
      number = number * 10 + static_cast<std::uint32_t>(text[digits++] - u'0');
      if (number > kMost) return 0;
    }
    if (digits == 0) return 0;
    text.remove_prefix(digits);
    packed = packed << 8 | number;
    if (part + 1 == kParts) break;
    if (text.empty() || text.front() != u'.') return 0;
    text.remove_prefix(1);
  }
  return text.empty() ? packed : 0;
}

}  // namespace corvane
