#include "wlan/air_inputs.h"

#include <cstring>

namespace corvane {

namespace {

using namespace platform;

// Of a record all but the time stamps, which are between these two.
constexpr std::size_t kTimesAt = offsetof(WLAN_BSS_ENTRY, ullTimestamp);
constexpr std::size_t kTimesEnd = offsetof(WLAN_BSS_ENTRY, usCapabilityInformation);

bool IsSameRecord(const WLAN_BSS_ENTRY& a, const WLAN_BSS_ENTRY& b) {
  const auto* one = reinterpret_cast<const std::uint8_t*>(&a);
  const auto* other = reinterpret_cast<const std::uint8_t*>(&b);
  return std::memcmp(one, other, kTimesAt) == 0 &&
         std::memcmp(one + kTimesEnd, other + kTimesEnd, sizeof(a) - kTimesEnd) == 0;
}

// Only the connectivity of the networks leaves a trace of the first look at an entry.
bool IsHeardAlike(const ScoreContext& a, const ScoreContext& b) {
  return a.vpnFound == b.vpnFound && IsSame(a.networks, b.networks);
}

}  // namespace

bool IsSame(const WLAN_AVAILABLE_NETWORK_LIST* a, const WLAN_AVAILABLE_NETWORK_LIST* b) {
  return a && b && a->dwNumberOfItems == b->dwNumberOfItems &&
         std::memcmp(a->Network, b->Network, a->dwNumberOfItems * sizeof(WLAN_AVAILABLE_NETWORK)) ==
             0;
}

bool IsSame(const WLAN_BSS_LIST* a, const WLAN_BSS_LIST* b) {
  if (!a || !b || a->dwTotalSize != b->dwTotalSize || a->dwNumberOfItems != b->dwNumberOfItems)
    return false;
  const WLAN_BSS_ENTRY* const one = a->wlanBssEntries;
  const WLAN_BSS_ENTRY* const other = b->wlanBssEntries;
  for (DWORD i = 0; i < a->dwNumberOfItems; ++i) {
    if (!IsSameRecord(one[i], other[i])) return false;
  }
  const std::size_t records =
      offsetof(WLAN_BSS_LIST, wlanBssEntries) + a->dwNumberOfItems * sizeof(WLAN_BSS_ENTRY);
  return std::memcmp(reinterpret_cast<const std::uint8_t*>(a) + records,
                     reinterpret_cast<const std::uint8_t*>(b) + records,
                     a->dwTotalSize - records) == 0;
}

bool operator==(const AirInputs& a, const AirInputs& b) {
  return a.air == b.air && a.marked == b.marked && a.scored == b.scored &&
         a.profiles == b.profiles && IsHeardAlike(a.heardBy, b.heardBy) &&
         a.scoredBy == b.scoredBy && IsSame(a.networks.get(), b.networks.get()) &&
         IsSame(a.entries.get(), b.entries.get());
}

}  // namespace corvane
