#include "engine/engine_table.h"

#include <iterator>

#include "engine/engine_bits.h"
#include "engine/shared_word.h"

namespace corvane {

namespace {

constexpr std::uint32_t kFirstRate = 187'500'000;
constexpr std::uint8_t kFullShare = 100;
constexpr std::uint16_t kNoNext = 0xFFFF;

}  // namespace

void InitTable(LBEngineTable* table) {
  table->Header().version = kTableVersion;
  for (LBAdapterSlot& slot : table->slots) ResetSlot(&slot);
  for (LBGatewaySlot& gateway : table->gateways) {
    FreeGateway(&gateway);
    for (auto& group : gateway.groups) group[0] = group[1] = kFullShare;
  }
  for (LBFlowSlot& flow : table->flows) {
    flow.next = kNoNext;
    flow.shares[0] = flow.shares[1] = kFullShare;
    flow.kind = 4;
  }
}

void InitLinkRecords(LBLinkRecord* records) {
  for (std::size_t i = 0; i < kLinkRecords; ++i) {
    records[i].state = 0;
    records[i].next = kNoNext;
  }
}

void ResetSlot(LBAdapterSlot* slot) {
  Put(slot->index, kNoIndex);
  constexpr std::size_t kUsed = offsetof(LBAdapterSlot, networkFlags);
  constexpr std::size_t kIndex = offsetof(LBAdapterSlot, index);
  auto* const bytes = reinterpret_cast<std::uint8_t*>(slot);
  PutZero(bytes + kUsed, kIndex - kUsed);
  PutZero(bytes + kIndex + 1, sizeof(*slot) - kIndex - 1);
  Put(slot->state, slot_state::kDown);
  Put(slot->gateway, kNoIndex);
}

void FreeGateway(LBGatewaySlot* gateway) {
  Put(gateway->state, kGatewayFree);
  Put(gateway->adapters, 0);
  Put(gateway->rate1, kFirstRate);
  Put(gateway->rate2, kFirstRate);
  Publish(gateway->ip4Count, 0);
  Publish(gateway->ip6Count, 0);
}

void TakeCatchAll(LBGatewaySlot* gateway) {
  constexpr std::uint8_t kAddress[8] = {0xDE, 0xAD, 0xBE, 0xEF, 0xBA, 0xD0, 0x00, 0x00};
  PutBytes(gateway->address, kAddress, sizeof(kAddress));
  Put(gateway->ip4[0], kCatchAllIp4);
  Publish(gateway->ip4Count, 1);
  Publish(gateway->ip6Count, 0);
  Put(gateway->state, kGatewayInUse);
}

}  // namespace corvane
