#include "balanced/ripening.h"

namespace corvane::balanced {

namespace {

constexpr std::int32_t kLeastGain = 3;  // a quarter more
constexpr std::int32_t kOtherNetworkGain = 3;
constexpr std::int32_t kSoonBackGain = 21;  // three times as much
constexpr std::int32_t kBackGain = 4;
constexpr std::uint64_t kSoonMs = 130'000, kLaterMs = 300'000;
constexpr std::int32_t kGoodGain = 6;   // 60 percent
constexpr std::int32_t kPoorLink = 30;  // 9 Mbps

}  // namespace

std::int32_t NeededGain(const GainFacts& gain) {
  std::int32_t needed = kLeastGain;
  if (gain.sinceLeftMs < kSoonMs) {
    needed = kSoonBackGain;
  } else if (gain.sinceLeftMs < kLaterMs) {
    needed = kBackGain;
  }
  return needed + (gain.sameNetwork ? 0 : kOtherNetworkGain);
}

std::int32_t RoundsToWin(const GainFacts& gain) {
  return gain.points >= kGoodGain || gain.falling || gain.current < kPoorLink ? 1 : 2;
}

}  // namespace corvane::balanced
