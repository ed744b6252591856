#pragma once
#include <cstdint>

namespace corvane::platform::sim {

// Random numbers that are a function of the seed alone (SplitMix64). Not for secrets.
class SeededRandom {
 public:
  explicit SeededRandom(std::uint64_t seed) : m_State(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = m_State += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }
  // 0 to limit - 1; limit is at least 1. Mostly it is a power of two, which takes no division.
  std::uint64_t Below(std::uint64_t limit) {
    const std::uint64_t next = Next();
    return (limit & (limit - 1)) == 0 ? next & (limit - 1) : next % limit;
  }
  // 0 (included) to 1 (not included).
  double Unit() { return static_cast<double>(Next() >> 11) * 0x1p-53; }

 private:
  std::uint64_t m_State;
};

}  // namespace corvane::platform::sim
