#pragma once
#include <array>

#include "engine/adapter_entry.h"
#include "engine/address_block.h"
#include "engine/engine_state.h"
#include "engine/neighbour_address.h"

namespace corvane {

// What the updates of one pass share. Of the discovery thread, under the engine lock.
struct LBPass {
  CLBEngineState& state;
  std::array<std::int32_t, kAdapterSlots> seen{};   // 1 when the pass bound the slot, else -1
  std::array<std::uint32_t, kGatewaySlots> uses{};  // adapters behind each gateway
  std::array<LBAdapterEntry, kEntries> entries{};
  std::uint32_t gatewayCursor = 0;  // where the next free gateway is looked for
  bool comReady = false;
};

enum class LBSlotMode { kNew = 1, kKnown = 2 };

// Brings an adapter's slot up to date: speed, state, addresses, gateway, wireless and network
// facts. The change bits.
std::uint32_t LBUpdateSlot(LBPass& pass, LBAdapterEntry* entry, LBSlotMode mode);

// The addresses of an adapter that is up, and the gateway behind it. The change bits.
std::uint32_t LBUpdateAddresses(LBPass& pass, LBAdapterEntry* entry, LBAdapterSlot* slot,
                                const LBAddressBlock& block);

// The last gateway of each family; of IPv6, of the link-local ones alone.
LBGatewayAddresses LastGateways(const platform::IP_ADAPTER_ADDRESSES& record);

}  // namespace corvane
