#pragma once
#include <cstdint>
#include <utility>

#include "platform/sim/world/world.h"

namespace corvane::lab {

inline std::uint64_t Middle(std::uint64_t a, std::uint64_t b) {
  return a < b ? a + (b - a) / 2 : b;
}

// Signal strength in dBm that shows on the simulated PC as this quality and, where the two agree,
// as this strength.
double DbmOf(std::int32_t rssi, std::uint32_t quality);

// The track of one access point as one adapter heard it, out of what each reading says, in the
// order of time.
class TrackMaker {
 public:
  // A reading stands for the second around it: the replay may be a little early or late.
  void Hear(std::uint64_t ms, double dbm);
  // A scan that did not hear it.
  void Miss(std::uint64_t ms);
  platform::sim::HeardTrack Take() { return std::move(m_Track); }

 private:
  void Add(std::uint64_t ms, double dbm);

  platform::sim::HeardTrack m_Track;
  bool m_bHeard = false;
  bool m_bMissed = false;
  std::uint64_t m_LastMs = 0;
  double m_HeldDbm = 0.0;  // at that time
};

}  // namespace corvane::lab
