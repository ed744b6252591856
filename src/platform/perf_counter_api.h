#pragma once
#include "platform/types.h"

namespace corvane::platform {

using PDH_STATUS = LONG;
using PDH_HQUERY = void*;
using PDH_HCOUNTER = void*;

inline constexpr DWORD PDH_FMT_DOUBLE = 0x200;
inline constexpr DWORD PDH_FMT_NOSCALE = 0x1000;

struct PDH_FMT_COUNTERVALUE {
  DWORD CStatus = 0;
  double doubleValue = 0.0;
};

// Performance data helper. Paths are English whatever the system's language. A rate counter needs
// two collections. Results are 0 or an error code. One query serves one thread at a time.
class PerfCounterApi {
 public:
  virtual ~PerfCounterApi() = default;
  virtual PDH_STATUS PdhOpenQueryW(LPCWSTR dataSource, std::uintptr_t userData, PDH_HQUERY* query);
  virtual PDH_STATUS PdhAddCounterW(PDH_HQUERY query, LPCWSTR path, std::uintptr_t userData,
                                    PDH_HCOUNTER* counter);
  virtual PDH_STATUS PdhCollectQueryData(PDH_HQUERY query);
  virtual PDH_STATUS PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format, DWORD* type,
                                                 PDH_FMT_COUNTERVALUE* value);
  virtual PDH_STATUS PdhRemoveCounter(PDH_HCOUNTER counter);
  virtual PDH_STATUS PdhCloseQuery(PDH_HQUERY query);
};

}  // namespace corvane::platform
