#pragma once
// What a list of the platform may hold.

#include <cstdint>

namespace corvane {

// Nothing says how long the buffer of a list is, so its count must be believable before an item is
// read: a list beyond these is refused as a failed call.
inline constexpr std::uint32_t kMaxAdapters = 256;
inline constexpr std::uint32_t kMaxListedProfiles = 16384;
inline constexpr std::uint32_t kMaxListedFilters = 16384;
inline constexpr std::uint32_t kMaxBelievedNetworks = 262144;
inline constexpr std::uint32_t kMaxBssListBytes = 1u << 30;

// What is taken from the lists of what is on the air; of a longer one the strongest.
inline constexpr std::uint32_t kMaxNetworksTaken = 16384;
inline constexpr std::uint32_t kMaxEntriesTaken = 131072;

}  // namespace corvane
