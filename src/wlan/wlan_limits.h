#pragma once
// What a list of the platform may hold. A list beyond its limit is refused as a failed call:
// nothing says how long its buffer is, so its count must be believable before an item is read.

#include <cstdint>

namespace corvane {

inline constexpr std::uint32_t kMaxAdapters = 256;
inline constexpr std::uint32_t kMaxListedNetworks = 16384;
inline constexpr std::uint32_t kMaxListedProfiles = 16384;
inline constexpr std::uint32_t kMaxListedFilters = 16384;
inline constexpr std::uint32_t kMaxBssListBytes = 64u << 20;

}  // namespace corvane
