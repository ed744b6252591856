#include "engine/engine_settings.h"

#include "engine/registry_key.h"
#include "engine/value_names.h"

namespace corvane {

namespace {

constexpr char16_t kSettingsKey[] =
    u"SYSTEM\\CurrentControlSet\\Services\\Vantor Network Service\\SLibCFG";
constexpr char16_t kSystemKey[] = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\";
constexpr char16_t kVersionValue[] = u"CurrentVersion";
constexpr std::uint32_t kMajor = 100;
constexpr std::uint32_t kMost = 99;

// The decimal number at *at, up to kMost; moves past it.
std::uint32_t TakeNumber(const char16_t** at) {
  std::uint32_t number = 0;
  for (; **at >= u'0' && **at <= u'9'; ++*at) {
    number = number * 10 + static_cast<std::uint32_t>(**at - u'0');
    if (number > kMost) number = kMost;
  }
  return number;
}

}  // namespace

LBSettings ReadLBSettings() {
  LBSettings settings;
  const CLBRegistryKey key(kSettingsKey);
  settings.enable11ad = key.Number(value::kEnable11AD).value_or(settings.enable11ad);
  settings.enableOpenVpn = key.Number(value::kEnableOpenVpn).value_or(settings.enableOpenVpn);
  settings.supportOemDevice =
      key.Number(value::kSupportOemDevice).value_or(settings.supportOemDevice);
  settings.discoveryIntervalMs =
      key.Number(value::kDeviceDiscoveryTO).value_or(settings.discoveryIntervalMs);
  settings.traceEnabled = key.Number(value::kSvcLib_TraceEnabled).value_or(settings.traceEnabled);
  return settings;
}

std::uint32_t ReadSystemVersion() {
  const CLBRegistryKey key(kSystemKey);
  return VersionNumber(key.Text(kVersionValue).c_str());
}

std::uint32_t VersionNumber(const char16_t* text) {
  const std::uint32_t major = TakeNumber(&text);
  if (*text != u'.') return major * kMajor;
  ++text;
  return major * kMajor + TakeNumber(&text);
}

}  // namespace corvane
