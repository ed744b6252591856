#pragma once
// What the profiles of the policy differ in. A round gathers, asks the profile of its adapter, and
// acts; it does not know which one answers. Classic gives the rules of this folder as they stand.

#include <cstdint>
#include <string>

#include "rules/candidate_rules.h"
#include "rules/choice_rules.h"
#include "rules/scan_decision.h"
#include "rules/switch_rules.h"
#include "store/address_text.h"
#include "store/policy_profile_kind.h"

namespace corvane {

// The link as a round finds it.
struct LinkReading {
  std::uint64_t now = 0;  // tick, ms
  bool connected = false;
  MacAddress bssid{};
  std::uint32_t quality = 0;  // 0 to 100
  double mbps = 0.0;          // traffic, both ways
};

// One candidate beside the connection.
struct Contender {
  MacAddress bssid{};
  std::int32_t score = 0;
  std::int32_t current = 0;   // of the connection
  std::uint32_t quality = 0;  // 0 to 100
  bool sameNetwork = false;   // as the connection
};

// Small rules that are on or off.
struct Habits {
  bool measuresBeforeScan = false;     // reads the traffic counters anew before a scan is decided
  bool weighsEachRound = false;        // is told how the candidates stand, with or without a scan
  bool restoresTransmitter = false;    // the old access point first, then the old network
  bool restoresAfterOrder = false;     // after a client's order that was refused, too
  bool refusesGoneSuggestion = false;  // a late yes leaves the connection alone
  bool suggestsAnew = false;           // what was withdrawn may be suggested again
  bool closesOvertakenDialog = false;  // with the suggestion that it shows
  bool claimsFade = false;             // a reservation counts while rounds renew it
  bool questionsYield = false;         // who is offline takes what another adapter only asks about
  bool endsOrders = false;             // every order comes to a final ConnectStatus
};

// One for each adapter. Asked on its worker, but for OnOutsideConnect, OnLinkLost and
// PauseAfterLossMs, which come on the platform's thread. Ticks are in ms.
class PolicyProfile {
 public:
  virtual ~PolicyProfile() = default;
  virtual PolicyProfileKind Kind() const = 0;
  virtual const Habits& GetHabits() const = 0;

  // What happens to the adapter.
  virtual void OnRound(const LinkReading& link) = 0;
  // The best score among the candidates that are worth a move, -1 without one, and the
  // connection's. `fresh`: by a scan of this round.
  virtual void OnWeighed(std::int32_t best, std::int32_t current, bool fresh) = 0;
  virtual void OnConnected(const MacAddress& bssid, std::uint32_t quality,
                           std::uint64_t now) = 0;  // by our own doing
  virtual void OnConnectFailed(const MacAddress& bssid, std::uint32_t quality,
                               std::uint64_t now) = 0;
  // Somebody else connected the adapter; `byPerson` as far as the platform tells.
  virtual void OnOutsideConnect(bool byPerson, std::uint64_t now) = 0;
  // Somebody else moved it within its network.
  virtual void OnOutsideRoam(std::uint64_t now) = 0;
  virtual void OnLinkLost(std::uint64_t now) = 0;

  // When to look, to weigh and to move.
  virtual ScanDecision Scan(const ScanInputs& in) const = 0;
  virtual std::uint32_t RoundPauseMs(std::uint32_t normal) const = 0;
  virtual StaleAction OnStaleRound(bool decideAnyway, std::uint32_t scanIntervalSecs) const = 0;
  virtual bool IsBusy(bool realTimeAudio, double mbps, double gate) const = 0;
  virtual bool KeepsStill(std::uint64_t roamingInhibitSince, const LinkReading& link) const = 0;
  // What a lost link adds to the count from which an adapter is connected anew.
  virtual std::uint32_t DisconnectStep(bool noDelay) const = 0;
  // How long the system is left alone with a link that it has lost.
  virtual std::uint32_t PauseAfterLossMs(std::uint32_t normal) const = 0;

  // Which candidates. An access point is barred that is not to be tried; `unavailable`: the last
  // connect found it so.
  virtual bool IsBarred(const MacAddress& bssid, std::uint32_t quality, bool unavailable,
                        std::uint64_t now) const = 0;
  virtual CandidateMargins Margins(const CandidateMargins& settings,
                                   const Contender& contender) const = 0;
  virtual std::int32_t RoundsToWin(std::int32_t required, const Contender& contender) const = 0;
  virtual SuggestionMode Mode(const SuggestionMode& mode, bool sameNetwork) const = 0;
  // How much better a suggestion is called.
  virtual SuggestionPercent PercentOf(std::int32_t score, std::int32_t current,
                                      std::uint32_t minimumPoints,
                                      std::uint32_t requiredPercent) const = 0;
};

}  // namespace corvane
