#include "wlan/connection_name.h"

#include "foundation/guarded.h"
#include "store/registry.h"

namespace corvane {

namespace {

constexpr char16_t kNetworkKey[] =
    u"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}";
constexpr char16_t kNameValue[] = u"Name";
constexpr std::size_t kLongestName = 1024;  // characters, 2048 bytes

}  // namespace

WString ConnectionKeyPath(WStringView guidText) {
  return WString(kNetworkKey) + u"\\" + WString(guidText) + u"\\Connection";
}

WString ReadConnectionName(WStringView keyPath) {
  return Guarded("CWlanClient", "ReadConnectionName", WString(), [&] {
    const auto key = CRegistry::CreateObject(WString(keyPath));
    WString name;
    if (!key->GetRegistryStringValue(kNameValue, &name) || name.size() > kLongestName)
      return WString();
    return name;
  });
}

}  // namespace corvane
