#include "engine/adapter_discovery.h"

#include <new>

#include "engine/driver_link.h"
#include "engine/engine_trace.h"
#include "engine/pass_end.h"
#include "engine/shared_word.h"
#include "foundation/guarded.h"
#include "platform/driver_api.h"
#include "platform/ip_helper_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

// The flag of the pass that runs, down at the end of the scope.
class RunningFlag {
 public:
  RunningFlag(CCritSec& lock, bool* running) : m_Lock(lock), m_pRunning(running) {
    const CCritSecLock guard(m_Lock);
    m_bTaken = !*m_pRunning;
    *m_pRunning = true;
  }
  ~RunningFlag() {
    const CCritSecLock guard(m_Lock);
    if (m_bTaken) *m_pRunning = false;
  }
  RunningFlag(const RunningFlag&) = delete;
  RunningFlag& operator=(const RunningFlag&) = delete;
  bool IsTaken() const { return m_bTaken; }

 private:
  CCritSec& m_Lock;
  bool* m_pRunning;
  bool m_bTaken;
};

}  // namespace

void CLBDiscovery::BeginPass() {
  m_Pass.seen.fill(-1);
  m_Pass.uses.fill(0);
}

DWORD CLBDiscovery::List(const IP_ADAPTER_ADDRESSES** first) {
  ULONG size = sizeof(m_Buffer);
  auto* const list = reinterpret_cast<IP_ADAPTER_ADDRESSES*>(m_Buffer);
  const DWORD result = Guarded("CLBDiscovery", "GetAdaptersAddresses", ERROR_GEN_FAILURE, [&] {
    return Os().ipHelper.GetAdaptersAddresses(
        AF_UNSPEC, GAA_FLAG_INCLUDE_GATEWAYS | GAA_FLAG_SKIP_MULTICAST, nullptr, list, &size);
  });
  *first = result == ERROR_SUCCESS ? std::launder(list) : nullptr;
  return result;
}

DWORD CLBDiscovery::LBDiscoverAdapters(bool comReady) {
  const RunningFlag running(m_Pass.state.m_PassLock, &m_bRunning);
  if (!running.IsTaken()) return ERROR_SERVICE_ALREADY_RUNNING;
  const IP_ADAPTER_ADDRESSES* first = nullptr;
  if (List(&first) == ERROR_BUFFER_OVERFLOW) return ERROR_BUFFER_OVERFLOW;
  m_Pass.comReady = comReady;
  std::uint32_t allBits = 0;
  std::size_t count = 0;
  for (const auto* record = first; record && count < kEntries; record = record->Next) {
    LBAdapterEntry* const entry = &m_Pass.entries[count++];
    Enter(*record, entry);
    allBits |= entry->changeBits;
  }
  LBReportChanges(std::span(m_Pass.entries).first(count), allBits);
  return ERROR_SUCCESS;
}

// An adapter without a slot is not in the picture: its bits count for nothing.
void CLBDiscovery::Enter(const IP_ADAPTER_ADDRESSES& record, LBAdapterEntry* entry) {
  *entry = {};
  if (!record.Description) return;
  entry->kind = LBClassifyAdapter(record.Description, record.IfType, m_Pass.state.Settings());
  entry->state = entry->kind.state;
  if (!entry->kind.report) return;
  const std::uint32_t bits = LBBindAdapter(record, entry);
  if (entry->slot != kNoIndex) entry->changeBits = bits;
}

// 1 when no slot is free.
std::uint32_t CLBDiscovery::LBBindAdapter(const IP_ADAPTER_ADDRESSES& record,
                                          LBAdapterEntry* entry) {
  const CCritSecLock lock(m_Pass.state.m_EngineLock);
  LBEngineTable* const table = m_Pass.state.Table();
  if (!table) return ERROR_INVALID_DATA;
  entry->record = &record;
  TakeKey(entry);
  const LBSlotChoice choice = ChooseSlot(table->slots, *entry);
  if (choice.slot == kNoIndex) return 1;
  if (choice.isNew) {
    ResetSlot(&table->slots[choice.slot]);
    Put(table->slots[choice.slot].index, choice.slot);
    entry->isNew = true;
  }
  entry->slot = choice.slot;
  m_Pass.seen[choice.slot] = 1;
  if (choice.isNew) {
    LB_TRACE(m_Pass.state, u"slot %u: taken by %s", choice.slot, record.Description);
  }
  return LBUpdateSlot(m_Pass, entry, choice.isNew ? LBSlotMode::kNew : LBSlotMode::kKnown);
}

void CLBDiscovery::LBReportChanges(std::span<const LBAdapterEntry> entries, std::uint32_t allBits) {
  for (const auto& notification : ChangeReport(entries, allBits, !m_bReported)) {
    m_bReported = true;
    Send(notification);
  }
}

void CLBDiscovery::Send(const LBDeviceNotification& notification) {
  const DWORD error = LBSendNotification(notification);
  LB_TRACE(m_Pass.state, u"notification: DevId=%d, kind=%lu, value=0x%x, err=%lu",
           static_cast<std::int32_t>(notification.device), notification.kind, notification.value,
           error);
}

void CLBDiscovery::PublishCounts(const LBSlotCounts& counts, LBTableHeader* header) {
  if (header->steerable != counts.steerable || header->ownAdapters != counts.ownAdapters ||
      header->steerableNow != counts.steerableNow) {
    LB_TRACE(m_Pass.state, u"adapters: %u steerable, %u of the maker's, %u steerable now",
             counts.steerable, counts.ownAdapters, counts.steerableNow);
  }
  Publish(header->steerable, counts.steerable);
  Publish(header->ownAdapters, counts.ownAdapters);
  Publish(header->steerableNow, counts.steerableNow);
}

void CLBDiscovery::EndPass() {
  LBNotificationList told;
  {
    const CCritSecLock lock(m_Pass.state.m_EngineLock);
    LBEngineTable* const table = m_Pass.state.Table();
    LBSlotCounts counts;
    for (std::size_t i = 0; i < kAdapterSlots; ++i) {
      LBAdapterSlot& slot = table->slots[i];
      if (slot.index == kNoIndex) continue;
      if (m_Pass.seen[i] == 1) {
        CountSlot(slot, &counts);
      } else {
        LB_TRACE(m_Pass.state, u"slot %u: retired", slot.index);
        if (RetireSlot(&slot)) told.Add(kAllDevices, notify_kind::kAll, 0);
      }
    }
    const bool tunnel = counts.liveTunnels > 0;
    if (tunnel) counts.steerableNow = 1;
    const bool hadTunnel = m_Pass.state.m_TunnelWord.exchange(tunnel ? 1 : 0) != 0;
    if (tunnel != hadTunnel) {
      told.Add(kAllDevices, notify_kind::kTunnel, tunnel ? kTunnelUp : kTunnelGone);
    }
    PublishCounts(counts, &table->Header());
    const CCritSecLock gateways(m_Pass.state.m_GatewayLock);
    SettleGateways(m_Pass.uses, table);
  }
  for (const auto& notification : told) Send(notification);
}

}  // namespace corvane
