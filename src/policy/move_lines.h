#pragma once
// What becomes of a move: a switch, a first connect, a suggestion, a request. One function for each
// outcome, named for what has happened. It writes the line of the log and, where the outcome is a
// step of the round, informs those who watch; a step of a move comes before the platform is asked.

#include "notify/ap_summary.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"

namespace corvane::lines {

// --- Any move; `operation` is the walk that came to it.
void HeldByMonitorMode(const Round& round, const char* operation, CWlanBssEntry& entry);
void InhibitedByDialog(const Round& round, const char* operation);
void Asked(const Round& round, CWlanBssEntry& entry, bool byEvent, bool made);  // the user
void Attempted(const Round& round, CWlanBssEntry& entry, ConnectOutcome outcome);
void AttemptFailed(const Round& round, const char* stage, const CWlanBssEntry& entry,
                   const std::string& failure);

// --- A switch; `current` is the score of the connected access point.
void TargetElsewhere(const Round& round, const CWlanBssEntry& entry, bool ready);
void TargetNotReady(const Round& round, CWlanBssEntry& entry);
void TargetFound(const Round& round, CWlanBssEntry& entry, std::int32_t current);
void AlreadyThere(const Round& round, CWlanBssEntry& entry);
void RoamVetoed(const Round& round, const CWlanBssEntry& entry);
void Suggesting(const Round& round, const CWlanBssEntry& entry);
void Suggested(const Round& round, const ApSummary& current, const ApSummary& suggested);
void Switching(const Round& round, CWlanBssEntry& entry, bool roam);
void SwitchConnected(const Round& round, const CWlanBssEntry& entry, bool roam);
void Switched(const Round& round, const ApSummary& before, const ApSummary& after);

// --- A first connect
void FirstIsElsewhere(const Round& round, const CWlanBssEntry& entry);
void FirstWasUnavailable(const Round& round, const CWlanBssEntry& entry);
void FirstNotAutomatic(const Round& round, const CWlanBssEntry& entry);
void SuggestingFirst(const Round& round, const CWlanBssEntry& entry, bool autoOnly);
void ConnectingFirst(const Round& round, CWlanBssEntry& entry, bool autoOnly);
void FirstConnected(const Round& round, const CWlanBssEntry& entry);
void ConnectedByItself(const Round& round, const ApSummary& after);
void NoneEligible(const Round& round);

// --- A request
void RequestHeldByMonitorMode(const Round& round, const ConnectOrder& order);
void RequestWithoutBssid(const Round& round, const ConnectOrder& order);
void TryingRequest(const Round& round, ConnectOrigin origin, CWlanBssEntry& entry, int tries);
void RequestFailed(const std::string& failure);
void RequestConnected(const Round& round, const CWlanBssEntry& entry, int tries);
void OrderNotUnderstood(const Round& round, const WString& bssid);
void OrderUnderstood(const Round& round, const WString& bssid, bool isConnectedOne);
void OrderCarriedOut(const Round& round, const ConnectOrder& order);
void AcceptanceCarriedOut(const Round& round, const ConnectOrder& order);
void AcceptanceFailed(const Round& round, const WString& ssid, bool restores);
void RestoredAfterAcceptance(const Round& round);

}  // namespace corvane::lines
