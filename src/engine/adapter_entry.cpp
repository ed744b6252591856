#include "engine/adapter_entry.h"

#include <algorithm>
#include <cstring>

#include "platform/ip_types.h"

namespace corvane {

void TakeKey(LBAdapterEntry* entry) {
  if (entry->kind.ppp) {
    entry->key = kPppKey;
    entry->keyLength = kPppKeyLength;
    return;
  }
  const platform::IP_ADAPTER_ADDRESSES& record = *entry->record;
  const std::size_t length = std::min<std::size_t>(record.PhysicalAddressLength, entry->key.size());
  entry->key.fill(0);
  std::copy_n(record.PhysicalAddress, length, entry->key.begin());
  entry->keyLength = static_cast<std::uint16_t>(length);
  if (entry->kind.wifiDirect && length < entry->key.size()) {
    entry->key[length] = 1;
    ++entry->keyLength;
  }
}

LBSlotChoice ChooseSlot(const LBAdapterSlot (&slots)[kAdapterSlots], const LBAdapterEntry& entry) {
  LBSlotChoice choice;
  for (std::uint8_t i = 0; i < kAdapterSlots; ++i) {
    const LBAdapterSlot& slot = slots[i];
    const auto holds = [&](const std::uint8_t* address) {
      return std::memcmp(address, entry.key.data(), entry.key.size()) == 0;
    };
    if (slot.addressLength == entry.keyLength &&
        (holds(slot.keyAddress) || holds(slot.platformAddress))) {
      return {i, false};
    }
    if (choice.slot == kNoIndex && slot.index == kNoIndex) choice = {i, true};
  }
  return choice;
}

}  // namespace corvane
