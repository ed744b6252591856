#pragma once
// What a pass leaves in the table. Pure but for the table.

#include <array>
#include <cstdint>

#include "engine/engine_table.h"

namespace corvane {

struct LBSlotCounts {
  std::uint32_t steerable = 0;     // A
  std::uint32_t ownAdapters = 0;   // B
  std::uint32_t steerableNow = 0;  // C; 1 while a tunnel is up
  std::uint32_t liveTunnels = 0;
  friend bool operator==(const LBSlotCounts&, const LBSlotCounts&) = default;
};

// Counts a slot that the pass bound.
void CountSlot(const LBAdapterSlot& slot, LBSlotCounts* counts);

// Takes a slot from an adapter that is gone. True when the driver has to hear of it.
bool RetireSlot(LBAdapterSlot* slot);

// Gateways that nobody stands behind become free; the others get their count.
void SettleGateways(const std::array<std::uint32_t, kGatewaySlots>& uses, LBEngineTable* table);

}  // namespace corvane
