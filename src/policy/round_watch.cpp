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

struct StepWords {
  RoundStep step;
  Words words;
};

constexpr StepWords kSteps[] = {
    {RoundStep::kRadioOff, {"radio-off", "the radio is off, or does not answer"}},
    {RoundStep::kAirplaneMode, {"airplane-mode", "airplane mode is on"}},
    {RoundStep::kDisabled, {"disabled", "the service or the adapter is disabled"}},
    {RoundStep::kInhibited, {"inhibited", "the inhibit clock runs"}},
    {RoundStep::kVpn, {"vpn", "a VPN is up"}},
    {RoundStep::kOvertaken, {"overtaken", "airplane mode or the inhibit clock came up meanwhile"}},
    {RoundStep::kSuggestionAccepted,
     {"suggestion-accepted", "the user's yes to a suggestion is served"}},
    {RoundStep::kSuggestionFailed,
     {"suggestion-failed", "the accepted suggestion could not be connected"}},
    {RoundStep::kClientConnect, {"client-connect", "a client's connect is served"}},
    {RoundStep::kDeniedLeft, {"denied-left", "the connection to a denied access point is ended"}},
    {RoundStep::kNoCandidates, {"no-candidates", "there is no candidate"}},
    {RoundStep::kRoamingInhibit, {"roaming-inhibit", "somebody else moved the adapter"}},
    {RoundStep::kSuggestionWithdrawn,
     {"suggestion-withdrawn", "the last suggestion lost its place and is withdrawn"}},
    {RoundStep::kSurroundingsChanged,
     {"surroundings-changed", "networks went missing: scans are forced"}},
    {RoundStep::kWeakConnection, {"weak-connection", "the connection is weak: scans are forced"}},
    {RoundStep::kStale,
     {"stale", "the connection is good and nothing was scanned since the last decision"}},
    {RoundStep::kStateUnclear, {"state-unclear", "the adapter changed its state meanwhile"}},
    {RoundStep::kAlreadySuggested, {"already-suggested", "the best one is suggested already"}},
    {RoundStep::kNothingBetter, {"nothing-better", "nothing in sight lies above the margin"}},
    {RoundStep::kBetterPossible, {"better-possible", "a better one is in sight: scans are forced"}},
    {RoundStep::kDeniedJustLeft, {"denied-just-left", "a denied access point was left just now"}},
    {RoundStep::kCountsDisconnects,
     {"counts-disconnects", "disconnected for too few rounds to act"}},
    {RoundStep::kWiredLan, {"wired-lan", "a wired LAN is connected"}},
    {RoundStep::kSwitchingOff, {"switching-off", "network switching is off"}},
    {RoundStep::kNoneEligible, {"none-eligible", "no candidate may be connected by itself"}},
    {RoundStep::kOnBest, {"on-best", "connected to the best one"}},
    {RoundStep::kOnUnlisted, {"on-unlisted", "connected to the only one"}},
    {RoundStep::kLinkBusy, {"link-busy", "traffic or real-time audio runs"}},
    {RoundStep::kRipening, {"ripening", "the better one has yet to ripen"}},
    {RoundStep::kNoQualifier, {"no-qualifier", "none is better by the margin"}},
    {RoundStep::kMonitorMode, {"monitor-mode", "monitor mode: this would be the one"}},
    {RoundStep::kAlreadyThere, {"already-there", "connected to it already"}},
    {RoundStep::kSuggestByEvent, {"suggest-by-event", "it is suggested by an event"}},
    {RoundStep::kSuggestByPopup, {"suggest-by-popup", "it is suggested by the dialog"}},
    {RoundStep::kNotSuggested,
     {"not-suggested", "too small a gain to suggest, or suggested before"}},
    {RoundStep::kFirstConnect, {"first-connect", "the disconnected adapter connects to it"}},
    {RoundStep::kSwitch, {"switch", "the adapter moves to it"}},
    {RoundStep::kRequestedConnect, {"requested-connect", "it is connected on request"}},
    {RoundStep::kConnected, {"connected", "the connect succeeded"}},
    {RoundStep::kElsewhere, {"elsewhere", "the adapter is on another one"}},
    {RoundStep::kCredentialsAsked,
     {"credentials-asked", "the adapter is not on it yet: the user was asked for credentials"}},
    {RoundStep::kConnectFailed, {"connect-failed", "the connect failed"}},
    {RoundStep::kRestore, {"restore", "the old network is restored"}},
};

// A step stands at its own place, so that none can be forgotten.
constexpr bool StandInOrder() {
  std::size_t place = 0;
  for (const StepWords& one : kSteps) {
    if (static_cast<std::size_t>(one.step) != place++) return false;
  }
  return place == static_cast<std::size_t>(RoundStep::kRestore) + 1;
}
static_assert(StandInOrder());

Words WordsOf(RoundStep step) { return kSteps[static_cast<std::size_t>(step)].words; }

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
void RoundWatches::Candidates(const Round& round) {
  for (IRoundWatch* watch : Watches()) watch->OnCandidates(round);
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
