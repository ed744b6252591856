#include "rules/rate_gate.h"

#include <algorithm>

namespace corvane {

namespace {

constexpr double kLearnAfterSecs = 30.0;
constexpr double kSettleAfterSecs = 35.0;
constexpr double kLearnUntilSecs = 85.0;
constexpr double kNoisyPercent = 60.0;
constexpr double kMeanFactor = 1.2;
constexpr double kLowMax = 0.07;
constexpr double kHighMax = 0.08;
constexpr double kGateWidth = 0.03;
constexpr double kQuietRate = 0.04;

}  // namespace

GateLearning LearnRateGates(const TrickleMeasure& measure, const RateGates& now,
                            const RateGates& start) {
  GateLearning result;
  if (measure.ageSecs > kLearnUntilSecs) return result;
  RateGates gates = now;
  if (measure.ageSecs > kLearnAfterSecs && measure.percentAboveLow > kNoisyPercent) {
    const double low = std::min(kLowMax, measure.mean * kMeanFactor);
    const double high = std::min(kHighMax, low + kGateWidth);
    if (high > now.high || low > now.low) result.learned = gates = {high, low};
  }
  result.settled =
      measure.ageSecs > kSettleAfterSecs && gates == start && measure.rate <= kQuietRate;
  return result;
}

}  // namespace corvane
