#include "rules/switch_rules.h"

#include <algorithm>
#include <cstdlib>

namespace corvane {

namespace {

constexpr std::int32_t kPercentOfNothing = 100;

MoveWay WayOfSuggestion(const SuggestionMode& mode) {
  return mode.IsEventMode() && !mode.popupOverride ? MoveWay::kSuggestByEvent
                                                   : MoveWay::kSuggestByPopup;
}

}  // namespace

MoveWay WayOfSwitch(const SuggestionMode& mode, bool roam, bool roamingEnabled) {
  if (mode.allowlistActive || mode.popupOverride) return WayOfSuggestion(mode);
  if (mode.passive && !(roam && roamingEnabled)) return WayOfSuggestion(mode);
  return MoveWay::kConnect;
}

MoveWay WayOfConnect(const SuggestionMode& mode) {
  if (!mode.passive || mode.allowlistActive) return MoveWay::kConnect;
  return mode.popup ? MoveWay::kSuggestByPopup : MoveWay::kSuggestByEvent;
}

SuggestionPercent PercentOf(std::int32_t score, std::int32_t current, std::uint32_t minimumPoints,
                            std::uint32_t requiredPercent) {
  if (current < 1) return {true, kPercentOfNothing};
  std::int64_t difference = std::abs(std::int64_t{score} - current);
  if (difference == 0) difference = minimumPoints;
  const double percent = static_cast<double>(difference) / current * 100.0;
  const auto whole = static_cast<std::int32_t>(std::min(percent, 2.0e9));
  return {static_cast<std::uint32_t>(whole) >= requiredPercent, whole};
}

FastScan JudgeFastScan(const FastScanInputs& in) {
  if (in.matchesSuggestion && !in.openSuggestion) return FastScan::kAlreadySuggested;
  if (in.linkBusy) return FastScan::kBusy;
  if (!in.betterPossible) return FastScan::kNothingBetter;
  return in.forcedScans != 0 ? FastScan::kAlreadyForced : FastScan::kForceScans;
}

}  // namespace corvane
