#include "rules/candidate_rules.h"

#include "platform/wlan_types.h"

namespace corvane {

bool PassesPercentTest(std::int32_t score, std::int32_t current, std::uint32_t percent) {
  if (current == 0) return true;
  const std::int64_t difference = std::int64_t{score} - current;
  const double quotient = static_cast<double>(difference) / current * 100.0;
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(quotient)) >= percent;
}

bool PassesPointTest(std::int32_t score, std::int32_t current, std::uint32_t points) {
  return std::int64_t{score} - current >= std::int64_t{points};
}

CandidateVerdict JudgeCandidate(const CandidateInputs& in, const CandidateMargins& margins) {
  CandidateVerdict verdict;
  if (!in.arbitraryEligible) {
    verdict.lostClaim = in.score <= in.current;
    if (!verdict.lostClaim && in.isConnectedBss) return {CandidateStanding::kConnectedBss, false};
  }
  if (in.quality < margins.qualityThreshold) {
    verdict.standing = CandidateStanding::kWeak;
  } else if (in.lastConnectUnavailable) {
    verdict.standing = CandidateStanding::kUnavailable;
  } else if (!PassesPercentTest(in.score, in.current, margins.scorePercent)) {
    verdict.standing = CandidateStanding::kPercentShort;
  } else if (!in.arbitraryEligible &&
             !PassesPointTest(in.score, in.current, margins.scoreThreshold)) {
    verdict.standing = CandidateStanding::kPointsShort;
  }
  return verdict;
}

bool IsOpenSuggestion(const StandingSuggestion& suggestion, WStringView ssid, WStringView bssid,
                      bool forceAutoConnect, bool connected) {
  if (!suggestion.known || suggestion.ssid != ssid || suggestion.bssid != bssid) return false;
  return suggestion.connectedBssid != bssid || (forceAutoConnect && !connected);
}

std::int32_t ForcedCount(std::int32_t current, std::int32_t required, bool openSuggestion) {
  return current < 1 || openSuggestion ? required : 0;
}

bool IsReady(const ReadinessInputs& in, const CandidateMargins& margins) {
  return in.quality >= margins.qualityThreshold && in.counter >= in.required &&
         PassesPercentTest(in.score, in.current, margins.scorePercent) &&
         PassesPointTest(in.score, in.current, margins.scoreThreshold);
}

CandidateStanding JudgeAdmission(const AdmissionInputs& in) {
  if (in.onSystemDenyList) return CandidateStanding::kFiltered;
  if (in.denied) return CandidateStanding::kDenied;
  if (in.ssidEmpty) return CandidateStanding::kUnnamed;
  if (in.authAlgorithm == platform::DOT11_AUTH_ALGO_80211_OPEN) return CandidateStanding::kOpen;
  if (!in.hasUsableProfile && !in.hasTempProfile) return CandidateStanding::kUnprofiled;
  return CandidateStanding::kQualified;
}

bool RanksBelow(const CandidateRank& a, const CandidateRank& b, bool preferPrivate) {
  if (preferPrivate && a.isPrivate != b.isPrivate) return b.isPrivate;
  if (a.priority != b.priority) return a.priority < b.priority;
  if (a.score != b.score) return a.score < b.score;
  return a.quality < b.quality;
}

}  // namespace corvane
