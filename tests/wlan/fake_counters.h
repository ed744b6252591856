#pragma once
#include "platform/perf_counter_api.h"

namespace corvane::test {

// Traffic counters that read what the test sets: half of it sent, half received.
class Counters : public platform::PerfCounterApi {
 public:
  platform::PDH_STATUS PdhOpenQueryW(platform::LPCWSTR, std::uintptr_t,
                                     platform::PDH_HQUERY* query) override {
    return *query = this, 0;
  }
  platform::PDH_STATUS PdhAddCounterW(platform::PDH_HQUERY, platform::LPCWSTR, std::uintptr_t,
                                      platform::PDH_HCOUNTER* counter) override {
    return *counter = this, 0;
  }
  platform::PDH_STATUS PdhCollectQueryData(platform::PDH_HQUERY) override { return 0; }
  platform::PDH_STATUS PdhGetFormattedCounterValue(platform::PDH_HCOUNTER, platform::DWORD,
                                                   platform::DWORD*,
                                                   platform::PDH_FMT_COUNTERVALUE* value) override {
    return value->doubleValue = mbps * 125'000 / 2, 0;
  }
  platform::PDH_STATUS PdhRemoveCounter(platform::PDH_HCOUNTER) override { return 0; }
  platform::PDH_STATUS PdhCloseQuery(platform::PDH_HQUERY) override { return 0; }
  double mbps = 0.0;
};

}  // namespace corvane::test
