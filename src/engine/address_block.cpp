#include "engine/address_block.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "engine/gateway_slots.h"
#include "engine/shared_word.h"
#include "platform/ip_types.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint8_t kLinkLocalByte = 169;
constexpr std::size_t kIdentifierAt = 8;  // the interface identifier: the low 64 bits

void Copy(LBIp6& to, const LBIp6& from) { std::memcpy(to, from, sizeof(LBIp6)); }

bool SameIdentifier(const LBIp6& a, const LBIp6& b) {
  return std::memcmp(a + kIdentifierAt, b + kIdentifierAt, sizeof(LBIp6) - kIdentifierAt) == 0;
}

void AddIp4(const SOCKADDR_IN& address, std::uint8_t prefixLength, LBAddressBlock* block) {
  std::uint32_t ip4;
  std::memcpy(&ip4, address.sin_addr, sizeof(ip4));
  const std::uint32_t mask = Ip4MaskOf(prefixLength);
  if (address.sin_addr[0] == kLinkLocalByte) {
    block->linkLocalIp4 = ip4;
    block->linkLocalIp4Mask = mask;
  } else if (block->ip4 == 0) {
    block->ip4 = ip4;
    block->ip4Mask = mask;
  } else {
    block->secondIp4 = ip4;
    block->secondIp4Mask = mask;
  }
}

// The first of a kind has a place of its own; ten more have a list.
void AddToPlaces(const LBIp6& address, LBIp6& first, LBIp6 (&more)[kMoreAddresses],
                 std::uint32_t* count) {
  if (IsZero(first)) {
    Copy(first, address);
  } else if (*count < kMoreAddresses) {
    Copy(more[(*count)++], address);
  }
}

void AddIp6(const SOCKADDR_IN6& address, std::uint32_t dadState, LBAddressBlock* block) {
  const LBIp6& ip6 = address.sin6_addr;
  if (ip6[0] == 0xFE && ip6[1] == 0x80) {
    if (IsZero(block->linkLocal)) Copy(block->linkLocal, ip6);
    return;
  }
  if (dadState != IpDadStatePreferred) return;
  if (ip6[0] == 0xFD) {
    AddToPlaces(ip6, block->uniqueLocal, block->moreUniqueLocal, &block->moreUniqueLocalCount);
  }
  AddToPlaces(ip6, block->global, block->moreGlobal, &block->moreGlobalCount);
}

// Place of the further address with the link-local one's interface identifier; -1 for none, or when
// the first has it already.
int BetterFirst(const LBIp6& first, const LBIp6 (&more)[kMoreAddresses], std::uint32_t count,
                const LBIp6& linkLocal) {
  if (IsZero(first) || SameIdentifier(first, linkLocal)) return -1;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (SameIdentifier(more[i], linkLocal)) return static_cast<int>(i);
  }
  return -1;
}

// The address that the adapter made of its own identifier comes first.
void OrderAddresses(LBAddressBlock* block) {
  if (IsZero(block->linkLocal)) return;
  if (const int at =
          BetterFirst(block->global, block->moreGlobal, block->moreGlobalCount, block->linkLocal);
      at >= 0) {
    Copy(block->displaced, block->global);
    Copy(block->global, block->moreGlobal[at]);
    std::memset(block->moreGlobal[at], 0, sizeof(LBIp6));
  }
  if (block->moreUniqueLocalCount >= kMoreAddresses) return;
  if (const int at = BetterFirst(block->uniqueLocal, block->moreUniqueLocal,
                                 block->moreUniqueLocalCount, block->linkLocal);
      at >= 0) {
    std::swap(block->uniqueLocal, block->moreUniqueLocal[at]);
  }
}

// Writes what is not empty, without holes, and its count.
void WriteList(const LBIp6 (&list)[kMoreAddresses], LBIp6 (&out)[kMoreAddresses],
               std::uint32_t& count) {
  LBIp6 packed[kMoreAddresses] = {};
  std::uint32_t held = 0;
  for (const LBIp6& address : list) {
    if (!IsZero(address)) Copy(packed[held++], address);
  }
  if (held < count) Publish(count, held);
  PutBytes(out, packed, sizeof(packed));
  Publish(count, held);
}

}  // namespace

bool LBAddressBlock::HasIp6() const { return !IsZero(global) || !IsZero(linkLocal); }

std::uint32_t Ip4MaskOf(std::uint8_t prefixLength) {
  std::uint8_t bytes[4] = {};
  for (int bit = 0; bit < std::min<int>(prefixLength, 32); ++bit) {
    bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] | 0x80u >> bit % 8);
  }
  std::uint32_t mask;
  std::memcpy(&mask, bytes, sizeof(mask));
  return mask;
}

LBAddressBlock CollectAddresses(const IP_ADAPTER_UNICAST_ADDRESS* first) {
  LBAddressBlock block;
  for (const auto* one = first; one; one = one->Next) {
    const auto length = static_cast<std::size_t>(std::max(one->Address.iSockaddrLength, 0));
    WORD family = AF_UNSPEC;
    if (!one->Address.lpSockaddr || length < sizeof(SOCKADDR_IN)) continue;
    std::memcpy(&family, one->Address.lpSockaddr, sizeof(family));
    if (family == AF_INET) {
      SOCKADDR_IN address;
      std::memcpy(static_cast<void*>(&address), one->Address.lpSockaddr, sizeof(address));
      AddIp4(address, one->OnLinkPrefixLength, &block);
    } else if (family == AF_INET6 && length >= sizeof(SOCKADDR_IN6)) {
      SOCKADDR_IN6 address;
      std::memcpy(static_cast<void*>(&address), one->Address.lpSockaddr, sizeof(address));
      AddIp6(address, one->DadState, &block);
    }
  }
  OrderAddresses(&block);
  if (block.ip4 == 0 && block.linkLocalIp4 != 0) {
    block.ip4 = block.linkLocalIp4;
    block.ip4Mask = block.linkLocalIp4Mask;
    block.onLinkLocal = true;
  }
  return block;
}

void WriteAddresses(const LBAddressBlock& block, LBAdapterSlot* slot) {
  const std::uint32_t ip4Count = block.Ip4Count();
  if (ip4Count < slot->ip4Count) Publish(slot->ip4Count, ip4Count);
  Put(slot->ip4, block.ip4);
  Put(slot->ip4Mask, block.ip4Mask);
  Put(slot->secondIp4, block.secondIp4);
  Put(slot->secondIp4Mask, block.secondIp4Mask);
  Put(slot->linkLocalIp4, block.linkLocalIp4);
  Publish(slot->ip4Count, ip4Count);
  PutBytes(slot->global, block.global, sizeof(LBIp6));
  WriteList(block.moreGlobal, slot->moreGlobal, slot->moreGlobalCount);
  PutBytes(slot->linkLocal, block.linkLocal, sizeof(LBIp6));
  PutBytes(slot->uniqueLocal, block.uniqueLocal, sizeof(LBIp6));
  PutBytes(slot->displaced, block.displaced, sizeof(LBIp6));
  WriteList(block.moreUniqueLocal, slot->moreUniqueLocal, slot->moreUniqueLocalCount);
}

}  // namespace corvane
