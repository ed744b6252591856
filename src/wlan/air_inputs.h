#pragma once
// What the tree of networks comes out of when the platform's lists are merged into it.

#include <vector>

#include "model/score_context.h"
#include "wlan/adapter_link.h"
#include "wlan/wlan_buffer.h"

namespace corvane {

// Everything that a merge without a scan reads. A merge whose inputs are equal to those of the one
// before it would write what stands there already: scores go by the inputs alone, and what an entry
// remembers of its connectivity is only ever set, to what the inputs say. What counts by merges is
// not here: a merge after a scan counts what is missing, and element bytes grow old.
struct AirInputs {
  // What the stored profile of a network says; a network without one has none of it.
  struct Profile {
    bool isThere = false, autoConnect = false, nonBroadcast = false;
    std::uint32_t grantedAccess = 0;
    friend bool operator==(const Profile&, const Profile&) = default;
  };
  // Equal lists hold the same bytes but for the times at which they were heard.
  friend bool operator==(const AirInputs& a, const AirInputs& b);

  WlanBuffer<platform::WLAN_AVAILABLE_NETWORK_LIST> networks;
  WlanBuffer<platform::WLAN_BSS_LIST> entries;
  std::vector<Profile> profiles;  // of the listed networks, in their order
  LinkSeen marked, scored;        // by the marks, by the scores
  // The facts of the first look at each entry, which comes before the channel loads are worked out,
  // and of its score; without the averages, which no subtotal reads.
  ScoreContext heardBy, scoredBy;
  std::uint64_t air = 0;  // AdapterAir::Version
};

// The lists are there, and the same.
bool IsSame(const platform::WLAN_AVAILABLE_NETWORK_LIST* a,
            const platform::WLAN_AVAILABLE_NETWORK_LIST* b);
bool IsSame(const platform::WLAN_BSS_LIST* a, const platform::WLAN_BSS_LIST* b);

}  // namespace corvane
