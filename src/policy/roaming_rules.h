#pragma once
// Whether a move to another access point stays within one installation. Pure, but for the log.

#include <functional>

#include "history/global_ap_gateway_map_memo.h"

namespace corvane {

// `bssid` is itself one of the gateways. `index` is the adapter, for the log.
bool CheckGatewayDaisyChainForRoaming(int index, const MacList& ip4, const MacList& ip6,
                                      const MacAddress& bssid);
// Both pairs of lists are the same, position by position. Empty lists match.
bool CheckGatewaysMatchesForRoaming(int index, const MacList& currentIp4, const MacList& currentIp6,
                                    const MacList& candidateIp4, const MacList& candidateIp6);

// What the roam test looks at.
struct RoamFacts {
  int index = 0;  // adapter, for the log
  bool sameSsid = false;
  bool gatewayRoaming = false;  // on globally and on the adapter
  GatewayMacs current;          // of the present connection
  MacAddress bssid{};           // of the target
  GatewayMacs candidate;        // seen when the target was connected
};
// `remembered` gives what the memo holds for the target; asked only when nothing else decides.
bool IsRoam(const RoamFacts& facts, const std::function<GatewayMacs()>& remembered);

}  // namespace corvane
