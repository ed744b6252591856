#include "platform/sim/devices/sim_interfaces.h"

#include "platform/ip_types.h"
#include "platform/sim/devices/sim_wlan_lists.h"

namespace corvane::platform::sim {

std::vector<SimInterface> InterfacesOf(SimMachine& machine, const SimWlanAdapters& adapters,
                                       SimTraffic& traffic) {
  static const IpSettings kNone;
  std::vector<SimInterface> interfaces;
  interfaces.reserve(adapters.size() + machine.world.otherAdapters.size());
  for (const auto& wireless : adapters) {
    const Adapter& data = wireless->Data();
    if (!data.present) continue;
    SimInterface& face = interfaces.emplace_back();
    face.ip = &kNone;
    face.guid = data.guid;
    face.description = data.description;
    face.friendlyName = data.connectionName;
    face.ifIndex = data.ifIndex;
    face.ifType = IF_TYPE_IEEE80211;
    face.mac = data.mac;
    face.totals = traffic.Totals(wireless->Index());
    if (const SimWlanAdapter::Link* link = wireless->Connection()) {
      face.up = true;
      face.network = machine.NetworkOf(link->accessPoint);
      face.ip = &machine.world.networks[*face.network].ip;
      const WLAN_CONNECTION_ATTRIBUTES attributes = ConnectionAttributes(machine, *wireless);
      face.linkMbps = attributes.wlanAssociationAttributes.ulTxRate / 1000.0;
    }
  }
  for (const OtherAdapter& other : machine.world.otherAdapters) {
    if (!other.present) continue;
    SimInterface& face = interfaces.emplace_back();
    face.ip = &kNone;
    face.guid = other.guid;
    face.description = other.description;
    face.friendlyName = other.friendlyName;
    face.ifIndex = other.ifIndex;
    face.ifType = other.ifType;
    face.up = other.up;
    face.mac = other.mac;
    face.mtu = other.mtu;
    if (other.up) {
      face.linkMbps = other.linkMbps;
      face.ip = &other.ip;
      if (other.network >= 0) face.network = static_cast<std::size_t>(other.network);
    }
  }
  return interfaces;
}

}  // namespace corvane::platform::sim
