#pragma once
#include <cstdint>

#include "engine/gateway_slots.h"

namespace corvane {

// The next hop of an adapter as its gateway list tells it.
struct LBGatewayAddresses {
  std::uint32_t ip4 = 0;
  LBIp6 ip6 = {};
  bool IsNone() const { return ip4 == 0 && IsZero(ip6); }
};

// Fills `address` from the neighbour table, by the IPv4 gateway, or by the IPv6 one where there is
// no other; an IPv6 neighbour that has no address yet is asked for it. A row of the adapter's own
// interface goes before the others, because two routers may have one address. False when the
// address is not known.
bool FindNeighbour(const LBGatewayAddresses& gateway, std::uint32_t ifIndex,
                   std::uint8_t (&address)[8]);

}  // namespace corvane
