#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/sim_traffic.h"
#include "platform/sim/sim_wlan_adapter.h"

namespace corvane::platform::sim {

// A network interface of the machine as the IP helper and the network list see it.
struct SimInterface {
  GUID guid;
  std::u16string description;
  std::u16string friendlyName;
  DWORD ifIndex = 0;
  DWORD ifType = 0;
  bool up = false;
  Mac mac{};
  DWORD mtu = 1500;
  double linkMbps = 0.0;
  IpSettings ip;                       // empty while it is down
  std::optional<std::size_t> network;  // of the world, while it is up
  TrafficTotals totals;
};

using SimWlanAdapters = std::vector<std::unique_ptr<SimWlanAdapter>>;

// All that are present: the wireless ones first, then the others, as the world lists them. Under the
// devices' lock.
std::vector<SimInterface> InterfacesOf(SimMachine& machine, const SimWlanAdapters& adapters,
                                       SimTraffic& traffic);

}  // namespace corvane::platform::sim
