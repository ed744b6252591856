#include "policy/round_watch.h"

#include <algorithm>

namespace corvane {

namespace {

std::vector<IRoundWatch*>& Watches() {
  static std::vector<IRoundWatch*> watches;
  return watches;
}

struct Words {
  const char* name;
  const char* text;
};

Words WordsOf(RoundStep step) {
  switch (step) {
    case RoundStep::kRadioOff:
      return {"radio-off", "the radio is off, or does not answer"};
    case RoundStep::kAirplaneMode:
      return {"airplane-mode", "airplane mode is on"};
    case RoundStep::kDisabled:
      return {"disabled", "the service or the adapter is disabled"};
    case RoundStep::kInhibited:
      return {"inhibited", "the inhibit clock runs"};
    case RoundStep::kVpn:
      return {"vpn", "a VPN is up"};
    case RoundStep::kOvertaken:
      return {"overtaken", "airplane mode or the inhibit clock came up meanwhile"};
    case RoundStep::kSuggestionAccepted:
      return {"suggestion-accepted", "the user's yes to a suggestion is served"};
    case RoundStep::kSuggestionFailed:
      return {"suggestion-failed", "the accepted suggestion could not be connected"};
    case RoundStep::kClientConnect:
      return {"client-connect", "a client's connect is served"};
    case RoundStep::kDeniedLeft:
      return {"denied-left", "the connection to a denied access point is ended"};
    case RoundStep::kNoCandidates:
      return {"no-candidates", "there is no candidate"};
    case RoundStep::kRoamingInhibit:
      return {"roaming-inhibit", "somebody else moved the adapter"};
    case RoundStep::kSuggestionWithdrawn:
      return {"suggestion-withdrawn", "the last suggestion lost its place and is withdrawn"};
    case RoundStep::kSurroundingsChanged:
      return {"surroundings-changed", "networks went missing: scans are forced"};
    case RoundStep::kWeakConnection:
      return {"weak-connection", "the connection is weak: scans are forced"};
    case RoundStep::kStale:
      return {"stale", "the connection is good and nothing was scanned since the last decision"};
    case RoundStep::kStateUnclear:
      return {"state-unclear", "the adapter changed its state meanwhile"};
    case RoundStep::kAlreadySuggested:
      return {"already-suggested", "the best one is suggested already"};
    case RoundStep::kNothingBetter:
      return {"nothing-better", "nothing in sight lies above the margin"};
    case RoundStep::kBetterPossible:
      return {"better-possible", "a better one is in sight: scans are forced"};
    case RoundStep::kDeniedJustLeft:
      return {"denied-just-left", "a denied access point was left just now"};
    case RoundStep::kCountsDisconnects:
      return {"counts-disconnects", "disconnected for too few rounds to act"};
    case RoundStep::kWiredLan:
      return {"wired-lan", "a wired LAN is connected"};
    case RoundStep::kSwitchingOff:
      return {"switching-off", "network switching is off"};
    case RoundStep::kNoneEligible:
      return {"none-eligible", "no candidate may be connected by itself"};
    case RoundStep::kOnBest:
      return {"on-best", "connected to the best one"};
    case RoundStep::kOnUnlisted:
      return {"on-unlisted", "connected to the only one"};
    case RoundStep::kLinkBusy:
      return {"link-busy", "traffic or real-time audio runs"};
    case RoundStep::kRipening:
      return {"ripening", "the better one has yet to ripen"};
    case RoundStep::kNoQualifier:
      return {"no-qualifier", "none is better by the margin"};
    case RoundStep::kMonitorMode:
      return {"monitor-mode", "monitor mode: this would be the one"};
    case RoundStep::kAlreadyThere:
      return {"already-there", "connected to it already"};
    case RoundStep::kSuggestByEvent:
      return {"suggest-by-event", "it is suggested by an event"};
    case RoundStep::kSuggestByPopup:
      return {"suggest-by-popup", "it is suggested by the dialog"};
    case RoundStep::kNotSuggested:
      return {"not-suggested", "too small a gain to suggest, or suggested before"};
    case RoundStep::kFirstConnect:
      return {"first-connect", "the disconnected adapter connects to it"};
    case RoundStep::kSwitch:
      return {"switch", "the adapter moves to it"};
    case RoundStep::kRequestedConnect:
      return {"requested-connect", "it is connected on request"};
    case RoundStep::kConnected:
      return {"connected", "the connect succeeded"};
    case RoundStep::kCredentialsAsked:
      return {"credentials-asked",
              "the adapter is not on it yet: the user was asked for credentials"};
    case RoundStep::kConnectFailed:
      return {"connect-failed", "the connect failed"};
    case RoundStep::kRestore:
      return {"restore", "the old network is restored"};
  }
  return {"", ""};
}

Words WordsOf(CandidateStanding standing) {
  switch (standing) {
    case CandidateStanding::kFiltered:
      return {"filtered", "a filter of the system denies the network"};
    case CandidateStanding::kDenied:
      return {"denied", "it is on the deny list"};
    case CandidateStanding::kUnnamed:
      return {"unnamed", "it has no name"};
    case CandidateStanding::kOpen:
      return {"open", "the network is open"};
    case CandidateStanding::kUnprofiled:
      return {"unprofiled", "there is no profile for the network"};
    case CandidateStanding::kOtherNetwork:
      return {"other-network", "network switching is off, and it is of another network"};
    case CandidateStanding::kNotAllowed:
      return {"not-allowed", "an allow list is in force without it"};
    case CandidateStanding::kConnectedBss:
      return {"connected", "it is the connected one"};
    case CandidateStanding::kNotBetter:
      return {"not-better", "it scores no higher than the connected one"};
    case CandidateStanding::kWeak:
      return {"weak", "its quality is below the threshold"};
    case CandidateStanding::kUnavailable:
      return {"unavailable", "the last connect found it not available"};
    case CandidateStanding::kPercentShort:
      return {"percent-short", "it is better by too few percent"};
    case CandidateStanding::kPointsShort:
      return {"points-short", "it is better by too few points"};
    case CandidateStanding::kTakenElsewhere:
      return {"taken", "another adapter is on it or has reserved it"};
    case CandidateStanding::kQualified:
      return {"qualified", "it is better by the margin"};
    case CandidateStanding::kRipening:
      return {"ripening", "it has yet to ripen"};
    case CandidateStanding::kReady:
      return {"ready", "it is ready"};
    case CandidateStanding::kNotAutomatic:
      return {"not-automatic", "its profile is not connected automatically"};
    case CandidateStanding::kEligible:
      return {"eligible", "it may be connected"};
  }
  return {"", ""};
}

}  // namespace

const char* RoundStepName(RoundStep step) { return WordsOf(step).name; }
const char* RoundStepText(RoundStep step) { return WordsOf(step).text; }
const char* CandidateStandingName(CandidateStanding standing) { return WordsOf(standing).name; }
const char* CandidateStandingText(CandidateStanding standing) { return WordsOf(standing).text; }

void RoundWatches::Add(IRoundWatch* watch) { Watches().push_back(watch); }
void RoundWatches::Remove(IRoundWatch* watch) { std::erase(Watches(), watch); }

void RoundWatches::RoundBegins(int adapter, const CWlanInterface& wlan) {
  for (IRoundWatch* watch : Watches()) watch->OnRoundBegins(adapter, wlan);
}
void RoundWatches::Candidates(CWlanInterface& adapter, const ConnectionFacts& facts,
                              const BssEntryList& candidates) {
  for (IRoundWatch* watch : Watches()) watch->OnCandidates(adapter, facts, candidates);
}
void RoundWatches::Standing(int adapter, CWlanBssEntry& entry, CandidateStanding standing) {
  for (IRoundWatch* watch : Watches()) watch->OnStanding(adapter, entry, standing);
}
void RoundWatches::Step(int adapter, RoundStep step, CWlanBssEntry* about) {
  for (IRoundWatch* watch : Watches()) watch->OnStep(adapter, step, about);
}
void RoundWatches::RoundEnds(int adapter) {
  for (IRoundWatch* watch : Watches()) watch->OnRoundEnds(adapter);
}

}  // namespace corvane
