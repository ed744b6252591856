#include "rules/scan_decision.h"

#include <algorithm>

namespace corvane {

namespace {

ScanRule RuleFor(const ScanInputs& in, bool netIsIdle, bool netIsSortaIdle) {
  const bool longRules = in.intervalSecs > kLongIntervalAboveSecs;
  const std::uint64_t interval = std::uint64_t{in.intervalSecs} * 1000;
  const std::uint64_t longInterval = (std::uint64_t{in.intervalSecs} + kLongRuleExtraSecs) * 1000;

  if (in.deltaMs >= in.mainLoopSleepMs && netIsIdle && !in.ulScan && in.forceCounter > 0) {
    return ScanRule::kForcedCount;
  }
  if (in.force_scan) return ScanRule::kForced;
  if (longRules && in.deltaMs >= longInterval && netIsSortaIdle) return ScanRule::kLongHeldBack;
  if (!longRules && in.deferrals >= kDeferralsNeeded && netIsSortaIdle) return ScanRule::kDeferrals;
  if (in.deltaMs < interval) return ScanRule::kTooEarly;
  if (!in.connected) return ScanRule::kDisconnected;
  if (!in.ulScan && netIsIdle) return ScanRule::kIdle;
  return ScanRule::kTraffic;
}

}  // namespace

ScanDecision DecideScan(const ScanInputs& in) {
  const bool idleNow = in.gateLow > in.rate;
  const bool busyBefore = std::any_of(in.previousRates.begin(), in.previousRates.end(),
                                      [&in](double rate) { return rate >= in.gateLow; });
  ScanDecision decision;
  decision.idleVetoed = idleNow && busyBefore;
  decision.netIsIdle = idleNow && !busyBefore;
  decision.rule = RuleFor(in, decision.netIsIdle, in.gateHigh > in.rate);
  decision.countsDeferral =
      decision.rule == ScanRule::kTraffic && in.intervalSecs <= kLongIntervalAboveSecs;
  return decision;
}

}  // namespace corvane
