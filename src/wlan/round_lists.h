#pragma once
// The lists that a policy round makes of what is on the air.

#include <vector>

#include "model/wlan_bss_entry.h"
#include "rules/candidate_rules.h"

namespace corvane {

// Everything that the lists come out of: equal inputs give equal lists.
struct ListInputs {
  std::uint64_t air = 0;       // AdapterAir::TakeStamp, for the entries and the marks on them
  std::uint64_t profiles = 0;  // AdapterProfiles::TempProfilesKept
  ScoreContext scores;
  bool inRangeConnected = false;  // an entry of the connection is always in range
  MacAddress inRangeBssid{};
  bool connected = false;
  WString ssid;  // of the connection
  bool preferPrivate = false, networkSwitching = false, allowlistActive = false;
  std::uint64_t denied = 0, allowed = 0;  // CConfigApList::Version
  friend bool operator==(const ListInputs&, const ListInputs&) = default;
};

// An access point that is no candidate.
struct PassedOver {
  CSmartPointer<CWlanBssEntry> entry;
  CandidateStanding standing;
};

struct RoundLists {
  ListInputs inputs;
  BssEntryList candidates;             // best first
  BssEntryList others;                 // in range, but no candidates
  std::vector<PassedOver> passedOver;  // in the order in which it was decided
  WString networksInRange;             // JSON, before the network and the allow list narrow it
  bool connectedInRange = false;
  WString candidateRows, otherRows;  // as clients read them
};

}  // namespace corvane
