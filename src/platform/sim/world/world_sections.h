#pragma once
// The parts of a world's JSON, each read by itself. What they refer to must be in the world
// already.

#include "platform/sim/world/world.h"
#include "platform/sim/world/world_json.h"

namespace corvane::platform::sim {

Network ReadNetwork(const JsonNode& node);
AccessPoint ReadAccessPoint(const JsonNode& node, const World& world);
Adapter ReadAdapter(const JsonNode& node, const World& world);
OtherAdapter ReadOtherAdapter(const JsonNode& node, const World& world);
Profile ReadProfile(const JsonNode& node, const World& world);
Filter ReadFilter(const JsonNode& node);
Neighbour ReadNeighbour(const JsonNode& node);
Traffic ReadTraffic(const JsonNode& node, const World& world);
Session ReadSession(const JsonNode& node);
RegistryWrite ReadRegistry(const JsonNode& node, const World& world);
BluetoothRadio ReadBluetoothRadio(const JsonNode& node);
Web ReadWeb(const JsonNode& node);
DomainController ReadDomainController(const JsonNode& node);
Client ReadClient(const JsonNode& node, const World& world);
Action ReadAction(const JsonNode& node, const World& world);

// Members that several parts share; each takes its members from `fields`.
void TakeIp(JsonFields& fields, IpSettings* out);  // of the member "ip"
void TakeFilter(JsonFields& fields, Filter* out);
void TakeNeighbour(JsonFields& fields, Neighbour* out);
void TakeHops(JsonFields& fields, std::vector<Hop>* out);
void TakeNoise(JsonFields& fields, std::vector<double>* out);
void TakeRates(JsonFields& fields, Traffic* out);
void TakeBluetoothRates(JsonFields& fields, BluetoothTraffic* out);
// The name in "radio"; complains of one that no radio has.
std::u16string TakeBluetoothRadio(JsonFields& fields, const World& world);
void TakeSession(JsonFields& fields, Session* out);
void TakeWebAnswer(JsonFields& fields, WebAnswer* out);
void TakeWebProxies(JsonFields& fields, WebProxies* out);
void TakeClientAction(JsonFields& fields, const World& world, ClientAction* out);
void TakeRegistry(JsonFields& fields, const World& world, RegistryWrite* out);
int TakeAdapter(JsonFields& fields, const World& world, int otherwise);

// The position of the network of this name; complains of one that is not there.
int NetworkByName(const JsonNode& node, const World& world);
const AccessPoint& AccessPointByBssid(const JsonNode& node, const World& world);

struct SecurityKind {
  const char* name;
  int value;  // position in the table
  LONG auth;
  LONG cipher;
};
// "open", "wep", "wpa", "wpa2", ... by `security`, with `key`.
const SecurityKind& TakeSecurity(JsonFields& fields, Security* out);

}  // namespace corvane::platform::sim
