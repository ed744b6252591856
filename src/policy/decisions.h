#pragma once
// The decisions of a policy round. They run on the adapter's worker, under the global lock, and
// read the round that policy_round.cpp has gathered.

#include "policy/round.h"

namespace corvane {

void ExecutePolicies(CWlanInterface& adapter);

// When to decide (choice.cpp).
void MakeChoice(const Round& round);
void MakeChoice_disconnected(const Round& round);

// The connected decision (connected_decision.cpp) and its companions on stale data (fast_scan.cpp).
void MakeChoice_connected(const Round& round);
void EnabledFastScan_connected(const Round& round);
void CheckEarlySuggestedBest(const Round& round);

// The access point that would be best for the adapter, and whether it is there. `entry` is null
// when the connected one is not in the model, or nothing is left beside what others have taken.
struct BestChoice {
  bool isConnected = false;
  CSmartPointer<CWlanBssEntry> entry;
};
BestChoice IsConnectedToBest(const Round& round);

// Candidates (candidates.cpp). `current` is the score of the connected access point.
bool IsCandidateReady(const Round& round, CWlanBssEntry& entry, std::int32_t current);
// What a pass over the counters came to. The qualifier is the one that stands lowest in the list.
struct CountedCandidates {
  bool anyReady = false;
  CSmartPointer<CWlanBssEntry> lastQualifier;
};
CountedCandidates IncrementCandidateCounters(const Round& round, std::int32_t current);
bool IsBetterCandidatePossible(const Round& round, std::int32_t current);
// The entry of the list for a pair that was suggested by event; null without either.
CSmartPointer<CWlanBssEntry> FindSuggestedByEvent(const Round& round, const WString& ssid,
                                                  const MacAddress& bssid);

// Moves (switching.cpp, connecting.cpp): true when the matter is settled.
bool SwitchConnectionToBest(const Round& round, std::int32_t current);
bool ConnectToBestNoDebounce(const Round& round, bool autoOnly);

// What people ask for (requested_connect.cpp): true when it was done. Asking for an accepted
// suggestion consumes it.
bool CheckAcceptSuggestion(const Round& round);
bool CheckExecuteConnectFromUI(const Round& round, const UIConnectRequest& request,
                               const BssEntryList& entries);
enum class ConnectOrigin { kClient, kAcceptance };
struct ConnectOrder : UIConnectRequest {
  ConnectOrigin origin = ConnectOrigin::kClient;
};
bool FindAndConnectToBssEntry(const Round& round, const BssEntryList& entries,
                              const ConnectOrder& order);

}  // namespace corvane
