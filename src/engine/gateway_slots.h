#pragma once
#include <cstdint>

#include "engine/engine_table.h"

namespace corvane {

// Addresses of one next hop; what is all zero is not there.
struct LBNextHop {
  std::uint8_t address[8] = {};  // hardware
  std::uint32_t ip4 = 0;
  LBIp6 ip6 = {};
};

struct LBGatewayPlace {
  std::uint8_t slot = kNoIndex;
  std::uint8_t ip4 = kNoIndex;  // place in the slot's list
  std::uint8_t ip6 = kNoIndex;
  bool IsNone() const { return slot == kNoIndex; }
};

// The slot of a gateway by its hardware address, or a free one, which it takes; none when all are
// in use. `cursor` is where the search for a free one begins; it moves on by each slot looked at.
// The catch-all slot is left out of that search. Under the engine's and the gateways' locks.
LBGatewayPlace LBFindOrTakeGatewaySlot(LBGatewaySlot (&slots)[kGatewaySlots], const LBNextHop& hop,
                                       bool hasCatchAll, std::uint32_t* cursor);

// The place of an address in one of a gateway's lists. One that is not there takes the next free
// place, or the second when both are taken.
std::uint8_t PutGatewayIp4(LBGatewaySlot* slot, std::uint32_t ip4);
std::uint8_t PutGatewayIp6(LBGatewaySlot* slot, const LBIp6& ip6);

bool IsZero(const LBIp6& address);

}  // namespace corvane
