#pragma once
// The rules by which candidates are admitted, ordered, counted and found ready. Pure: plain inputs,
// plain results; the objects of the policy gather and apply.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Margins that an entry has to lie above the connected access point.
struct CandidateMargins {
  std::uint32_t qualityThreshold = 70;  // LQCThreshold, 0 to 100
  std::uint32_t scoreThreshold = 2;     // APScoreThreshold, points
  std::uint32_t scorePercent = 20;      // SCOREDIFFPCT
};

// The difference of `score` to `current` in percent of `current`, truncated. Fails only when it
// lies in 0 <= P < percent; a lower score and a current score of 0 pass, and the point margin
// decides.
bool PassesPercentTest(std::int32_t score, std::int32_t current, std::uint32_t percent);
// At least the margin in points.
bool PassesPointTest(std::int32_t score, std::int32_t current, std::uint32_t points);

// A claim that fades is over when nothing renewed it for so long, in ms.
inline constexpr std::uint64_t kClaimFadesMs = 45'000;

// How an entry stands in a round, by the rule that settled it.
enum class CandidateStanding {
  // Not admitted.
  kFiltered,  // by the system
  kDenied,    // by the deny list
  kUnnamed,
  kOpen,
  kUnprofiled,
  kOtherNetwork,  // while network switching is off
  kNotAllowed,    // while an allow list is in force
  // Weighed against the connected access point.
  kConnectedBss,  // the counter is cleared
  kNotBetter,     // the counter is cleared
  kWeak,          // below the quality threshold
  kUnavailable,   // the counter is cleared
  kPercentShort,
  kPointsShort,
  kTakenElsewhere,  // another adapter has a claim on it
  kQualified,       // unless another adapter has
  kRipening,
  kReady,
  // Weighed by an adapter without a connection.
  kNotAutomatic,
  kEligible,
};

// What one round sees of one entry.
struct CandidateInputs {
  std::int32_t score = 0;
  std::int32_t current = 0;  // score of the connected access point
  std::uint32_t quality = 0;
  bool arbitraryEligible = false;  // on the preferred list, at its quality
  bool isConnectedBss = false;
  bool lastConnectUnavailable = false;  // WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE
};
struct CandidateVerdict {
  CandidateStanding standing = CandidateStanding::kQualified;
  bool lostClaim =
      false;  // not above the connected one: the counter is cleared, whatever the standing
};
CandidateVerdict JudgeCandidate(const CandidateInputs& in, const CandidateMargins& margins);

// What the registry says of the last suggestion.
struct StandingSuggestion {
  bool known = false;  // all three values were read
  WString ssid;
  WString bssid;           // text
  WString connectedBssid;  // text
};
// The entry is the standing suggestion, and not merely the connection that it led to: the
// suggestion counts still while the connection is elsewhere, or is to be made anew by itself.
bool IsOpenSuggestion(const StandingSuggestion& suggestion, WStringView ssid, WStringView bssid,
                      bool forceAutoConnect, bool connected);

// The count to which the counter jumps, 0 for an ordinary step. `openSuggestion` is that of an
// entry on the allow list.
std::int32_t ForcedCount(std::int32_t current, std::int32_t required, bool openSuggestion);

// Rounds that a candidate has to win: fewer with exactly one adapter.
constexpr std::int32_t RequiredCount(int adapters) { return adapters == 1 ? 2 : 3; }

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
// kQualified, or why the entry may not be a candidate; open networks never are.
CandidateStanding JudgeAdmission(const AdmissionInputs& in);

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
