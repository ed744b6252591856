#pragma once
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/sim/devices/sim_traffic.h"
#include "platform/sim/devices/sim_wlan_adapter.h"

namespace corvane::platform::sim {

// A network interface of the machine as the IP helper and the network list see it. It points into
// the world, and lasts as long as the devices' lock is held.
struct SimInterface {
  GUID guid;
  std::u16string_view description;
  std::u16string_view friendlyName;
  DWORD ifIndex = 0;
  DWORD ifType = 0;
  bool up = false;
  Mac mac{};
  DWORD mtu = 1500;
  double linkMbps = 0.0;
  const IpSettings* ip = nullptr;      // never null; empty while it is down
  std::optional<std::size_t> network;  // of the world, while it is up
  TrafficTotals totals;
};

using SimWlanAdapters = std::vector<std::unique_ptr<SimWlanAdapter>>;

// All that are present: the wireless ones first, then the others, as the world lists them. Under
// the devices' lock.
std::vector<SimInterface> InterfacesOf(SimMachine& machine, const SimWlanAdapters& adapters,
                                       SimTraffic& traffic);

}  // namespace corvane::platform::sim
