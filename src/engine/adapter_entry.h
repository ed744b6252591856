#pragma once
#include <array>
#include <cstdint>

#include "engine/adapter_class.h"
#include "engine/engine_table.h"
#include "platform/types.h"

namespace corvane::platform {
struct IP_ADAPTER_ADDRESSES;
}

namespace corvane {

// What one pass knows of one adapter. Its record and texts lie in the pass's buffer.
struct LBAdapterEntry {
  LBAdapterClass kind;
  const platform::IP_ADAPTER_ADDRESSES* record = nullptr;
  std::array<std::uint8_t, 8> key{};  // hardware address as the slot is keyed
  std::uint16_t keyLength = 0;
  std::uint32_t changeBits = 0;
  std::uint8_t state = 0;  // slot_state bits of this pass; after a change, the change bits instead
  std::uint8_t slot = kNoIndex;
  std::uint8_t gateway = kNoIndex;
  bool isNew = false;  // its slot was taken in this pass, or begins anew

  // The slot's words before this pass, of a managed adapter.
  std::uint8_t oldState = 0;
  std::uint8_t oldGateway = kNoIndex;
  std::uint32_t oldNetworkFlags = 0;
  std::uint32_t oldStatus = 0;
  std::uint32_t oldTransmitMbps = 0;
  std::uint32_t oldReceiveMbps = 0;

  bool interfaceKnown = false;
  platform::GUID wlanInterface;
  bool internet = false;
};

inline constexpr std::size_t kEntries = 30;        // of one pass
inline constexpr std::size_t kListBytes = 13'440;  // of the platform's list of adapters

// A PPP link has no address of its own: all of them share this one.
inline constexpr std::array<std::uint8_t, 8> kPppKey = {0x0A, 0xFA, 0x7E, 0x0A, 0x0D, 0x0D};
inline constexpr std::uint16_t kPppKeyLength = 6;

// Gives the entry the key of its slot: the adapter's hardware address, which a Wi-Fi Direct adapter
// shares with the radio that it lives on and so takes one byte further.
void TakeKey(LBAdapterEntry* entry);

struct LBSlotChoice {
  std::uint8_t slot = kNoIndex;  // kNoIndex: none is free
  bool isNew = false;
};
// The slot of an adapter by its key, or the lowest free one.
LBSlotChoice ChooseSlot(const LBAdapterSlot (&slots)[kAdapterSlots], const LBAdapterEntry& entry);

}  // namespace corvane
