#pragma once
// What a round tells somebody who wants to know why it ended as it did: how each entry stood, and
// each thing that was decided, at the moment when it is.

#include <vector>

#include "rules/candidate_rules.h"
#include "wlan/wlan_interface.h"

namespace corvane {

struct Round;

// What a round decides, in about the order in which it comes to it.
enum class RoundStep {
  // What ends a round before its policy.
  kRadioOff,
  kAirplaneMode,
  kDisabled,
  kInhibited,
  kVpn,
  kOvertaken,  // airplane mode or the inhibit clock came up while the round ran
  // What people ask for.
  kSuggestionAccepted,
  kSuggestionFailed,
  kClientConnect,
  // When to decide.
  kDeniedLeft,
  kNoCandidates,
  kRoamingInhibit,
  kSuggestionWithdrawn,
  kSurroundingsChanged,  // forced scans
  kWeakConnection,       // forced scans
  kStale,
  kStateUnclear,
  // Stale rounds.
  kAlreadySuggested,
  kNothingBetter,
  kBetterPossible,  // forced scans
  // Without a connection.
  kDeniedJustLeft,
  kCountsDisconnects,
  kWiredLan,
  kSwitchingOff,
  kNoneEligible,
  // With a connection.
  kOnBest,
  kOnUnlisted,  // on an access point that is not in the list, which is empty
  kLinkBusy,
  kRipening,
  kNoQualifier,
  // What comes of it.
  kMonitorMode,
  kAlreadyThere,
  kSuggestByEvent,
  kSuggestByPopup,
  kNotSuggested,  // too small a gain, or told before
  kFirstConnect,  // by the service's own decision, as the next one
  kSwitch,
  kRequestedConnect,
  kConnected,
  kElsewhere,         // the connect ended well, yet not on the access point that was asked for
  kCredentialsAsked,  // of the user, who has to connect it
  kConnectFailed,
  kRestore,
};
const char* RoundStepName(RoundStep step);  // "link-busy"
const char* RoundStepText(RoundStep step);  // "traffic or real-time audio runs"
const char* CandidateStandingName(CandidateStanding standing);
const char* CandidateStandingText(CandidateStanding standing);

// What an attempt to suggest came to.
constexpr RoundStep StepOfSuggestion(bool byEvent, bool made) {
  if (!made) return RoundStep::kNotSuggested;
  return byEvent ? RoundStep::kSuggestByEvent : RoundStep::kSuggestByPopup;
}

// Told on the adapter's worker, what the policy tells under the global lock. `adapter` is the
// adapter index. A step of a move comes before the platform is asked for it.
class IRoundWatch {
 public:
  virtual void OnRoundBegins(int adapter, const CWlanInterface& wlan) { (void)adapter, (void)wlan; }
  // With the sorted list, best first, and the connection that it is weighed against. The round is
  // there until it ends.
  virtual void OnCandidates(const Round& round) { (void)round; }
  // The last one told of an entry holds.
  virtual void OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) {
    (void)adapter, (void)entry, (void)standing;
  }
  // `about` is null for what concerns no entry.
  virtual void OnStep(int adapter, RoundStep step, CWlanBssEntry* about) {
    (void)adapter, (void)step, (void)about;
  }
  virtual void OnRoundEnds(int adapter) { (void)adapter; }

 protected:
  ~IRoundWatch() = default;
};

// Who watches, all adapters. Set before the service starts, taken back after it has ended.
class RoundWatches {
 public:
  static void Add(IRoundWatch* watch);
  static void Remove(IRoundWatch* watch);

  static void RoundBegins(int adapter, const CWlanInterface& wlan);
  static void Candidates(const Round& round);
  static void Standing(int adapter, CWlanBssEntry& entry, CandidateStanding standing);
  static void Step(int adapter, RoundStep step, CWlanBssEntry* about = nullptr);
  static void RoundEnds(int adapter);
};

}  // namespace corvane
