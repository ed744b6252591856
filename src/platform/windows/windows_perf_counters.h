#pragma once
#include "platform/perf_counter_api.h"

namespace corvane::platform::windows {

// Performance counters over pdh.dll. Counter paths are English in every language of the system
// (PdhAddEnglishCounterW).
class WindowsPerfCounters final : public PerfCounterApi {
 public:
  PDH_STATUS PdhOpenQueryW(LPCWSTR dataSource, std::uintptr_t userData, PDH_HQUERY* query) override;
  PDH_STATUS PdhAddCounterW(PDH_HQUERY query, LPCWSTR path, std::uintptr_t userData,
                            PDH_HCOUNTER* counter) override;
  PDH_STATUS PdhCollectQueryData(PDH_HQUERY query) override;
  PDH_STATUS PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format, DWORD* type,
                                         PDH_FMT_COUNTERVALUE* value) override;
  PDH_STATUS PdhRemoveCounter(PDH_HCOUNTER counter) override;
  PDH_STATUS PdhCloseQuery(PDH_HQUERY query) override;
};

}  // namespace corvane::platform::windows
