// Entries of a world's timeline.

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <limits>
#include <string_view>

#include "platform/sim/world/world_driver.h"
#include "platform/sim/world/world_loader.h"
#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

struct KindWord {
  const char* name;
  ActionKind value;
};
constexpr KindWord kKinds[] = {
    {"move", ActionKind::kMove},
    {"scan", ActionKind::kScan},
    {"connect", ActionKind::kConnect},
    {"disconnect", ActionKind::kDisconnect},
    {"roam", ActionKind::kRoam},
    {"radio", ActionKind::kRadio},
    {"adapter", ActionKind::kAdapter},
    {"traffic", ActionKind::kTraffic},
    {"accessPoint", ActionKind::kAccessPoint},
    {"load", ActionKind::kLoad},
    {"signal", ActionKind::kSignal},
    {"noise", ActionKind::kNoise},
    {"refuse", ActionKind::kRefuse},
    {"wlanService", ActionKind::kWlanService},
    {"power", ActionKind::kPower},
    {"suspend", ActionKind::kSuspend},
    {"resume", ActionKind::kResume},
    {"bluetooth", ActionKind::kBluetooth},
    {"bluetoothTraffic", ActionKind::kBluetoothTraffic},
    {"registry", ActionKind::kRegistry},
    {"network", ActionKind::kNetwork},
    {"networkList", ActionKind::kNetworkList},
    {"interface", ActionKind::kInterface},
    {"interfacePresent", ActionKind::kInterfacePresent},
    {"neighbour", ActionKind::kNeighbour},
    {"profile", ActionKind::kProfile},
    {"filter", ActionKind::kFilter},
    {"session", ActionKind::kSession},
    {"process", ActionKind::kProcess},
    {"notification", ActionKind::kNotification},
    {"web", ActionKind::kWeb},
    {"proxies", ActionKind::kProxies},
    {"client", ActionKind::kClient},
    {"driver", ActionKind::kDriver},
    {"addresses", ActionKind::kAddresses},
    {"key", ActionKind::kKey},
};

struct CategoryWord {
  const char* name;
  int value;
};
constexpr CategoryWord kCategories[] = {{"public", 0}, {"private", 1}, {"domain", 2}};

constexpr std::int64_t kMostDword = 0xFFFFFFFF;

void TakeOn(JsonFields& fields, Action* out) { out->on = fields.Need("on").Flag(); }

void TakeBssid(JsonFields& fields, const World& world, Action* out) {
  out->bssid = AccessPointByBssid(fields.Need("bssid"), world).bssid;
}

// A flag that may be left as it was.
void TakeChange(JsonFields& fields, const char* name, int* out) {
  if (const auto node = fields.Find(name)) *out = node->Flag() ? 1 : 0;
}

void TakeNetworkChange(JsonFields& fields, const World& world, Action* out) {
  const JsonNode name = fields.Need("network");
  NetworkByName(name, world);
  out->network = FromUtf8(name.Text());
  if (const auto category = fields.Find("category")) out->category = category->Choice(kCategories);
  TakeChange(fields, "internet", &out->internet);
  TakeChange(fields, "connected", &out->connected);
  fields.Integer("connectivity", 0, kMostDword, &out->connectivity);
}

void TakeInterface(JsonFields& fields, const World& world, Action* out) {
  const JsonNode name = fields.Need("interface");
  out->interfaceName = FromUtf8(name.Text());
  const bool known = std::any_of(
      world.otherAdapters.begin(), world.otherAdapters.end(),
      [&](const OtherAdapter& other) { return other.friendlyName == out->interfaceName; });
  if (!known) name.Fail("no other adapter has this name");
}

void TakeTraffic(JsonFields& fields, const World& world, Action* out) {
  out->adapter = out->traffic.adapter = TakeAdapter(fields, world, 0);
  fields.Duration("for", &out->traffic.span.toMs);
  TakeRates(fields, &out->traffic);
}

void TakeProfile(JsonFields& fields, const World& world, Action* out) {
  const auto added = fields.Find("add");
  if (added) {
    out->on = true;
    out->profile = ReadProfile(*added, world);
    return;
  }
  out->profile.name = FromUtf8(fields.Need("delete").Text());
  out->profile.adapter = TakeAdapter(fields, world, kAllAdapters);
}

void TakeNotification(JsonFields& fields, const World& world, Action* out) {
  out->adapter = TakeAdapter(fields, world, 0);
  out->source = static_cast<DWORD>(fields.Need("source").Integer(0, kMostDword));
  out->code = static_cast<DWORD>(fields.Need("code").Integer(0, kMostDword));
  fields.Integer("value", 0, kMostDword, &out->number);
}

void TakeSignal(JsonFields& fields, const World& world, Action* out) {
  TakeBssid(fields, world, out);
  const JsonNode dbm = fields.Need("dbm");
  out->dbm =
      dbm.Value().IsNull() ? std::numeric_limits<double>::quiet_NaN() : dbm.Number(-120.0, 0.0);
}

// What stands behind "at" and "do" for what adapters, access points and traffic do; false for
// everything else.
bool TakeMembersInTheAir(JsonFields& fields, const World& world, Action* out) {
  switch (out->kind) {
    case ActionKind::kScan:
      out->adapter = TakeAdapter(fields, world, 0);
      if (const auto ssid = fields.Find("ssid")) out->ssid = ssid->Ssid();
      fields.Flag("good", &out->good);
      return true;
    case ActionKind::kConnect:
      out->adapter = TakeAdapter(fields, world, 0);
      out->ssid = fields.Need("ssid").Ssid();
      if (fields.Has("bssid")) TakeBssid(fields, world, out);
      return true;
    case ActionKind::kDisconnect:
      out->adapter = TakeAdapter(fields, world, 0);
      return true;
    case ActionKind::kRoam:
      out->adapter = TakeAdapter(fields, world, 0);
      TakeBssid(fields, world, out);
      return true;
    case ActionKind::kRadio:
      out->adapter = TakeAdapter(fields, world, 0);
      TakeOn(fields, out);
      fields.Flag("hardware", &out->hardware);
      return true;
    case ActionKind::kAdapter:
      out->adapter = TakeAdapter(fields, world, 0);
      TakeOn(fields, out);
      return true;
    case ActionKind::kTraffic:
      TakeTraffic(fields, world, out);
      return true;
    case ActionKind::kAccessPoint:
      TakeBssid(fields, world, out);
      TakeOn(fields, out);
      return true;
    case ActionKind::kLoad:
      TakeBssid(fields, world, out);
      fields.Integer("stations", 0, 65535, &out->stations);
      fields.Integer("utilisation", 0, 255, &out->utilisation);
      return true;
    case ActionKind::kSignal:
      TakeSignal(fields, world, out);
      return true;
    case ActionKind::kNoise:
      TakeBssid(fields, world, out);
      TakeNoise(fields, &out->noise);
      return true;
    case ActionKind::kRefuse:
      TakeBssid(fields, world, out);
      out->code = static_cast<DWORD>(fields.Need("reason").Integer(0, kMostDword));
      return true;
    case ActionKind::kBluetooth:
      out->text = TakeBluetoothRadio(fields, world);
      TakeOn(fields, out);
      return true;
    case ActionKind::kBluetoothTraffic:
      out->text = TakeBluetoothRadio(fields, world);
      fields.Duration("for", &out->bluetooth.span.toMs);
      TakeBluetoothRates(fields, &out->bluetooth);
      return true;
    case ActionKind::kProfile:
      TakeProfile(fields, world, out);
      return true;
    case ActionKind::kNotification:
      TakeNotification(fields, world, out);
      return true;
    default:
      return false;
  }
}

// Likewise for the rest of the machine. Some have no members.
void TakeMembersOnTheMachine(JsonFields& fields, const World& world, Action* out) {
  switch (out->kind) {
    case ActionKind::kMove:
      out->to = fields.Need("to").Place();
      fields.Number("speed", 0.01, 1000.0, &out->speed);
      break;
    case ActionKind::kPower:
      out->on = fields.Need("mains").Flag();
      fields.Integer("batteryPercent", 0, 100, &out->percent);
      break;
    case ActionKind::kRegistry:
      TakeRegistry(fields, world, &out->registry);
      break;
    case ActionKind::kNetwork:
      TakeNetworkChange(fields, world, out);
      break;
    case ActionKind::kWlanService:
    case ActionKind::kNetworkList:
      TakeOn(fields, out);
      break;
    case ActionKind::kInterface:
    case ActionKind::kInterfacePresent:
      TakeInterface(fields, world, out);
      TakeOn(fields, out);
      break;
    case ActionKind::kAddresses:
      TakeInterface(fields, world, out);
      fields.Need("ip");
      TakeIp(fields, &out->ip);
      break;
    case ActionKind::kDriver:
      TakeDriver(fields, &out->driver);
      break;
    case ActionKind::kNeighbour:
      TakeNeighbour(fields, &out->neighbour);
      TakeOn(fields, out);
      break;
    case ActionKind::kFilter:
      TakeFilter(fields, &out->filter);
      TakeOn(fields, out);
      break;
    case ActionKind::kSession:
      TakeSession(fields, &out->session);
      break;
    case ActionKind::kProcess:
      out->text = FromUtf8(fields.Need("name").Text());
      TakeOn(fields, out);
      break;
    case ActionKind::kWeb:
      TakeWebAnswer(fields, &out->answer);
      break;
    case ActionKind::kProxies:
      TakeWebProxies(fields, &out->proxies);
      break;
    case ActionKind::kClient:
      TakeClientAction(fields, world, &out->client);
      break;
    default:
      break;
  }
}

// The kind and what belongs to it: "radio adapter 0 on false".
std::string LineOf(const rapidjson::Value& action) {
  std::string line = action["do"].GetString();
  for (auto member = action.MemberBegin(); member != action.MemberEnd(); ++member) {
    const std::string_view name = member->name.GetString();
    if (name == "at" || name == "do") continue;
    line.append(" ").append(name).append(" ");
    if (member->value.IsString()) {
      line += member->value.GetString();
      continue;
    }
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    member->value.Accept(writer);
    line += text.GetString();
  }
  return line;
}

}  // namespace

Action ReadAction(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  Action out;
  fields.Duration("at", &out.atMs);
  out.kind = fields.Need("do").Choice(kKinds);
  if (!TakeMembersInTheAir(fields, world, &out)) TakeMembersOnTheMachine(fields, world, &out);
  fields.Finish();
  out.line = LineOf(node.Value());
  return out;
}

Action ParseAction(const std::string& jsonText, const World& world) {
  const JsonText text(jsonText, "action");
  return ReadAction(JsonNode(text), world);
}

}  // namespace corvane::platform::sim
