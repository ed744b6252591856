#pragma once
#include <array>
#include <map>

#include "balanced/background.h"
#include "balanced/failure_memory.h"
#include "balanced/quarrel.h"
#include "balanced/ripening.h"
#include "balanced/scan_cadence.h"
#include "foundation/crit_sec.h"
#include "rules/policy_profile.h"

namespace corvane::balanced {

// As quick as there is something to gain, and otherwise still. The rules are pure functions of this
// folder; this object remembers what they ask for. Its lock guards what the platform's thread
// writes.
class BalancedProfile : public PolicyProfile {
 public:
  PolicyProfileKind Kind() const override { return PolicyProfileKind::kBalanced; }
  const Habits& GetHabits() const override;

  void OnRound(const LinkReading& link) override;
  void OnWeighed(std::int32_t best, std::int32_t current, bool fresh) override;
  void OnConnected(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now) override;
  void OnConnectFailed(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now) override;
  void OnOutsideConnect(bool byPerson, std::uint64_t now) override;
  void OnOutsideRoam(std::uint64_t now) override;
  void OnLinkLost(std::uint64_t now) override;

  ScanDecision Scan(const ScanInputs& in) const override;
  std::uint32_t RoundPauseMs(std::uint32_t normal) const override;
  StaleAction OnStaleRound(bool decideAnyway, std::uint32_t scanIntervalSecs) const override;
  bool IsBusy(bool realTimeAudio, double mbps, double gate) const override;
  bool KeepsStill(std::uint64_t roamingInhibitSince, const LinkReading& link) const override;
  std::uint32_t DisconnectStep(bool noDelay) const override;
  std::uint32_t PauseAfterLossMs(std::uint32_t normal) const override;

  bool IsBarred(const MacAddress& bssid, std::uint32_t quality, bool unavailable,
                std::uint64_t now) const override;
  CandidateMargins Margins(const CandidateMargins& settings,
                           const Contender& contender) const override;
  std::int32_t RoundsToWin(std::int32_t required, const Contender& contender) const override;
  SuggestionMode Mode(const SuggestionMode& mode, bool sameNetwork) const override;
  SuggestionPercent PercentOf(std::int32_t score, std::int32_t current, std::uint32_t minimumPoints,
                              std::uint32_t requiredPercent) const override;

 private:
  struct Sample {
    std::uint64_t tick = 0;
    std::uint32_t quality = 0;
  };
  GainFacts GainOf(const Contender& contender) const;
  CadenceFacts Cadence() const;
  bool IsFalling() const;

  // Worker only.
  LinkReading m_Link;
  std::array<Sample, 16> m_Samples{};  // of the connection, newest at m_SampleCount - 1
  std::size_t m_SampleCount = 0;
  std::uint32_t m_DullScans = 0;
  std::uint32_t m_ReadyScans = 0;
  std::int32_t m_Best = -1, m_Current = -1;  // of the last weighing
  Background m_Background;
  FailureMemory m_Failures;
  MacAddress m_OwnTarget{};  // of our last move
  std::uint32_t m_OwnQuality = 0;
  std::map<MacAddress, std::uint64_t> m_Left;  // when the adapter left an access point

  mutable CCritSec m_Lock{"balanced profile", LockRank::kLeaf};
  Quarrel m_Quarrel;         // under m_Lock, as all below
  bool m_bByPerson = false;  // the connection is a person's choice
  std::uint64_t m_LostTick = 0;
};

}  // namespace corvane::balanced
