#include "engine/gateway_slots.h"

#include <algorithm>
#include <cstring>

#include "engine/shared_word.h"

namespace corvane {

namespace {

constexpr std::uint32_t kPlaces = 2;

// Place of `address` among the first `count` of two; where it goes when it is not there.
template <class Address>
std::uint8_t PutAddress(Address (&places)[kPlaces], std::uint32_t& count, const Address& address) {
  for (std::uint32_t i = 0; i < count; ++i) {
    if (std::memcmp(&places[i], &address, sizeof(address)) == 0)
      return static_cast<std::uint8_t>(i);
  }
  const std::uint32_t place = std::min(count, kPlaces - 1);
  PutBytes(&places[place], &address, sizeof(address));
  if (count < kPlaces) Publish(count, count + 1);
  return static_cast<std::uint8_t>(place);
}

}  // namespace

bool IsZero(const LBIp6& address) {
  return std::all_of(std::begin(address), std::end(address), [](auto byte) { return byte == 0; });
}

std::uint8_t PutGatewayIp4(LBGatewaySlot* slot, std::uint32_t ip4) {
  return PutAddress(slot->ip4, slot->ip4Count, ip4);
}

std::uint8_t PutGatewayIp6(LBGatewaySlot* slot, const LBIp6& ip6) {
  return PutAddress(slot->ip6, slot->ip6Count, ip6);
}

LBGatewayPlace LBFindOrTakeGatewaySlot(LBGatewaySlot (&slots)[kGatewaySlots], const LBNextHop& hop,
                                       bool hasCatchAll, std::uint32_t* cursor) {
  LBGatewayPlace place;
  for (std::uint8_t i = 0; i < kGatewaySlots; ++i) {
    if (std::memcmp(slots[i].address, hop.address, sizeof(hop.address)) != 0) continue;
    place.slot = i;
    if (hop.ip4 != 0) place.ip4 = PutGatewayIp4(&slots[i], hop.ip4);
    return place;
  }
  for (std::size_t looked = 0; looked < kGatewaySlots; ++looked) {
    const auto i = static_cast<std::uint8_t>(*cursor);
    *cursor = (*cursor + 1) % kGatewaySlots;
    if (slots[i].state != kGatewayFree || (hasCatchAll && i == kCatchAllSlot)) continue;
    LBGatewaySlot& slot = slots[i];
    Put(slot.adapters, static_cast<std::uint16_t>(slot.adapters + 1));
    Publish(slot.ip4Count, 0);
    Publish(slot.ip6Count, 0);
    PutBytes(slot.address, hop.address, sizeof(hop.address));
    place.slot = i;
    if (hop.ip4 != 0) place.ip4 = PutGatewayIp4(&slot, hop.ip4);
    if (!IsZero(hop.ip6)) place.ip6 = PutGatewayIp6(&slot, hop.ip6);
    Put(slot.state, kGatewayInUse);
    return place;
  }
  return place;
}

}  // namespace corvane
