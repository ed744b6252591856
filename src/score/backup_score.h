#pragma once
// The score of the connected access point worked out from the connection alone, for when its
// elements are gone. Pure.

#include <cstdint>

#include "store/score_weights.h"

namespace corvane {

struct BackupScoreInputs {
  std::uint32_t quality = 0;  // link quality, 0 to 100
  ScoreWeights weights;
  bool isPrivate = false;  // by the network list
  std::uint32_t rxKbps = 0;
  std::uint32_t txKbps = 0;
  std::int32_t phyType = 0;       // DOT11_PHY_TYPE
  std::int32_t bandAverage = -1;  // average load points of the band, of the last finished scores
  std::int32_t rememberedAverage = -1;  // the last one above 0; stands in
  bool guest = false;                   // a guest network by its name
};

// In points, never below 0.
std::int32_t ComputeBackupScore(const BackupScoreInputs& in);

// Channels of the 2.4 GHz band by number.
constexpr bool IsLowBandChannel(std::uint32_t channel) { return channel < 32; }

}  // namespace corvane
