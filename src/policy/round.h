#pragma once
// What one policy round knows: gathered once (policy_round.cpp), handed down to every decision.

#include "rules/candidate_rules.h"
#include "rules/switch_rules.h"
#include "wlan/wlan_interface.h"

namespace corvane {

// The settings of a round, read once at its beginning, under the global lock: a client's command
// takes effect in the next round.
struct RoundSettings {
  explicit RoundSettings(const CQUAYInterfaceConfig& config);

  bool IsEnabled() const { return enabled && serviceEnabled; }
  // Decides, but neither connects nor suggests.
  bool IsMonitorMode() const { return monitorWhileDisabled && !IsEnabled(); }
  bool IsEventMode() const { return passive && !popup; }

  bool enabled = false, serviceEnabled = false;
  bool monitorWhileDisabled = false;
  bool passive = false, popup = false;  // neither is autoswitch, popup is passive, too
  bool forceAutoConnect = false;
  bool preferPrivate = false;
  bool networkSwitching = false;
  bool allowlistEnabled = false;
  bool decideStale = false;  // ULScan
  bool pilot = false;
  bool roaming = false, gatewayRoaming = false;
  std::uint32_t qualityThreshold = 0;  // LQCThreshold, 0 to 100
  std::uint32_t scorePercent = 0;      // SCOREDIFFPCT
};

struct Round {
  explicit Round(CWlanInterface& wlan);

  // What may change within a round is asked at each use: the point threshold rises with the rate of
  // switches, an allow list comes into force, a connect of somebody else overrides the mode, an
  // adapter comes or goes. Of one entry, against `current`, the score of the connection:
  CandidateMargins Margins(CWlanBssEntry& entry, std::int32_t current) const;
  std::int32_t Required(CWlanBssEntry& entry, std::int32_t current) const;  // rounds to win
  bool IsBarred(const CWlanBssEntry& entry) const;  // not to be tried, after what it answered
  SuggestionMode Mode(const CWlanBssEntry& entry) const;
  CandidateMargins Settings() const;  // the margins as they are set
  bool HasGoodQuality() const { return facts.quality >= settings.qualityThreshold; }

  CWlanInterface& adapter;
  PolicyMemory& memory;    // of the adapter, from one round to the next
  PolicyProfile& profile;  // by which it decides
  const int idx;           // of the adapter
  const CSmartPointer<CQUAYInterfaceConfig> config;
  const RoundSettings settings;
  // What scores take from elsewhere; under the global lock it stays as it is to the round's end.
  const ScoreContext scores;
  ConnectionFacts facts;
  LinkReading link;
  BssEntryList candidates;  // BssEntriesList, best first
  BssEntryList others;      // OtherEntriesList: in range, but no candidates

 private:
  Contender ContenderOf(CWlanBssEntry& entry, std::int32_t current) const;
};

}  // namespace corvane
