#pragma once
// The rules by which candidates are admitted, ordered and found ready. Pure: plain inputs, plain
// results; the objects of the policy gather and apply.

#include <cstdint>

namespace corvane {

// Margins that an entry has to lie above the connected access point.
struct CandidateMargins {
  std::uint32_t qualityThreshold = 70;  // LQCThreshold, 0 to 100
  std::uint32_t scoreThreshold = 2;     // APScoreThreshold, points
  std::uint32_t scorePercent = 20;      // SCOREDIFFPCT
};

// The difference of `score` to `current` in percent of `current`, truncated. Fails only when it lies
// in 0 <= P < percent; a lower score and a current score of 0 pass, and the point margin decides.
bool PassesPercentTest(std::int32_t score, std::int32_t current, std::uint32_t percent);
// At least the margin in points.
bool PassesPointTest(std::int32_t score, std::int32_t current, std::uint32_t points);

struct ReadinessInputs {
  std::uint32_t quality = 0;
  std::int32_t counter = 0;  // after the rule of unscanned entries
  std::int32_t required = 2;
  std::int32_t score = 0;
  std::int32_t current = 0;
};
// The candidate has ripened and still wins. Arbitrary preference makes no exception.
bool IsReady(const ReadinessInputs& in, const CandidateMargins& margins);

struct AdmissionInputs {
  bool onSystemDenyList = false;
  bool denied = false;
  bool ssidEmpty = false;
  std::int32_t authAlgorithm = 0;  // DOT11_AUTH_ALGORITHM of the network
  bool hasUsableProfile = false;
  bool hasTempProfile = false;
};
// The entry may be a candidate; open networks never are.
bool IsAdmitted(const AdmissionInputs& in);

// What orders candidates, strongest first: private preference, arbitrary priority, score, quality.
struct CandidateRank {
  bool isPrivate = false;
  std::int32_t priority = 0;
  std::int32_t score = 0;
  std::uint32_t quality = 0;
};
// `a` stands behind `b`.
bool RanksBelow(const CandidateRank& a, const CandidateRank& b, bool preferPrivate);

}  // namespace corvane
