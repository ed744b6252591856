#include "engine/slot_update.h"

#include <algorithm>
#include <cstring>

#include "engine/change_rules.h"
#include "engine/driver_version.h"
#include "engine/engine_bits.h"
#include "engine/network_reader.h"
#include "engine/shared_word.h"
#include "engine/wlan_reader.h"
#include "platform/ip_types.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint16_t kUpWord = 2;
constexpr std::uint32_t kBitsPerMbit = 1'000'000;
constexpr std::uint32_t kRadio = adapter_class::kWireless | adapter_class::kMobile;

// The low 32 bits of the speed count, as the driver expects it.
std::uint32_t Mbps(ULONGLONG bitsPerSecond) {
  return static_cast<std::uint32_t>(bitsPerSecond) / kBitsPerMbit;
}

bool IsUp(const LBAdapterEntry& entry) { return entry.record->OperStatus == IfOperStatusUp; }

template <typename T>
void SetBits(T& field, T set, T clear = 0) {
  Put(field, static_cast<T>((field & ~clear) | set));
}

void SetSpeeds(LBAdapterSlot* slot, std::uint32_t transmit, std::uint32_t receive) {
  Put(slot->transmitMbps, transmit);
  Put(slot->receiveMbps, receive);
}

void ForgetGateway(LBAdapterSlot* slot) {
  Put(slot->gateway, kNoIndex);
  Put(slot->gatewayIp4, kNoIndex);
  Put(slot->gatewayIp6, kNoIndex);
}

void FillDescription(const char16_t* text, LBAdapterSlot* slot) {
  std::array<char16_t, std::size(LBAdapterSlot{}.description)> description{};
  for (std::size_t i = 0; i < description.size() && text[i] != 0; ++i) description[i] = text[i];
  PutBytes(slot->description, description.data(), sizeof(description));
}

// What does not change while the adapter holds the slot.
void FillConstantPart(LBPass& pass, LBAdapterEntry* entry, LBAdapterSlot* slot) {
  const IP_ADAPTER_ADDRESSES& record = *entry->record;
  LBAdapterClass& kind = entry->kind;
  Put(slot->addressLength, entry->keyLength);
  PutBytes(slot->keyAddress, entry->key.data(), entry->key.size());
  PutBytes(slot->platformAddress, kind.ppp ? entry->key.data() : record.PhysicalAddress,
           sizeof(slot->platformAddress));
  FillDescription(record.Description, slot);
  Put(slot->mtu, static_cast<std::uint16_t>(std::min<ULONG>(record.Mtu, 0xFFFF)));
  const bool wireless = (kind.baseFlags & adapter_class::kWireless) != 0;
  if (wireless && kind.needsVersionCheck && ReadWlanDriverVersion() < kFirstGoodDriver) {
    kind.classFlags |= adapter_class::kDriverTooOld;
  }
  Put(slot->classFlags, kind.classFlags);
  Put(slot->baseFlags, kind.baseFlags);
  const std::uint32_t up = slot_state::kUp;
  SetBits(slot->runBits, IsUp(*entry) ? up : 0u, up);
  if (wireless && (kind.classFlags & adapter_class::kPrivateQueries) != 0 &&
      (kind.classFlags & adapter_class::kNoPrivateQueries) == 0) {
    RunPrivateQueries(pass.state.m_Wlan, entry, slot);
  }
}

// An adapter that the engine does not steer over: shown to the driver, without gateway work.
void ShowUnmanaged(LBAdapterEntry* entry, LBAdapterSlot* slot, const LBAddressBlock& block) {
  constexpr std::uint32_t kRunUp = slot_state::kUp | slot_state::kNotManaged;
  std::uint32_t classBits = adapter_class::kNotManaged;
  if (IsUp(*entry)) {
    const std::uint8_t ppp = entry->kind.ppp ? slot_state::kPpp : 0;
    if (entry->kind.ppp) classBits |= adapter_class::kPpp;
    SetSpeeds(slot, Mbps(entry->record->TransmitLinkSpeed), Mbps(entry->record->ReceiveLinkSpeed));
    Put(slot->state, static_cast<std::uint8_t>(kRunUp | ppp));
    Put(slot->runBits, kRunUp);
    Put(slot->upWord, kUpWord);
    WriteAddresses(block, slot);
  } else {
    ForgetGateway(slot);
    WriteAddresses({}, slot);
    SetSpeeds(slot, 0, 0);
    SetBits(slot->state, static_cast<std::uint8_t>(slot_state::kDown | slot_state::kNotManaged),
            slot_state::kUp);
    SetBits<std::uint32_t>(slot->runBits, slot_state::kNotManaged, slot_state::kUp);
    Put(slot->upWord, 0);
  }
  SetBits(slot->classFlags, classBits);
}

void UpdateAttention(const LBAdapterEntry& entry, LBAdapterSlot* slot) {
  if (entry.internet) {
    if (slot->attention == kAttention) Put(slot->attention, 0);
  } else if (entry.isNew && (slot->category & network_flag::kPublic) != 0) {
    Put(slot->attention, kAttention);
  }
}

std::uint32_t UpdateUp(LBPass& pass, LBAdapterEntry* entry, LBAdapterSlot* slot,
                       const LBAddressBlock& block) {
  SetBits(slot->state, slot_state::kUp, slot_state::kDown);
  SetBits<std::uint32_t>(slot->runBits, slot_state::kUp, slot_state::kDown);
  entry->state |= slot_state::kUp;
  entry->oldTransmitMbps = slot->transmitMbps;
  entry->oldReceiveMbps = slot->receiveMbps;
  Put(slot->upWord, kUpWord);
  SetSpeeds(slot, Mbps(entry->record->TransmitLinkSpeed), Mbps(entry->record->ReceiveLinkSpeed));
  const std::uint32_t addressBits = LBUpdateAddresses(pass, entry, slot, block);
  if (entry->kind.wifiDirect) return 0;
  if (entry->kind.tunnel && !entry->kind.managed) {
    SetBits(slot->state, slot_state::kNotManaged);
  }
  std::uint32_t bits = addressBits;
  if (addressBits != 0) entry->state = static_cast<std::uint8_t>(addressBits);
  const std::uint32_t base = entry->kind.baseFlags;
  if ((base & kRadio) != 0 && (base & adapter_class::kManaged) != 0 &&
      (bits & change::kDown) == 0) {
    const std::uint32_t wlan = LBReadWlanState(pass.state.m_Wlan, entry, slot).bits;
    bits |= wlan | ((wlan & change::kMoved) != 0 ? change::kAddresses : 0);
  }
  // Judged behind the wireless reading, whose rates stand for the platform's figures.
  if (addressBits == 0 && (slot->transmitMbps != entry->oldTransmitMbps ||
                           slot->receiveMbps != entry->oldReceiveMbps)) {
    bits |= change::kSpeed;
  }
  LBReadNetworkState(entry, slot, pass.comReady, pass.state.IsStopping());
  if (slot->networkFlags != entry->oldNetworkFlags) bits |= change::kNetwork;
  UpdateAttention(*entry, slot);
  return bits;
}

std::uint32_t UpdateDown(LBAdapterEntry* entry, LBAdapterSlot* slot, const LBSlotBefore& before) {
  const bool notManaged = (slot->state & slot_state::kNotManaged) != 0;
  const bool silent = entry->kind.tunnel && !entry->kind.managed;
  const std::uint32_t bits = silent ? 0 : DownChange(before, notManaged);
  SetBits(slot->state, slot_state::kDown, slot_state::kUp);
  SetBits<std::uint32_t>(slot->runBits, slot_state::kDown, slot_state::kUp);
  entry->state = static_cast<std::uint8_t>((entry->state & ~slot_state::kUp) | slot_state::kDown);
  Publish(slot->networkFlags, 0);
  ForgetGateway(slot);
  WriteAddresses({}, slot);
  SetSpeeds(slot, 0, 0);
  Put(slot->upWord, 0);
  return bits;
}

}  // namespace

std::uint32_t LBUpdateSlot(LBPass& pass, LBAdapterEntry* entry, LBSlotMode mode) {
  if (!entry->record) return 0;
  const LBAdapterClass& kind = entry->kind;
  LBAdapterSlot* const slot = &pass.state.Table()->slots[entry->slot];
  if (mode == LBSlotMode::kKnown && slot->index != entry->slot) {
    if (slot->index == kNoIndex) {
      entry->isNew = true;
      mode = LBSlotMode::kNew;
    }
    Put(slot->index, entry->slot);
  }
  if (mode == LBSlotMode::kNew) FillConstantPart(pass, entry, slot);
  if ((entry->state & slot_state::kNotManaged) != 0) SetBits(slot->state, slot_state::kNotManaged);
  if (kind.managed) {
    entry->oldState = slot->state;
    entry->oldGateway = slot->gateway;
    entry->oldNetworkFlags = slot->networkFlags;
    entry->oldStatus = ReadShared(slot->status);
  }
  const LBSlotBefore before{(slot->state & slot_state::kUp) != 0, ReadShared(slot->status),
                            slot->gateway};
  const LBAddressBlock block = CollectAddresses(entry->record->FirstUnicastAddress);
  if (!kind.managed) {
    ShowUnmanaged(entry, slot, block);
    if (!kind.wifiDirect && !kind.hyperV && !kind.ppp && !kind.tunnel) return 0;
  }
  const std::uint32_t bits =
      IsUp(*entry) ? UpdateUp(pass, entry, slot, block) : UpdateDown(entry, slot, before);
  if (kind.hyperV) return 0;
  if (BeginsAnew({bits, slot->state, entry->oldState, entry->state})) {
    entry->isNew = true;
    Publish(slot->status, 0);
  }
  return bits;
}

}  // namespace corvane
