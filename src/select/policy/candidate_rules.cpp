#include "select/policy/candidate_rules.h"

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

bool IsReady(const ReadinessInputs& in, const CandidateMargins& margins) {
  return in.quality >= margins.qualityThreshold && in.counter >= in.required &&
         PassesPercentTest(in.score, in.current, margins.scorePercent) &&
         PassesPointTest(in.score, in.current, margins.scoreThreshold);
}

bool IsAdmitted(const AdmissionInputs& in) {
  return !in.onSystemDenyList && !in.denied && !in.ssidEmpty &&
         in.authAlgorithm != platform::DOT11_AUTH_ALGO_80211_OPEN &&
         (in.hasUsableProfile || in.hasTempProfile);
}

bool RanksBelow(const CandidateRank& a, const CandidateRank& b, bool preferPrivate) {
  if (preferPrivate && a.isPrivate != b.isPrivate) return b.isPrivate;
  if (a.priority != b.priority) return a.priority < b.priority;
  if (a.score != b.score) return a.score < b.score;
  return a.quality < b.quality;
}

}  // namespace corvane
