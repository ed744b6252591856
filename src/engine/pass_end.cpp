#include "engine/pass_end.h"

#include "engine/engine_bits.h"
#include "engine/shared_word.h"
#include "engine/wlan_reader.h"

namespace corvane {

void CountSlot(const LBAdapterSlot& slot, LBSlotCounts* counts) {
  constexpr std::uint32_t kTunnels = adapter_class::kTunnel | adapter_class::kPpp;
  if ((slot.classFlags & adapter_class::kOwnWired) != 0) ++counts->ownAdapters;
  if ((slot.state & slot_state::kUp) == 0) return;
  if ((slot.state & slot_state::kNotManaged) != 0) {
    if ((slot.baseFlags & kTunnels) != 0) ++counts->liveTunnels;
    return;
  }
  if ((slot.classFlags & adapter_class::kWifiDirect) != 0) return;
  ++counts->steerable;
  if ((slot.classFlags & adapter_class::kDriverTooOld) == 0) ++counts->steerableNow;
}

bool RetireSlot(LBAdapterSlot* slot) {
  constexpr std::uint32_t kRadio = adapter_class::kWireless | adapter_class::kMobile;
  const bool up = (slot->state & slot_state::kUp) != 0;
  const bool notManaged = (slot->state & slot_state::kNotManaged) != 0;
  Put(slot->index, kNoIndex);
  Put(slot->transmitMbps, 0);
  Put(slot->receiveMbps, 0);
  Put(slot->upWord, 0);
  Put(slot->classFlags, 0);
  const std::uint32_t status = std::atomic_ref<std::uint32_t>(slot->status).exchange(0);
  if (up) {
    Put(slot->state,
        static_cast<std::uint8_t>((slot->state & ~slot_state::kUp) | slot_state::kDown));
    Put(slot->runBits, slot->runBits | slot_state::kDown);
  }
  if ((slot->baseFlags & kRadio) != 0) ClearWlanArea(slot);
  return status != 0 && (up || !notManaged);
}

void SettleGateways(const std::array<std::uint32_t, kGatewaySlots>& uses, LBEngineTable* table) {
  for (std::size_t i = 0; i < kGatewaySlots; ++i) {
    if (uses[i] == 0) {
      FreeGateway(&table->gateways[i]);
    } else {
      Put(table->gateways[i].adapters, static_cast<std::uint16_t>(uses[i]));
    }
  }
}

}  // namespace corvane
