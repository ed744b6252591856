#include "rules/classic_profile.h"

namespace corvane {

namespace {

class Classic : public PolicyProfile {
 public:
  PolicyProfileKind Kind() const override { return PolicyProfileKind::kClassic; }
  const Habits& GetHabits() const override {
    static constexpr Habits kNone;
    return kNone;
  }

  void OnRound(const LinkReading&) override {}
  void OnWeighed(std::int32_t, std::int32_t, bool) override {}
  void OnConnected(const MacAddress&, std::uint32_t, std::uint64_t) override {}
  void OnConnectFailed(const MacAddress&, std::uint32_t, std::uint64_t) override {}
  void OnOutsideConnect(bool, std::uint64_t) override {}
  void OnOutsideRoam(std::uint64_t) override {}
  void OnLinkLost(std::uint64_t) override {}

  ScanDecision Scan(const ScanInputs& in) const override { return DecideScan(in); }
  std::uint32_t RoundPauseMs(std::uint32_t normal) const override { return normal; }
  StaleAction OnStaleRound(bool decideAnyway, std::uint32_t scanIntervalSecs) const override {
    return ActOnStaleRound(decideAnyway, scanIntervalSecs);
  }
  bool IsBusy(bool realTimeAudio, double mbps, double gate) const override {
    return IsLinkBusy(realTimeAudio, mbps, gate);
  }
  bool KeepsStill(std::uint64_t roamingInhibitSince, const LinkReading&) const override {
    return roamingInhibitSince != 0;
  }
  std::uint32_t DisconnectStep(bool noDelay) const override {
    return corvane::DisconnectStep(noDelay);
  }
  std::uint32_t PauseAfterLossMs(std::uint32_t normal) const override { return normal; }

  bool IsBarred(const MacAddress&, std::uint32_t, bool unavailable, std::uint64_t) const override {
    return unavailable;
  }
  CandidateMargins Margins(const CandidateMargins& settings, const Contender&) const override {
    return settings;
  }
  std::int32_t RoundsToWin(std::int32_t required, const Contender&) const override {
    return required;
  }
  SuggestionMode Mode(const SuggestionMode& mode, bool) const override { return mode; }
  SuggestionPercent PercentOf(std::int32_t score, std::int32_t current, std::uint32_t minimumPoints,
                              std::uint32_t requiredPercent) const override {
    return corvane::PercentOf(score, current, minimumPoints, requiredPercent);
  }
};

}  // namespace

PolicyProfile& ClassicProfile() {
  static Classic classic;
  return classic;
}

}  // namespace corvane
