#pragma once
// What a round, its choice, its connected decision and its stale companions come to: one function
// for each outcome, named for what has happened. It writes the line of the log and, where the
// outcome is a step of the round, informs those who watch. Nothing is decided here.

#include "policy/round.h"
#include "rules/choice_rules.h"

namespace corvane::lines {

// --- The round
void Settings(const Round& round);
void ConnectedNotInRange(const Round& round);
void Sorted(const Round& round, const BssEntryList& entries, const char* list);
void RowNotAdded(const Round& round);
void RowsNotPublished(const Round& round, const char16_t* value);
void Scores(const Round& round);
void SkippedChoice(const Round& round, const char16_t* why);
// The quality of the connection against the model's; `idx` is the adapter index.
void NotPegged(int idx, const char* tag);  // not connected
void Pegged(int idx, const char* tag, std::uint32_t from, std::uint32_t to);
void PegCleared(int idx, const char* tag, std::uint32_t quality);

// --- The choice
void Disabled(const Round& round);
void LeavingDenied(const Round& round);
void LeftDenied(const Round& round);
void NotLeftDenied(const Round& round, const char* kind, const char* what);
void NoCandidates(const Round& round);
void RoamingInhibited(const Round& round, std::uint64_t since);
void SuggestionWithdrawn(const Round& round);
void RedNetworksSeen(const Round& round, RedNetworks verdict, std::size_t networks,
                     std::int32_t forced);
// Watchers hear of a stale round before they hear what its fast scan finds; the line comes last.
void FoundStale(const Round& round);
void SkippedStale(const Round& round, std::uint32_t intervalSecs);
void WeakConnection(const Round& round, Emergency verdict, std::int32_t forced);
void Deciding(const Round& round);
void StateUnclear(const Round& round, std::int32_t state);
void AfterDeny(const Round& round, DenyDeferral deferral, std::uint64_t until, std::uint64_t now);
void DecidesDisconnected(const Round& round, std::uint32_t count);
void CountsDisconnects(const Round& round, std::uint32_t count);
void DisconnectedButDisabled(const Round& round);
void WiredLan(const Round& round, std::uint32_t lans);
void SwitchingOff(const Round& round);

// --- With a connection; `mbps` is the rate of the adapter's traffic
void FirstLetters(const Round& round);
void UsingBackupScore(const Round& round, std::int32_t score);
void OnBest(const Round& round, double mbps);
void OnUnlisted(const Round& round, double mbps);
void LinkBusy(const Round& round, double mbps);
void Ripening(const Round& round, CWlanBssEntry& entry, std::int32_t current, double mbps);
void NoQualifier(const Round& round, double mbps);
void MoveSucceeded(const Round& round);
void Restoring(const Round& round);
void Restored(const Round& round);
void ForcedScansCleared(const Round& round);

// --- Stale rounds with a connection
void FastScanWithoutBest(const Round& round);
void FastScanOnBest(const Round& round, double mbps);
void IgnoresOldSuggestion(const Round& round, bool matches, double mbps);
void FastScanEnded(const Round& round, FastScan outcome, CWlanBssEntry& best, double mbps,
                   std::int32_t forced);
void OnSuggestedEarlier(const Round& round);

}  // namespace corvane::lines
