#pragma once
// What the subtotal, the final score and the backup score count alike.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Link qualities above it earn points, those below it cost some.
inline constexpr double kGoodQuality = 50.0;
inline constexpr std::int32_t kGenerationPoints = 5;  // for each of HT, VHT and HE
inline constexpr std::int32_t kGuestPoints = 3;       // taken from a guest network

// What a link quality (0 to 100) below the good one costs, at most 10.
inline std::int32_t WeakSignalPoints(std::uint32_t quality) {
  if (quality >= kGoodQuality) return 0;
  return std::min(static_cast<std::int32_t>(std::lround((kGoodQuality - quality) / 5.0 + 0.5)), 10);
}

// A guest network by its name.
inline bool IsGuestNetwork(WStringView ssid) {
  return ToLower(ssid).find(u"guest") != WString::npos;
}

// A weight as points. Weights are not checked for range where they are read; beyond any sense they
// are cut, so that the terms of a score add up within 32 bits.
inline std::int32_t WeightPoints(std::uint32_t weight) {
  return static_cast<std::int32_t>(std::min(weight, std::uint32_t{100'000'000}));
}

}  // namespace corvane
