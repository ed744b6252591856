#pragma once
// The selection engine as others call it; inside, its decisions take the round (decisions.h).
// CGlobalQUAYPolicy has no data: all state lives in the adapter, its entries and its configuration.
// Everything here runs on the adapter's worker, under the global lock.

#include <cstdint>

#include "wlan/wlan_interface.h"

namespace corvane {

struct ConnectOrder;

class CGlobalQUAYPolicy {
 public:
  // One policy round (policy_round.cpp). Exceptions of the platform go through to the worker.
  static void ExecutePolicies(CWlanInterface* pIf);
  // Raises *quality to the model's figure for the connected BSS when that is higher. `tag` is for
  // the log.
  static void UpdateAssociateLQPegging(CWlanInterface* pIf, bool connected, std::uint32_t* quality,
                                       const WString& ssid, const MacAddress& bssid,
                                       const char* tag);

  // The choice (choice.cpp).
  static void MakeChoice(CWlanInterface* pIf, const BssEntryList& entries,
                         const ConnectionFacts& facts);
  static void MakeChoice_disconnected(CWlanInterface* pIf, const BssEntryList& entries);

  // The connected decision (connected_decision.cpp) and its companions on stale data
  // (fast_scan.cpp).
  static void MakeChoice_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                   const ConnectionFacts& facts);
  // True: `best` is the connected access point, or null when that is not in the model.
  static bool IsConnectedToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                const ConnectionFacts& facts, CSmartPointer<CWlanBssEntry>* best);
  static void EnabledFastScan_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                        const ConnectionFacts& facts);
  // Closes a suggestion by event that the user has taken up by hand.
  static void CheckEarlySuggestedBest(CWlanInterface* pIf, const BssEntryList& entries,
                                      const ConnectionFacts& facts);

  // Candidates (candidates.cpp). Lists are sorted, best first.
  static bool IsCandidateReady(CWlanInterface* pIf, CWlanBssEntry* pbssEntry,
                               std::int32_t current_score);
  // True when one is ready. *last_qualifier is the qualifying entry that stands lowest in the list.
  static bool IncrementCandidateCounters(CWlanInterface* pIf, const MacAddress& connected_bssid,
                                         const BssEntryList& entries, std::int32_t current_score,
                                         CSmartPointer<CWlanBssEntry>* last_qualifier);
  static bool IsBetterCandidatePossible(CWlanInterface* pIf, const BssEntryList& entries,
                                        std::int32_t current_score);
  // The pair was suggested by event, and *entry of the list is it.
  static bool IsConnectedToSuggestedBest_ETW(CWlanInterface* pIf, const BssEntryList& entries,
                                             const WString& ssid, const MacAddress& bssid,
                                             CSmartPointer<CWlanBssEntry>* entry);
  static std::int32_t RequiredCandidateCount();  // 2 with exactly one adapter, else 3

  // Leaving a connection for a candidate (switching.cpp). True when the matter is settled:
  // connected, suggested, or nothing to be done.
  static bool SwitchConnectionToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                     std::int32_t current_score, const ConnectionFacts& facts);
  // Connecting an adapter that has no connection (connecting.cpp). True when something was done.
  static bool ConnectToBestNoDebounce(CWlanInterface* pIf, const BssEntryList& entries,
                                      bool auto_only);

  // What people ask for (requested_connect.cpp); all true when connected, or when the user has been
  // asked for credentials. Asking for an accepted suggestion consumes it.
  static bool CheckAcceptSuggestion(CWlanInterface* pIf, const BssEntryList& entries,
                                    const ConnectionFacts& facts);
  static bool CheckExecuteConnectFromUI(CWlanInterface* pIf, const UIConnectRequest& request,
                                        const BssEntryList& entries, const ConnectionFacts& facts);
  static bool FindAndConnectToBssEntry(CWlanInterface* pIf, const BssEntryList& entries,
                                       const ConnectOrder& order, const ConnectionFacts& facts);
};

}  // namespace corvane
