#include "platform/sim/world/world_sections.h"

#include <algorithm>

#include "platform/sim/world/world_profile.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

template <class Value>
struct Word {
  const char* name;
  Value value;
};

constexpr Word<LONG> kPhyWords[] = {
    {"b", dot11_phy_type_hrdsss}, {"a", dot11_phy_type_ofdm},  {"g", dot11_phy_type_erp},
    {"ht", dot11_phy_type_ht},    {"vht", dot11_phy_type_vht}, {"he", dot11_phy_type_he},
};
constexpr Word<LONG> kFilterWords[] = {
    {"groupPermit", wlan_filter_list_type_gp_permit},
    {"groupDeny", wlan_filter_list_type_gp_deny},
    {"userPermit", wlan_filter_list_type_user_permit},
    {"userDeny", wlan_filter_list_type_user_deny},
};
constexpr Word<DWORD> kOwnerWords[] = {
    {"allUsers", 0}, {"groupPolicy", kProfileGroupPolicy}, {"user", kProfileUser}};
constexpr Word<DWORD> kAccessWords[] = {
    {"read", WLAN_READ_ACCESS}, {"execute", WLAN_EXECUTE_ACCESS}, {"write", WLAN_WRITE_ACCESS}};
constexpr Word<DWORD> kIfTypeWords[] = {
    {"ethernet", 6}, {"ppp", 23},  {"loopback", 24}, {"slip", 28},
    {"virtual", 53}, {"wifi", 71}, {"tunnel", 131},  {"mobile", 243},
};
constexpr Word<LONG> kCategoryWords[] = {{"public", 0}, {"private", 1}, {"domain", 2}};

constexpr std::int64_t kMostDword = 0xFFFFFFFF;

// The GUID, MAC and interface index that adapters have whose file gives them none.
GUID DefaultGuid(std::size_t number) {
  GUID guid{0x7E1D0000, 0x0000, 0x4000, {0x80}};
  guid.Data4[6] = static_cast<BYTE>(number >> 8);
  guid.Data4[7] = static_cast<BYTE>(number);
  return guid;
}
Mac DefaultMac(std::size_t number) {
  return {0x02, 0xAD, 0, 0, static_cast<BYTE>(number >> 8), static_cast<BYTE>(number)};
}
constexpr std::size_t kFirstWifi = 1, kFirstOther = 101;
constexpr DWORD kFirstWifiIndex = 10, kFirstOtherIndex = 110;

// `guid`, `mac` and `ifIndex`; no two adapters of the machine share the first or the last.
template <class Kind>
void TakeIdentity(JsonFields& fields, const World& world, std::size_t number, DWORD ifIndex,
                  Kind* out) {
  out->guid = DefaultGuid(number);
  out->mac = DefaultMac(number);
  out->ifIndex = ifIndex;
  if (const auto guid = fields.Find("guid")) {
    if (!ReadGuid(guid->Text(), &out->guid)) guid->Fail("wants a GUID in braces");
  }
  if (const auto mac = fields.Find("mac")) out->mac = mac->MacAddress();
  fields.Integer("ifIndex", 1, 0xFFFFFF, &out->ifIndex);
  const auto taken = [&](const auto& other) {
    if (other.guid == out->guid) fields.Node().Fail("another adapter has its GUID");
    if (other.ifIndex == out->ifIndex) fields.Node().Fail("another adapter has its ifIndex");
  };
  std::for_each(world.adapters.begin(), world.adapters.end(), taken);
  std::for_each(world.otherAdapters.begin(), world.otherAdapters.end(), taken);
}

void TakeAddresses(JsonFields& fields, const char* name, std::vector<IpAddress>* out) {
  fields.Each(name, [&](const JsonNode& item) { out->push_back(item.Address()); });
}

}  // namespace

void TakeIp(JsonFields& fields, IpSettings* out) {
  const auto node = fields.Find("ip");
  if (!node) return;
  JsonFields ip(*node);
  TakeAddresses(ip, "unicast", &out->unicast);
  TakeAddresses(ip, "gateways", &out->gateways);
  TakeAddresses(ip, "dns", &out->dnsServers);
  ip.Text("dnsSuffix", &out->dnsSuffix);
  ip.Flag("dhcp", &out->dhcp);
  ip.Finish();
}

namespace {

DriverRoaming ReadRoaming(const JsonNode& node) {
  JsonFields fields(node);
  DriverRoaming out;
  out.enabled = true;
  fields.Integer("belowDbm", -120, 0, &out.belowDbm);
  fields.Integer("marginDb", 0, 60, &out.marginDb);
  fields.Finish();
  return out;
}

}  // namespace

int NetworkByName(const JsonNode& node, const World& world) {
  const std::u16string name = FromUtf8(node.Text());
  const auto found = std::find_if(world.networks.begin(), world.networks.end(),
                                  [&](const Network& network) { return network.name == name; });
  if (found == world.networks.end()) node.Fail("no network has this name");
  return static_cast<int>(found - world.networks.begin());
}

const AccessPoint& AccessPointByBssid(const JsonNode& node, const World& world) {
  const Mac bssid = node.MacAddress();
  const auto found = std::find_if(world.accessPoints.begin(), world.accessPoints.end(),
                                  [&](const AccessPoint& known) { return known.bssid == bssid; });
  if (found == world.accessPoints.end()) node.Fail("no access point has this BSSID");
  return *found;
}

int TakeAdapter(JsonFields& fields, const World& world, int otherwise) {
  const auto node = fields.Find("adapter");
  if (!node) {
    if (otherwise >= static_cast<int>(world.adapters.size()))
      fields.Node().Fail("the world has no adapter");
    return otherwise;
  }
  const std::int64_t adapter = node->Integer(0, 1000);
  if (adapter >= static_cast<std::int64_t>(world.adapters.size())) {
    node->Fail("the world has no adapter " + std::to_string(adapter));
  }
  return static_cast<int>(adapter);
}

Network ReadNetwork(const JsonNode& node) {
  constexpr DWORD kIpv4Internet = 0x40, kIpv4LocalNetwork = 0x20;
  JsonFields fields(node);
  Network out;
  out.name = FromUtf8(fields.Need("name").Text());
  out.description = out.name;
  fields.Text("description", &out.description);
  fields.Flag("nullName", &out.nullName);
  if (const auto ssid = fields.Find("ssid")) out.ssid = ssid->Ssid();
  if (const auto category = fields.Find("category"))
    out.category = category->Choice(kCategoryWords);
  fields.Flag("internet", &out.internet);
  out.connectivity = out.internet ? kIpv4Internet : kIpv4LocalNetwork;
  fields.Integer("connectivity", 0, kMostDword, &out.connectivity);
  fields.Flag("connected", &out.connected);
  fields.Integer("createdSecs", 0, kMostDword, &out.createdSecs);
  fields.Integer("connectedSecs", 0, kMostDword, &out.connectedSecs);
  TakeIp(fields, &out.ip);
  fields.Each("neighbours",
              [&](const JsonNode& item) { out.neighbours.push_back(ReadNeighbour(item)); });
  fields.Finish();
  return out;
}

Adapter ReadAdapter(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  const std::size_t number = world.adapters.size();
  Adapter out;
  TakeIdentity(fields, world, kFirstWifi + number, kFirstWifiIndex + static_cast<DWORD>(number),
               &out);
  out.description = FromUtf8(fields.Need("description").Text());
  out.connectionName = FromUtf8(fields.Need("connectionName").Text());
  fields.Each("phys", [&](const JsonNode& item) { out.phys.push_back(item.Choice(kPhyWords)); });
  if (!fields.Has("phys")) {
    out.phys = {dot11_phy_type_hrdsss, dot11_phy_type_ofdm, dot11_phy_type_erp,
                dot11_phy_type_ht,     dot11_phy_type_vht,  dot11_phy_type_he};
  }
  if (fields.Has("bands")) out.bands.clear();
  fields.Each("bands", [&](const JsonNode& item) {
    const auto band = item.Integer(2, 6);
    if (band != 2 && band != 5 && band != 6) item.Fail("is none of the bands 2, 5 and 6");
    out.bands.push_back(static_cast<int>(band));
  });
  fields.Flag("present", &out.present);
  fields.Flag("radioOn", &out.radioOn);
  fields.Flag("hardwareRadioOn", &out.hardwareRadioOn);
  fields.Flag("autoConnect", &out.autoConnect);
  if (const auto bssid = fields.Find("connectedTo"))
    out.connectedTo = AccessPointByBssid(*bssid, world).bssid;
  fields.Duration("scanTime", &out.scanMs);
  fields.Duration("connectTime", &out.connectMs);
  fields.Duration("staleAfter", &out.staleMs);
  fields.Integer("sensitivityDbm", -120, 0, &out.sensitivityDbm);
  fields.Flag("privateInterface", &out.privateInterface);
  fields.Integer("streams", 1, 8, &out.streams);
  fields.Number("txLimitMbps", 0.0, 100'000.0, &out.txLimitMbps);
  if (const auto roaming = fields.Find("roaming")) out.roaming = ReadRoaming(*roaming);
  fields.Finish();
  return out;
}

OtherAdapter ReadOtherAdapter(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  const std::size_t number = world.otherAdapters.size();
  OtherAdapter out;
  TakeIdentity(fields, world, kFirstOther + number, kFirstOtherIndex + static_cast<DWORD>(number),
               &out);
  const JsonNode name = fields.Need("friendlyName");
  out.friendlyName = FromUtf8(name.Text());
  for (const OtherAdapter& other : world.otherAdapters) {
    if (other.friendlyName == out.friendlyName) name.Fail("another adapter has it");
  }
  out.description = FromUtf8(fields.Need("description").Text());
  const JsonNode type = fields.Need("type");
  out.ifType = type.Value().IsString() ? type.Choice(kIfTypeWords)
                                       : static_cast<DWORD>(type.Integer(1, 1000));
  fields.Flag("up", &out.up);
  fields.Flag("present", &out.present);
  fields.Integer("mtu", 68, kMostDword, &out.mtu);
  fields.Number("linkMbps", 0.0, 1e6, &out.linkMbps);
  TakeIp(fields, &out.ip);
  if (const auto network = fields.Find("network")) out.network = NetworkByName(*network, world);
  fields.Finish();
  return out;
}

Profile ReadProfile(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  Profile out;
  out.adapter = TakeAdapter(fields, world, kAllAdapters);
  if (const auto xml = fields.Find("xml")) {
    if (!ReadProfileXml(FromUtf8(xml->Text()), &out))
      xml->Fail("is not a WLAN profile with a name and an SSID");
  } else {
    out.ssid = fields.Need("ssid").Ssid();
    out.name = FromUtf8(out.ssid);
    fields.Text("name", &out.name);
    TakeSecurity(fields, &out.security);
    fields.Flag("autoConnect", &out.autoConnect);
    fields.Flag("nonBroadcast", &out.nonBroadcast);
    out.xml = ProfileXml(out);
  }
  if (const auto owner = fields.Find("owner")) out.flags = owner->Choice(kOwnerWords);
  if (const auto access = fields.Find("access")) out.grantedAccess = access->Choice(kAccessWords);
  fields.Integer("readError", 0, kMostDword, &out.readError);
  fields.Finish();
  return out;
}

void TakeFilter(JsonFields& fields, Filter* out) {
  out->type = fields.Need("list").Choice(kFilterWords);
  out->ssid = fields.Need("ssid").Ssid();
}

Filter ReadFilter(const JsonNode& node) {
  JsonFields fields(node);
  Filter out;
  TakeFilter(fields, &out);
  fields.Finish();
  return out;
}

void TakeNeighbour(JsonFields& fields, Neighbour* out) {
  out->address = fields.Need("address").Address();
  if (const auto mac = fields.Find("mac")) out->mac = mac->MacAddress();
  if (const auto mac = fields.Find("resolvesTo")) out->resolved = mac->MacAddress();
}

Neighbour ReadNeighbour(const JsonNode& node) {
  JsonFields fields(node);
  Neighbour out;
  TakeNeighbour(fields, &out);
  fields.Finish();
  return out;
}

void TakeRates(JsonFields& fields, Traffic* out) {
  constexpr double kMost = 1e5;
  fields.Number("inMbps", 0.0, kMost, &out->inMbps);
  fields.Number("outMbps", 0.0, kMost, &out->outMbps);
  fields.Number("inErrorsPerSec", 0.0, kMost, &out->inErrorsPerSec);
  fields.Number("outErrorsPerSec", 0.0, kMost, &out->outErrorsPerSec);
}

Traffic ReadTraffic(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  Traffic out;
  out.adapter = TakeAdapter(fields, world, 0);
  fields.Duration("from", &out.span.fromMs);
  fields.Duration("to", &out.span.toMs);
  if (out.span.toMs <= out.span.fromMs) node.Fail("ends before it begins");
  TakeRates(fields, &out);
  fields.Finish();
  return out;
}

void TakeSession(JsonFields& fields, Session* out) {
  fields.Flag("loggedOn", &out->loggedOn);
  fields.Text("user", &out->user);
  fields.Integer("sessionId", 0, 65535, &out->sessionId);
  fields.Text("childOutput", &out->childOutput);
  fields.Integer("childExitCode", 0, kMostDword, &out->childExitCode);
  fields.Duration("childTime", &out->childMs);
  fields.Each("processes",
              [&](const JsonNode& item) { out->processes.push_back(FromUtf8(item.Text())); });
}

Session ReadSession(const JsonNode& node) {
  JsonFields fields(node);
  Session out;
  TakeSession(fields, &out);
  fields.Finish();
  return out;
}

void TakeRegistry(JsonFields& fields, const World& world, RegistryWrite* out) {
  if (fields.Has("key") && fields.Has("adapter"))
    fields.Node().Fail("wants \"key\" or \"adapter\", not both");
  out->key = kHomeKey;
  fields.Text("key", &out->key);
  if (fields.Has("adapter")) {
    const auto adapter = static_cast<std::size_t>(TakeAdapter(fields, world, 0));
    out->key += u"\\" + GuidText(world.adapters[adapter].guid);
  }
  out->name = FromUtf8(fields.Need("name").Text());
  int given = 0;
  if (const auto number = fields.Find("dword")) {
    out->type = REG_DWORD;
    out->number = static_cast<std::uint64_t>(number->Integer(0, kMostDword));
    ++given;
  }
  if (const auto number = fields.Find("qword")) {
    if (!number->Value().IsUint64()) number->Fail("wants a whole number of 64 bits");
    out->type = REG_QWORD;
    out->number = number->Value().GetUint64();
    ++given;
  }
  if (const auto text = fields.Find("text")) {
    out->type = REG_SZ;
    out->text = FromUtf8(text->Text());
    ++given;
  }
  fields.Flag("remove", &out->remove);
  if (given + (out->remove ? 1 : 0) != 1)
    fields.Node().Fail("wants one of \"dword\", \"qword\", \"text\" and \"remove\"");
}

RegistryWrite ReadRegistry(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  RegistryWrite out;
  TakeRegistry(fields, world, &out);
  fields.Finish();
  return out;
}

}  // namespace corvane::platform::sim
