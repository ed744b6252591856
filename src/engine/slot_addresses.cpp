#include <cstring>

#include "engine/change_rules.h"
#include "engine/engine_bits.h"
#include "engine/shared_word.h"
#include "engine/slot_update.h"
#include "platform/ip_types.h"

namespace corvane {

using namespace platform;

namespace {

// An adapter that comes up: the driver begins with it anew, unless it was told to be kept. What of
// its status word holds.
std::uint32_t StatusComingUp(LBAdapterEntry* entry, LBAdapterSlot* slot) {
  if ((entry->oldState & slot_state::kKept) != 0) {
    entry->state |= slot_state::kKept;
    return entry->oldStatus;
  }
  Publish(slot->status, 0);
  if (entry->kind.managed && entry->oldState == slot_state::kDown) entry->isNew = true;
  return 0;
}

LBAddressesBefore AddressesOf(const LBAdapterSlot& slot) {
  LBAddressesBefore before;
  before.ip4 = slot.ip4;
  before.anyCounted =
      slot.ip4Count != 0 || slot.moreGlobalCount != 0 || slot.moreUniqueLocalCount != 0;
  std::memcpy(before.global, slot.global, sizeof(before.global));
  return before;
}

// The catch-all takes its own address again where it has been given free.
LBGatewayPlace CatchAll(LBEngineTable* table) {
  LBGatewaySlot* const slot = &table->gateways[kCatchAllSlot];
  if (slot->state == kGatewayFree) TakeCatchAll(slot);
  return {kCatchAllSlot, kNoIndex, kNoIndex};
}

LBGatewayPlace PlaceBehind(LBPass& pass, const LBAdapterEntry& entry,
                           const LBGatewayAddresses& gateway) {
  LBEngineTable* const table = pass.state.Table();
  const bool hasCatchAll = pass.state.Settings().HasCatchAll();
  LBNextHop hop;
  hop.ip4 = gateway.ip4;
  std::memcpy(hop.ip6, gateway.ip6, sizeof(hop.ip6));
  const bool known = !entry.kind.ppp && FindNeighbour(gateway, entry.record->IfIndex, hop.address);

  const CCritSecLock lock(pass.state.m_GatewayLock);
  LBGatewayPlace place;
  if (entry.kind.ppp) {
    place = hasCatchAll ? CatchAll(table) : LBGatewayPlace{kCatchAllSlot};
    place.ip4 = PutGatewayIp4(&table->gateways[kCatchAllSlot], kCatchAllIp4);
    return place;
  }
  if (known) {
    place = LBFindOrTakeGatewaySlot(table->gateways, hop, hasCatchAll, &pass.gatewayCursor);
  } else if (hasCatchAll) {
    place = CatchAll(table);
  }
  if (!place.IsNone() && !IsZero(gateway.ip6)) {
    place.ip6 = PutGatewayIp6(&table->gateways[place.slot], gateway.ip6);
  }
  return place;
}

void StorePlace(const LBGatewayPlace& place, LBAdapterSlot* slot) {
  Put(slot->gatewayIp4, place.ip4);
  Put(slot->gatewayIp6, place.ip6);
  Put(slot->gateway, place.slot);
}

}  // namespace

LBGatewayAddresses LastGateways(const IP_ADAPTER_ADDRESSES& record) {
  LBGatewayAddresses last;
  for (const auto* one = record.FirstGatewayAddress; one; one = one->Next) {
    WORD family = AF_UNSPEC;
    if (!one->Address.lpSockaddr) continue;
    std::memcpy(&family, one->Address.lpSockaddr, sizeof(family));
    if (family == AF_INET) {
      SOCKADDR_IN in;
      std::memcpy(static_cast<void*>(&in), one->Address.lpSockaddr, sizeof(in));
      std::memcpy(&last.ip4, in.sin_addr, sizeof(last.ip4));
    } else if (family == AF_INET6) {
      SOCKADDR_IN6 in;
      std::memcpy(static_cast<void*>(&in), one->Address.lpSockaddr, sizeof(in));
      if (in.sin6_addr[0] != 0xFE || in.sin6_addr[1] != 0x80) continue;
      std::memcpy(last.ip6, in.sin6_addr, sizeof(last.ip6));
    }
  }
  return last;
}

std::uint32_t LBUpdateAddresses(LBPass& pass, LBAdapterEntry* entry, LBAdapterSlot* slot,
                                const LBAddressBlock& block) {
  LBSlotBefore before{(entry->oldState & slot_state::kUp) != 0, entry->oldStatus,
                      entry->oldGateway};
  if (!before.up) before.status = StatusComingUp(entry, slot);
  const LBAddressChange addresses = AddressChange(before, AddressesOf(*slot), block);
  if (addresses.clearsEntryState) entry->state = 0;
  WriteAddresses(block, slot);
  if (!block.HasAny()) {
    StorePlace({}, slot);
    return addresses.bits;
  }
  const LBGatewayAddresses gateway = LastGateways(*entry->record);
  LBGatewayPlace place;
  if (entry->kind.ppp || !gateway.IsNone()) place = PlaceBehind(pass, *entry, gateway);
  StorePlace(place, slot);
  if (place.IsNone()) return NoGatewayChange(before, addresses.bits);
  entry->gateway = place.slot;
  Put(pass.state.Table()->gateways[place.slot].state, kGatewayInUse);
  ++pass.uses[place.slot];
  return GatewayChange(before, place.slot, addresses.bits);
}

}  // namespace corvane
