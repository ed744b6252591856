#pragma once
// How far a PHY generation has come, to compare what the two ends of a link can do. Pure.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Of a class text: "ax" 7, "ac" 5, "n" 4, "g" 3, "b" 2, "a" 1, anything else 0.
std::int32_t PhyLevelOf(WStringView classText);

enum class PhyMatch { kSame, kAccessPointBetter, kAdapterBetter, kAdapterBetterInVain };

// kAdapterBetterInVain: an 802.11ac adapter on an 802.11n access point in the 2.4 GHz band, where
// VHT does not exist (IEEE 802.11-2020 clause 21.1.1), so that nothing is lost.
PhyMatch ComparePhys(WStringView adapterClass, WStringView apClass, std::uint32_t frequencyKHz);

}  // namespace corvane
