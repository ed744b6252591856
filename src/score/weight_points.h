#pragma once
#include <algorithm>
#include <cstdint>

namespace corvane {

// A weight as points. Weights are not checked for range where they are read; beyond any sense they
// are cut, so that the terms of a score add up within 32 bits.
inline std::int32_t WeightPoints(std::uint32_t weight) {
  return static_cast<std::int32_t>(std::min(weight, std::uint32_t{100'000'000}));
}

}  // namespace corvane
