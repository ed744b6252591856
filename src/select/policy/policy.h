#pragma once
// The selection engine. CGlobalQUAYPolicy has no data: all state lives in the adapter, its entries and
// its configuration. Everything here runs on the adapter's worker, under the global lock.

#include <cstdint>

#include "wlan/binding/wlan_interface.h"

namespace corvane {

class CGlobalQUAYPolicy {
 public:
  // One policy round (policy_round.cpp).
  static void ExecutePolicies(CWlanInterface* pIf);
  // Raises *quality to the model's figure for the connected BSS when that is higher.
  static void UpdateAssociateLQPegging(CWlanInterface* pIf, bool connected, std::uint32_t* quality,
                                       const WString& ssid, const MacAddress& bssid, const char* tag);

  // The choice (choice.cpp).
  static void MakeChoice(CWlanInterface* pIf, const BssEntryList& entries, const ConnectionFacts& facts);
  static void MakeChoice_disconnected(CWlanInterface* pIf, const BssEntryList& entries);

  // The connected decision (connected_decision.cpp).
  static void MakeChoice_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                   const ConnectionFacts& facts);
  static void EnabledFastScan_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                        const ConnectionFacts& facts);
  static bool IsConnectedToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                const ConnectionFacts& facts, CSmartPointer<CWlanBssEntry>* best);

  // Candidates (candidates.cpp).
  static bool IsCandidateReady(CWlanInterface* pIf, CWlanBssEntry* pbssEntry, std::int32_t current_score);
  static bool IncrementCandidateCounters(CWlanInterface* pIf, const MacAddress& connected_bssid,
                                         const BssEntryList& entries, std::int32_t current_score,
                                         CSmartPointer<CWlanBssEntry>* last_qualifier,
                                         CandidateSummary* summary);
  static bool IsBetterCandidatePossible(CWlanInterface* pIf, const BssEntryList& entries,
                                        std::int32_t current_score);
  static std::int32_t RequiredCandidateCount();  // 2 with exactly one adapter, else 3

  // Switching and connecting (switching.cpp).
  static bool SwitchConnectionToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                     std::int32_t current_score, const ConnectionFacts& facts);
  static bool ConnectToBestNoDebounce(CWlanInterface* pIf, const BssEntryList& entries, bool auto_only);

  // MonitorWhileDisabled on, and not both enable flags: decide, but neither connect nor suggest.
  static bool IsMonitorMode(const CQUAYInterfaceConfig& config);
  static bool IsEnabled(const CQUAYInterfaceConfig& config);
};

}  // namespace corvane
