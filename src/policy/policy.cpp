#include "policy/policy.h"

#include "policy/decisions.h"
#include "policy/policy_log.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

Round RoundOf(CWlanInterface& adapter, const BssEntryList& entries, const ConnectionFacts& facts) {
  Round round(adapter);
  round.candidates = entries;
  round.facts = facts;
  return round;
}

bool IsMissing(const CWlanInterface* pIf, const char* operation) {
  if (pIf) return false;
  LOG_DEBUG(kNullInterfaceLog, u"%S: pIf is NULL!\n", operation);
  return true;
}

}  // namespace

void CGlobalQUAYPolicy::ExecutePolicies(CWlanInterface* pIf) {
  if (IsMissing(pIf, "ExecutePolicies")) return;
  const CSmartPointer<CWlanInterface> adapter(pIf);
  corvane::ExecutePolicies(*adapter);
}

void CGlobalQUAYPolicy::MakeChoice(CWlanInterface* pIf, const BssEntryList& entries,
                                   const ConnectionFacts& facts) {
  corvane::MakeChoice(RoundOf(*pIf, entries, facts));
}

void CGlobalQUAYPolicy::MakeChoice_disconnected(CWlanInterface* pIf, const BssEntryList& entries) {
  if (IsMissing(pIf, "MakeChoice_disconnected")) return;
  corvane::MakeChoice_disconnected(RoundOf(*pIf, entries, {}));
}

void CGlobalQUAYPolicy::MakeChoice_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                             const ConnectionFacts& facts) {
  if (IsMissing(pIf, "MakeChoice_connected")) return;
  corvane::MakeChoice_connected(RoundOf(*pIf, entries, facts));
}

bool CGlobalQUAYPolicy::IsConnectedToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                          const ConnectionFacts& facts,
                                          CSmartPointer<CWlanBssEntry>* best) {
  BestChoice found = corvane::IsConnectedToBest(RoundOf(*pIf, entries, facts));
  *best = std::move(found.entry);
  return found.isConnected;
}

void CGlobalQUAYPolicy::EnabledFastScan_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                                  const ConnectionFacts& facts) {
  if (IsMissing(pIf, "EnabledFastScan_connected")) return;
  corvane::EnabledFastScan_connected(RoundOf(*pIf, entries, facts));
}

void CGlobalQUAYPolicy::CheckEarlySuggestedBest(CWlanInterface* pIf, const BssEntryList& entries,
                                                const ConnectionFacts& facts) {
  corvane::CheckEarlySuggestedBest(RoundOf(*pIf, entries, facts));
}

bool CGlobalQUAYPolicy::IsCandidateReady(CWlanInterface* pIf, CWlanBssEntry* pbssEntry,
                                         std::int32_t current_score) {
  if (IsMissing(pIf, "IsCandidateReady")) return false;
  if (!pbssEntry) {
    LOG_DEBUG(kNullInterfaceLog, u"IsCandidateReady: pbssEntry is NULL!\n");
    return false;
  }
  return corvane::IsCandidateReady(Round(*pIf), *pbssEntry, current_score);
}

bool CGlobalQUAYPolicy::IncrementCandidateCounters(CWlanInterface* pIf,
                                                   const MacAddress& connected_bssid,
                                                   const BssEntryList& entries,
                                                   std::int32_t current_score,
                                                   CSmartPointer<CWlanBssEntry>* last_qualifier) {
  ConnectionFacts facts;
  facts.bssid = connected_bssid;
  CountedCandidates counted =
      corvane::IncrementCandidateCounters(RoundOf(*pIf, entries, facts), current_score);
  *last_qualifier = std::move(counted.lastQualifier);
  return counted.anyReady;
}

bool CGlobalQUAYPolicy::IsBetterCandidatePossible(CWlanInterface* pIf, const BssEntryList& entries,
                                                  std::int32_t current_score) {
  return corvane::IsBetterCandidatePossible(RoundOf(*pIf, entries, {}), current_score);
}

bool CGlobalQUAYPolicy::IsConnectedToSuggestedBest_ETW(CWlanInterface* pIf,
                                                       const BssEntryList& entries,
                                                       const WString& ssid, const MacAddress& bssid,
                                                       CSmartPointer<CWlanBssEntry>* entry) {
  *entry = FindSuggestedByEvent(RoundOf(*pIf, entries, {}), ssid, bssid);
  return static_cast<bool>(*entry);
}

std::int32_t CGlobalQUAYPolicy::RequiredCandidateCount() {
  return RequiredCount(CWifiClientContainer::GetInstance().GetCount());
}

bool CGlobalQUAYPolicy::SwitchConnectionToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                               std::int32_t current_score,
                                               const ConnectionFacts& facts) {
  return corvane::SwitchConnectionToBest(RoundOf(*pIf, entries, facts), current_score);
}

bool CGlobalQUAYPolicy::ConnectToBestNoDebounce(CWlanInterface* pIf, const BssEntryList& entries,
                                                bool auto_only) {
  return corvane::ConnectToBestNoDebounce(RoundOf(*pIf, entries, {}), auto_only);
}

bool CGlobalQUAYPolicy::CheckAcceptSuggestion(CWlanInterface* pIf, const BssEntryList& entries,
                                              const ConnectionFacts& facts) {
  return corvane::CheckAcceptSuggestion(RoundOf(*pIf, entries, facts));
}

bool CGlobalQUAYPolicy::CheckExecuteConnectFromUI(CWlanInterface* pIf,
                                                  const UIConnectRequest& request,
                                                  const BssEntryList& entries,
                                                  const ConnectionFacts& facts) {
  return corvane::CheckExecuteConnectFromUI(RoundOf(*pIf, {}, facts), request, entries);
}

bool CGlobalQUAYPolicy::FindAndConnectToBssEntry(CWlanInterface* pIf, const BssEntryList& entries,
                                                 const ConnectOrder& order,
                                                 const ConnectionFacts& facts) {
  return corvane::FindAndConnectToBssEntry(RoundOf(*pIf, {}, facts), entries, order);
}

}  // namespace corvane
