#pragma once
#include <cstddef>
#include <span>

#include "engine/change_report.h"
#include "engine/pass_end.h"
#include "engine/slot_update.h"

namespace corvane {

// Looks at the machine's adapters, one pass at a time: classifies each, gives it a slot, and tells
// the driver what changed. Of the discovery thread.
class CLBDiscovery {
 public:
  explicit CLBDiscovery(CLBEngineState& state) : m_Pass{state} {}

  // Before a pass. Under the engine lock.
  void BeginPass();

  // One pass. 0; ERROR_BUFFER_OVERFLOW when the list of adapters has no room, and then all stays as
  // it was; ERROR_SERVICE_ALREADY_RUNNING while another one runs. `comReady`: the thread has COM.
  platform::DWORD LBDiscoverAdapters(bool comReady);

  // After a pass: counts and retires the slots, gives unused gateways free, tells of tunnels.
  void EndPass();

 private:
  // The first adapter of the platform's list; null for none.
  platform::DWORD List(const platform::IP_ADAPTER_ADDRESSES** first);
  void Enter(const platform::IP_ADAPTER_ADDRESSES& record, LBAdapterEntry* entry);
  std::uint32_t LBBindAdapter(const platform::IP_ADAPTER_ADDRESSES& record, LBAdapterEntry* entry);
  void LBReportChanges(std::span<const LBAdapterEntry> entries, std::uint32_t allBits);
  void PublishCounts(const LBSlotCounts& counts, LBTableHeader* header);  // under the engine lock
  void Send(const LBDeviceNotification& notification);

  LBPass m_Pass;
  bool m_bRunning = false;   // under the pass lock
  bool m_bReported = false;  // the first report has been made
  alignas(8) std::byte m_Buffer[kListBytes] = {};
};

}  // namespace corvane
