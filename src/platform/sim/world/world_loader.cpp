#include "platform/sim/world/world_loader.h"

#include <algorithm>

#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_driver.h"
#include "platform/sim/world/world_json.h"
#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

// Where the machine stands and how it walks: { "at": [x, y], "walk": [{ "from", "to", "speed" }] }.
std::vector<Waypoint> ReadMachine(const JsonNode& node) {
  constexpr double kSlowest = 0.01, kFastest = 1000.0;
  JsonFields fields(node);
  std::vector<Waypoint> path(1);
  if (const auto at = fields.Find("at")) path[0].at = at->Place();
  fields.Each("walk", [&](const JsonNode& item) {
    JsonFields leg(item);
    const std::uint64_t fromMs = leg.Need("from").Duration();
    const Point to = leg.Need("to").Place();
    double speed = Action().speed;
    leg.Number("speed", kSlowest, kFastest, &speed);
    leg.Finish();
    if (fromMs < path.back().atMs)
      item.Fail("starts before the machine has reached the place before it");
    AddWalk(&path, fromMs, to, speed);
  });
  fields.Finish();
  return path;
}

ProgramFile ReadFile(const JsonNode& node) {
  JsonFields fields(node);
  ProgramFile out;
  const JsonNode name = fields.Need("name");
  out.name = FromUtf8(name.Text());
  if (out.name.empty() || out.name.find_first_of(u"/\\") != out.name.npos)
    name.Fail("wants the bare name of a file");
  out.text = fields.Need("text").Text();
  fields.Finish();
  return out;
}

void TakeAir(JsonFields& fields, World* world) {
  const auto node = fields.Find("air");
  if (!node) return;
  JsonFields air(*node);
  air.Number("shadowingDb", 0.0, 20.0, &world->shadowingDb);
  air.Number("pathLossExponent", 1.0, 8.0, &world->pathLossExponent);
  air.Finish();
}

void TakePower(JsonFields& fields, World* world) {
  const auto node = fields.Find("power");
  if (!node) return;
  JsonFields power(*node);
  power.Flag("mains", &world->power.mains);
  power.Integer("batteryPercent", 0, 100, &world->power.batteryPercent);
  power.Finish();
}

void TakeTimeline(JsonFields& fields, World* world) {
  fields.Each("timeline", [&](const JsonNode& item) {
    if (!item.Value().IsObject() || !item.Value().HasMember("at")) item.Fail("\"at\" is missing");
    world->timeline.push_back(ReadAction(item, *world));
  });
  std::stable_sort(world->timeline.begin(), world->timeline.end(),
                   [](const Action& a, const Action& b) { return a.atMs < b.atMs; });
}

}  // namespace

// What is referred to is read before what refers to it, whatever the order of the file.
World ParseWorld(const std::string& jsonText, const std::string& fileName) {
  const JsonText text(jsonText, fileName);
  JsonFields fields{JsonNode(text)};
  World world;
  fields.Text("name", &world.name);
  fields.Text("description", &world.description);
  fields.Duration("duration", &world.durationMs);
  fields.Each("networks",
              [&](const JsonNode& item) { world.networks.push_back(ReadNetwork(item)); });
  fields.Each("accessPoints", [&](const JsonNode& item) {
    world.accessPoints.push_back(ReadAccessPoint(item, world));
  });
  fields.Each("adapters",
              [&](const JsonNode& item) { world.adapters.push_back(ReadAdapter(item, world)); });
  fields.Each("otherAdapters", [&](const JsonNode& item) {
    world.otherAdapters.push_back(ReadOtherAdapter(item, world));
  });
  fields.Each("profiles",
              [&](const JsonNode& item) { world.profiles.push_back(ReadProfile(item, world)); });
  fields.Each("filters", [&](const JsonNode& item) { world.filters.push_back(ReadFilter(item)); });
  fields.Each("neighbours",
              [&](const JsonNode& item) { world.neighbours.push_back(ReadNeighbour(item)); });
  fields.Each("traffic",
              [&](const JsonNode& item) { world.traffic.push_back(ReadTraffic(item, world)); });
  fields.Each("registry",
              [&](const JsonNode& item) { world.registry.push_back(ReadRegistry(item, world)); });
  fields.Each("files", [&](const JsonNode& item) { world.files.push_back(ReadFile(item)); });
  fields.Each("clients",
              [&](const JsonNode& item) { world.clients.push_back(ReadClient(item, world)); });
  fields.Each("bluetooth",
              [&](const JsonNode& item) { world.bluetooth.push_back(ReadBluetoothRadio(item)); });
  if (const auto machine = fields.Find("machine")) world.path = ReadMachine(*machine);
  if (const auto session = fields.Find("session")) world.session = ReadSession(*session);
  if (const auto web = fields.Find("web")) world.web = ReadWeb(*web);
  fields.Each("domainControllers", [&](const JsonNode& item) {
    world.domainControllers.push_back(ReadDomainController(item));
  });
  if (const auto driver = fields.Find("driver")) world.driver = ReadDriver(*driver);
  TakeAir(fields, &world);
  TakePower(fields, &world);
  TakeTimeline(fields, &world);
  fields.Finish();
  return world;
}

}  // namespace corvane::platform::sim
