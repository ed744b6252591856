#pragma once
#include <array>
#include <span>

#include "engine/adapter_entry.h"
#include "engine/driver_records.h"

namespace corvane {

// Notifications in the order in which they are sent.
class LBNotificationList {
 public:
  static constexpr std::size_t kMost = kEntries + 1;

  void Add(std::uint32_t device, std::uint32_t kind, std::uint32_t value) {
    if (m_Count < kMost) m_List[m_Count++] = {LBDeviceNotification{}.magic, device, kind, value};
  }
  const LBDeviceNotification* begin() const { return m_List.data(); }
  const LBDeviceNotification* end() const { return m_List.data() + m_Count; }
  std::size_t Size() const { return m_Count; }

 private:
  std::array<LBDeviceNotification, kMost> m_List{};
  std::size_t m_Count = 0;
};

// What the driver hears at the end of a pass; `allBits` are the bits of all entries. Nothing
// without any, and on the first report of a run one notification for all. Pure.
LBNotificationList ChangeReport(std::span<const LBAdapterEntry> entries, std::uint32_t allBits,
                                bool first);

}  // namespace corvane
