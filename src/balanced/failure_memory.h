#pragma once
// Access points that refused. Pure, but for the memory itself; ticks in ms.

#include <cstdint>
#include <map>

#include "store/address_text.h"

namespace corvane::balanced {

// Whoever fails waits before it is tried again: 10 s at first, up to half an hour. A step is
// forgiven for each half hour without a failure, all of them by a connect that ends well, and an
// access point that is heard clearly stronger than when it failed may be tried at once.
class FailureMemory {
 public:
  void OnFailure(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now);
  void OnSuccess(const MacAddress& bssid) { m_Failures.erase(bssid); }
  bool IsBarred(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now) const;

 private:
  struct Failure {
    std::uint32_t steps = 0;
    std::uint32_t quality = 0;  // at the last one
    std::uint64_t tick = 0;     // of the last one
  };
  static std::uint32_t StepsLeft(const Failure& failure, std::uint64_t now);

  std::map<MacAddress, Failure> m_Failures;
};

}  // namespace corvane::balanced
