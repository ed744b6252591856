#pragma once
#include <cstdint>

#include "platform/perf_counter_api.h"

namespace corvane {

// Measures what an adapter really sends, by its performance counter. For one thread.
class CBlastMeter {
 public:
  ~CBlastMeter();
  // Opens the counter and takes the first sample; false without an interface of this index.
  bool InitPdhCountersForIF(std::uint32_t ifIndex);
  // Mbps since the sample before; 0 when it can't be read.
  double Sample();

 private:
  bool Open(std::uint32_t ifIndex);
  double Read();

  platform::PDH_HQUERY m_hQuery = nullptr;
  platform::PDH_HCOUNTER m_hCounter = nullptr;
};

}  // namespace corvane
