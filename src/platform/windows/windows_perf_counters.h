#pragma once
#include "platform/perf_counter_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// Performance counters over pdh.dll. Counter paths are English in every language of the system
// (PdhAddEnglishCounterW).
class WindowsPerfCounters final : public PerfCounterApi {
 public:
  explicit WindowsPerfCounters(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  PDH_STATUS PdhOpenQueryW(LPCWSTR dataSource, std::uintptr_t userData, PDH_HQUERY* query) override;
  PDH_STATUS PdhAddCounterW(PDH_HQUERY query, LPCWSTR path, std::uintptr_t userData,
                            PDH_HCOUNTER* counter) override;
  PDH_STATUS PdhCollectQueryData(PDH_HQUERY query) override;
  PDH_STATUS PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format, DWORD* type,
                                         PDH_FMT_COUNTERVALUE* value) override;
  PDH_STATUS PdhRemoveCounter(PDH_HCOUNTER counter) override;
  PDH_STATUS PdhCloseQuery(PDH_HQUERY query) override;

 private:
  static inline constinit const SystemLibrary kLibrary{L"pdh.dll"};

  const SystemLibrary& m_Library;
};

}  // namespace corvane::platform::windows
