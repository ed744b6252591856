#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/sim/world/world.h"

namespace corvane::platform {
class RegistryApi;
}

namespace corvane::platform::sim {

// One counter of the object "Bluetooth Radio".
struct BluetoothFigure {
  BluetoothLink link = BluetoothLink::kClassic;
  bool written = false;  // else read
};

// By the counter's name in lower case; nothing for another name.
std::optional<BluetoothFigure> FindBluetoothFigure(std::u16string_view name);
// What the radio of this name (in lower case) has moved since the machine came up, in bytes;
// nothing when none of this name is on.
std::optional<double> BluetoothBytes(const World& world, std::u16string_view name,
                                     const BluetoothFigure& figure, std::uint64_t nowMs);

// Makes the registry's class key of Bluetooth devices agree with the world: a subkey for each
// radio, one that is off as a mere device. A machine that never had one has no such key.
void WriteBluetoothKeys(RegistryApi& registry, const World& world);

}  // namespace corvane::platform::sim
