#include "engine/change_report.h"

namespace corvane {

LBNotificationList ChangeReport(std::span<const LBAdapterEntry> entries, std::uint32_t allBits,
                                bool first) {
  LBNotificationList report;
  if (allBits == 0) return report;
  if (first) {
    report.Add(kAllDevices, notify_kind::kAll, 0);
    return report;
  }
  std::uint32_t kind = 0;  // goes on from entry to entry
  bool newWithoutInternet = false;
  for (const LBAdapterEntry& entry : entries) {
    if (!entry.kind.managed || entry.changeBits == 0) continue;
    kind = entry.isNew ? notify_kind::kNew : kind | notify_kind::kKnown;
    newWithoutInternet |= entry.isNew && !entry.internet;
    report.Add(entry.slot, kind, entry.changeBits);
  }
  if (newWithoutInternet) report.Add(kAllDevices, notify_kind::kNoInternet, 0);
  return report;
}

}  // namespace corvane
