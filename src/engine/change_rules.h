#pragma once
// What leads from an adapter's slot as it was to the change bits of this pass. Pure.

#include <cstdint>

#include "engine/address_block.h"
#include "engine/engine_table.h"

namespace corvane {

// The adapter as the slot told before the pass.
struct LBSlotBefore {
  bool up = false;
  std::uint32_t status = 0;  // not 0 while the driver uses the adapter
  std::uint8_t gateway = kNoIndex;

  // The driver steers over it, through a gateway.
  bool IsSteered() const { return up && status != 0 && gateway != kNoIndex; }
};

// The slot's address fields before the pass.
struct LBAddressesBefore {
  std::uint32_t ip4 = 0;
  bool anyCounted = false;  // one of the slot's three address counts was above 0
  LBIp6 global = {};
};

struct LBAddressChange {
  std::uint32_t bits = 0;
  bool clearsEntryState = false;
};
LBAddressChange AddressChange(const LBSlotBefore& before, const LBAddressesBefore& old,
                              const LBAddressBlock& now);

// Bits of an adapter that reaches no gateway now, or none with a slot; `bits` are those of its
// addresses.
std::uint32_t NoGatewayChange(const LBSlotBefore& before, std::uint32_t bits);
// Bits of one that stands behind a gateway slot.
std::uint32_t GatewayChange(const LBSlotBefore& before, std::uint8_t gateway, std::uint32_t bits);

// Bits of an adapter that is not up. An adapter that is down is told until the driver has answered
// by its status word.
std::uint32_t DownChange(const LBSlotBefore& before, bool notManaged);

// What the wireless link was and is, for adapters that were up.
struct LBWlanNetwork {
  std::uint8_t ssid[32] = {};
  std::uint32_t ssidLength = 0;
  std::uint32_t quality = 0;
};
// Another network, the same name at another length, another quality.
std::uint32_t NetworkChange(const LBWlanNetwork& before, const LBWlanNetwork& now);

// Whether a change makes the driver begin with the adapter anew.
struct LBUpdateEnd {
  std::uint32_t bits;
  std::uint8_t slotState;
  std::uint8_t oldState;
  std::uint8_t entryState;
};
bool BeginsAnew(const LBUpdateEnd& end);

}  // namespace corvane
