#include "platform/perf_counter_api.h"

namespace corvane::platform {

PDH_STATUS PerfCounterApi::PdhOpenQueryW(LPCWSTR, std::uintptr_t, PDH_HQUERY*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

PDH_STATUS PerfCounterApi::PdhAddCounterW(PDH_HQUERY, LPCWSTR, std::uintptr_t, PDH_HCOUNTER*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

PDH_STATUS PerfCounterApi::PdhCollectQueryData(PDH_HQUERY) { return ERROR_CALL_NOT_IMPLEMENTED; }

PDH_STATUS PerfCounterApi::PdhGetFormattedCounterValue(PDH_HCOUNTER, DWORD, DWORD*,
                                                       PDH_FMT_COUNTERVALUE*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

PDH_STATUS PerfCounterApi::PdhRemoveCounter(PDH_HCOUNTER) { return ERROR_CALL_NOT_IMPLEMENTED; }
PDH_STATUS PerfCounterApi::PdhCloseQuery(PDH_HQUERY) { return ERROR_CALL_NOT_IMPLEMENTED; }

}  // namespace corvane::platform
