#pragma once
#include <cstdint>

#include "engine/engine_table.h"

namespace corvane::platform {
struct IP_ADAPTER_UNICAST_ADDRESS;
}

namespace corvane {

// An adapter's addresses as its slot holds them.
struct LBAddressBlock {
  std::uint32_t ip4 = 0, ip4Mask = 0;
  std::uint32_t secondIp4 = 0, secondIp4Mask = 0;
  std::uint32_t linkLocalIp4 = 0, linkLocalIp4Mask = 0;
  LBIp6 global = {};
  LBIp6 moreGlobal[kMoreAddresses] = {};
  std::uint32_t moreGlobalCount = 0;  // a place among them may have been emptied
  LBIp6 uniqueLocal = {};
  LBIp6 moreUniqueLocal[kMoreAddresses] = {};
  std::uint32_t moreUniqueLocalCount = 0;
  LBIp6 linkLocal = {};
  LBIp6 displaced = {};
  bool onLinkLocal = false;  // ip4 is the link-local one, for want of another

  std::uint32_t Ip4Count() const { return (ip4 != 0 ? 1u : 0u) + (secondIp4 != 0 ? 1u : 0u); }
  bool HasIp6() const;
  bool HasAny() const { return ip4 != 0 || HasIp6(); }
};

// Sorts an adapter's addresses into their places, in the platform's order.
LBAddressBlock CollectAddresses(const platform::IP_ADAPTER_UNICAST_ADDRESS* first);

// Writes the block into the slot: counts fall before the lists and rise after them, so the driver
// never counts an address that is not there.
void WriteAddresses(const LBAddressBlock& block, LBAdapterSlot* slot);

// The mask of an IPv4 prefix length, in network byte order.
std::uint32_t Ip4MaskOf(std::uint8_t prefixLength);

}  // namespace corvane
