#include "platform/windows/windows_perf_counters.h"

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

PDH_STATUS WindowsPerfCounters::PdhOpenQueryW(LPCWSTR dataSource, std::uintptr_t userData,
                                              PDH_HQUERY* query) {
  return ForwardIfFound("PdhOpenQueryW", CORVANE_FIND(m_Library, PdhOpenQueryW), Wide(dataSource),
                        userData, query);
}

// PdhAddCounterW takes names in the language of the system.
PDH_STATUS WindowsPerfCounters::PdhAddCounterW(PDH_HQUERY query, LPCWSTR path,
                                               std::uintptr_t userData, PDH_HCOUNTER* counter) {
  return ForwardIfFound("PdhAddCounterW", CORVANE_FIND(m_Library, PdhAddEnglishCounterW), query,
                        Wide(path), userData, counter);
}

PDH_STATUS WindowsPerfCounters::PdhCollectQueryData(PDH_HQUERY query) {
  return ForwardIfFound("PdhCollectQueryData", CORVANE_FIND(m_Library, PdhCollectQueryData), query);
}

PDH_STATUS WindowsPerfCounters::PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format,
                                                            DWORD* type,
                                                            PDH_FMT_COUNTERVALUE* value) {
  return ForwardIfFound("PdhGetFormattedCounterValue",
                        CORVANE_FIND(m_Library, PdhGetFormattedCounterValue), counter, format,
                        As32(type), As<::PDH_FMT_COUNTERVALUE>(value));
}

PDH_STATUS WindowsPerfCounters::PdhRemoveCounter(PDH_HCOUNTER counter) {
  return ForwardIfFound("PdhRemoveCounter", CORVANE_FIND(m_Library, PdhRemoveCounter), counter);
}

PDH_STATUS WindowsPerfCounters::PdhCloseQuery(PDH_HQUERY query) {
  return ForwardIfFound("PdhCloseQuery", CORVANE_FIND(m_Library, PdhCloseQuery), query);
}

}  // namespace corvane::platform::windows
