#include "score/backup_score.h"

#include <algorithm>
#include <cmath>

#include "score/score_terms.h"

namespace corvane {

namespace {

// DOT11_PHY_TYPE
constexpr std::int32_t kPhyHt = 7;
constexpr std::int32_t kPhyVht = 8;
constexpr std::int32_t kPhyHe = 10;

std::int64_t Rounded(double value) { return std::llround(value); }

std::int64_t SignalPoints(std::uint32_t quality, std::int64_t max) {
  if (quality <= 50) return 0;
  return std::min(
      static_cast<std::int64_t>((quality - kGoodQuality) / 50.0 * static_cast<double>(max)), max);
}

std::int64_t RatePoints(std::uint64_t mbps, double bump) {
  const double rate = static_cast<double>(mbps);
  if (mbps < 1000) return Rounded(rate / 1000.0 * 2 * bump);
  return static_cast<std::int64_t>(2 * bump) + Rounded((rate - 1000.0) / 1000.0 * bump);
}

std::int64_t GenerationPoints(std::int32_t phyType) {
  switch (phyType) {
    case kPhyHt:
      return kGenerationPoints;
    case kPhyVht:
      return 2 * kGenerationPoints;
    case kPhyHe:
      return 3 * kGenerationPoints;
    default:
      return 0;
  }
}

}  // namespace

std::int32_t ComputeBackupScore(const BackupScoreInputs& in) {
  std::int64_t sum = SignalPoints(in.quality, in.weights.SQMax);
  if (in.isPrivate) sum += in.weights.PNMax;
  sum += in.weights.MUMIMOMax;
  sum += RatePoints((std::uint64_t{in.rxKbps} + in.txKbps) / 1000, in.weights.MBPSBumpMax);
  sum += GenerationPoints(in.phyType);
  sum += std::max(in.bandAverage > 0 ? in.bandAverage : in.rememberedAverage, 0);
  if (in.guest) sum = std::max<std::int64_t>(sum - kGuestPoints, 0);
  sum -= std::min(std::int64_t{WeakSignalPoints(in.quality)}, sum);
  return static_cast<std::int32_t>(std::min<std::int64_t>(sum, INT32_MAX));
}

}  // namespace corvane
