#include "platform/sim/devices/sim_bluetooth.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/registry_api.h"
#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::sim {

namespace {

constexpr char16_t kClassKey[] =
    u"SYSTEM\\CurrentControlSet\\Control\\Class\\{e0cbf06c-cd8b-4647-bb8a-263b43f0f974}";
constexpr char16_t kNoAdapter[] = u"Bluetooth Device";  // a description that is no adapter's

std::u16string SubkeyName(std::size_t index) {
  std::u16string name(4, u'0');
  for (auto digit = name.rbegin(); digit != name.rend(); ++digit, index /= 10)
    *digit = static_cast<char16_t>(u'0' + index % 10);
  return name;
}

void WriteDescription(RegistryApi& registry, HKEY parent, const std::u16string& subkey,
                      const std::u16string& text) {
  HKEY key = nullptr;
  if (registry.RegCreateKeyExW(parent, subkey.c_str(), KEY_ALL_ACCESS, &key) != 0) return;
  registry.RegSetValueExW(key, u"DriverDesc", REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(char16_t)));
  registry.RegCloseKey(key);
}

}  // namespace

std::optional<BluetoothFigure> FindBluetoothFigure(std::u16string_view name) {
  static constexpr std::pair<std::u16string_view, BluetoothFigure> kFigures[] = {
      {u"classic acl bytes read/sec", {BluetoothLink::kClassic, false}},
      {u"classic acl bytes written/sec", {BluetoothLink::kClassic, true}},
      {u"le acl bytes read/sec", {BluetoothLink::kLowEnergy, false}},
      {u"le acl bytes written/sec", {BluetoothLink::kLowEnergy, true}},
      {u"sco bytes read/sec", {BluetoothLink::kSco, false}},
      {u"sco bytes written/sec", {BluetoothLink::kSco, true}}};
  for (const auto& [known, figure] : kFigures) {
    if (name == known) return figure;
  }
  return std::nullopt;
}

std::optional<double> BluetoothBytes(const World& world, std::u16string_view name,
                                     const BluetoothFigure& figure, std::uint64_t nowMs) {
  constexpr double kBytesPerKbitMs = 0.125;  // 1 kbit/s for 1 ms
  for (const BluetoothRadio& radio : world.bluetooth) {
    if (!radio.on || FoldCase(radio.name) != name) continue;
    double bytes = 0.0;
    for (const BluetoothTraffic& traffic : radio.traffic) {
      const std::uint64_t to = std::min(traffic.span.toMs, nowMs);
      if (traffic.link != figure.link || to <= traffic.span.fromMs) continue;
      bytes += (figure.written ? traffic.writtenKbps : traffic.readKbps) * kBytesPerKbitMs *
               static_cast<double>(to - traffic.span.fromMs);
    }
    return bytes;
  }
  return std::nullopt;
}

// A registry that outlives the run may hold the radios of an earlier world.
void WriteBluetoothKeys(RegistryApi& registry, const World& world) {
  HKEY key = nullptr;
  const LSTATUS opened =
      world.bluetooth.empty()
          ? registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, kClassKey, 0, KEY_ALL_ACCESS, &key)
          : registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, kClassKey, KEY_ALL_ACCESS, &key);
  if (opened != 0) return;
  for (std::size_t i = 0; i < world.bluetooth.size(); ++i) {
    const BluetoothRadio& radio = world.bluetooth[i];
    WriteDescription(registry, key, SubkeyName(i), radio.on ? radio.name : kNoAdapter);
  }
  HKEY stale = nullptr;
  for (std::size_t i = world.bluetooth.size();
       registry.RegOpenKeyExW(key, SubkeyName(i).c_str(), 0, KEY_READ, &stale) == 0; ++i) {
    registry.RegCloseKey(stale);
    WriteDescription(registry, key, SubkeyName(i), kNoAdapter);
  }
  registry.RegCloseKey(key);
}

}  // namespace corvane::platform::sim
