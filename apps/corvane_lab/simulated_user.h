#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "platform/sim/kernel/seeded_random.h"

namespace corvane::lab {

// Somebody at the PC who answers suggestions as a client passes it on: half of them with a yes,
// after some seconds up to a minute.
class SimulatedUser {
 public:
  explicit SimulatedUser(std::uint64_t seed) : m_Random(seed) {}
  // Once a second, by whoever drives the PC.
  void Look(std::uint64_t nowMs);

 private:
  struct Sight {
    std::u16string bssid;        // suggested, as last seen
    std::uint64_t answerMs = 0;  // when the yes is due; 0: there is none
  };

  platform::sim::SeededRandom m_Random;
  std::vector<Sight> m_Sights;  // by adapter
};

}  // namespace corvane::lab
