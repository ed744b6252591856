#include "rules/choice_rules.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr std::size_t kRedNetworksForScan = 2;
constexpr std::uint32_t kScoreReportFloorMs = 10000;
constexpr std::uint32_t kShortScanIntervalSecs = 30;

}  // namespace

RedNetworks JudgeRedNetworks(std::size_t networks, std::int32_t forcedScans) {
  if (networks < kRedNetworksForScan) return RedNetworks::kFew;
  return forcedScans != 0 ? RedNetworks::kAlreadyForced : RedNetworks::kForceScans;
}

bool IsScoreReportDue(std::uint64_t now, std::uint64_t last, std::uint32_t sleepMs) {
  return now - last >= std::max(sleepMs, kScoreReportFloorMs);
}

bool IsStale(const StalenessInputs& in) {
  return !in.scanFresh && in.connected && in.goodQuality && in.enabled;
}

StaleAction ActOnStaleRound(bool decideAnyway, std::uint32_t scanIntervalSecs) {
  if (decideAnyway) return StaleAction::kDecide;
  return scanIntervalSecs > kShortScanIntervalSecs ? StaleAction::kFastScan : StaleAction::kSkip;
}

Emergency JudgeEmergency(const EmergencyInputs& in) {
  if (!in.connected || in.goodQuality || !in.enabled || !in.armed) return Emergency::kNone;
  return in.forcedScans != 0 ? Emergency::kAlreadyForced : Emergency::kForceScans;
}

SuggestionCheck CheckSuggestion(std::int32_t position, const WString* bssidAtPosition,
                                WStringView suggestedBssid) {
  if (position < 0) return SuggestionCheck::kNone;
  if (!bssidAtPosition) return SuggestionCheck::kGone;
  return *bssidAtPosition == suggestedBssid ? SuggestionCheck::kStands
                                            : SuggestionCheck::kDisplaced;
}

DenyDeferral JudgeDenyDeferral(std::uint64_t deferUntil, std::uint64_t now) {
  if (deferUntil == 0) return DenyDeferral::kNone;
  return now <= deferUntil ? DenyDeferral::kWait : DenyDeferral::kOver;
}

}  // namespace corvane
