// Bluetooth radios of a world.

#include <algorithm>

#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

struct LinkWord {
  const char* name;
  BluetoothLink value;
};
constexpr LinkWord kLinks[] = {{"classic", BluetoothLink::kClassic},
                               {"le", BluetoothLink::kLowEnergy},
                               {"sco", BluetoothLink::kSco}};

BluetoothTraffic ReadTrafficOf(const JsonNode& node) {
  JsonFields fields(node);
  BluetoothTraffic out;
  fields.Duration("from", &out.span.fromMs);
  fields.Duration("to", &out.span.toMs);
  if (out.span.toMs <= out.span.fromMs) node.Fail("ends before it begins");
  TakeBluetoothRates(fields, &out);
  fields.Finish();
  return out;
}

}  // namespace

BluetoothRadio ReadBluetoothRadio(const JsonNode& node) {
  JsonFields fields(node);
  BluetoothRadio out;
  const JsonNode name = fields.Need("name");
  out.name = FromUtf8(name.Text());
  if (out.name.empty()) name.Fail("is empty");
  fields.Flag("on", &out.on);
  fields.Each("traffic", [&](const JsonNode& item) { out.traffic.push_back(ReadTrafficOf(item)); });
  fields.Finish();
  return out;
}

void TakeBluetoothRates(JsonFields& fields, BluetoothTraffic* out) {
  constexpr double kMost = 1e5;
  if (const auto link = fields.Find("link")) out->link = link->Choice(kLinks);
  fields.Number("readKbps", 0.0, kMost, &out->readKbps);
  fields.Number("writtenKbps", 0.0, kMost, &out->writtenKbps);
}

std::u16string TakeBluetoothRadio(JsonFields& fields, const World& world) {
  const JsonNode node = fields.Need("radio");
  std::u16string name = FromUtf8(node.Text());
  const bool known = std::ranges::any_of(
      world.bluetooth, [&](const BluetoothRadio& radio) { return radio.name == name; });
  if (!known) node.Fail("no Bluetooth radio has this name");
  return name;
}

}  // namespace corvane::platform::sim
