#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "corvane_lab/air_truth.h"

namespace corvane::lab {

inline constexpr int kNoLink = -1;

// From that time on the adapter is on this access point, or on none.
struct LinkChange {
  std::uint64_t ms = 0;
  int accessPoint = kNoLink;
};

// What a policy made of one adapter.
struct AdapterTrace {
  std::vector<LinkChange> links;     // by rising time; before the first there is no link
  std::vector<std::uint64_t> scans;  // when the policy began one
  int At(std::uint64_t ms) const;    // the access point at that time
};
using PolicyTrace = std::vector<AdapterTrace>;  // by adapter

// What a second at a rate is worth.
enum class Measure { kRate, kUseful, kLog };
inline constexpr std::array kMeasures{Measure::kRate, Measure::kUseful, Measure::kLog};
// The rate itself, the rate cut at 100 Mbps, or the natural logarithm of 1 + Mbps.
double WorthOf(Measure measure, double mbps);

// What a trace comes to, over all adapters.
struct TraceScore {
  std::array<double, 3> worth{};     // by Measure, summed over the seconds
  double phaseRate = 0.0;            // of the rate, what falls on phases of traffic
  double disconnectedSeconds = 0.0;  // without a link, or on one whose access point is not heard
  int moves = 0;                     // changes from one access point to another, by whomever
  int pingPongs = 0;                 // moves back within two minutes
  int movesInPhases = 0;             // that ended a living link in a phase of traffic
  int scans = 0, scansInPhases = 0;  // the latter with a link
};
TraceScore ScoreTrace(const Truth& truth, const PolicyTrace& trace);

// The rates of one adapter second by second: what its trace gives it. Two adapters on one access
// point have half of it each.
std::vector<float> RatesOf(const Truth& truth, const PolicyTrace& trace, std::size_t adapter);

}  // namespace corvane::lab
