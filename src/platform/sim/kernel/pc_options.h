#pragma once
#include <cstdint>

namespace corvane::platform::sim {

class IPcObserver;

// 2026-01-05T08:00:00Z, a Monday, in seconds since 1970.
inline constexpr std::uint64_t kDefaultStartTime = 1'767'600'000;

struct PcOptions {
  std::uint64_t seed = 1;
  bool interleave = false;  // by the seed, the baton may change hands at any seam call
  double faultRate = 0.0;   // share of seam calls that fail at random, by the seed
  std::uint64_t startTime = kDefaultStartTime;  // wall time of the start, seconds since 1970
  bool echoConsole = false;                     // console output also goes to the real one
  IPcObserver* observer = nullptr;
};

}  // namespace corvane::platform::sim
