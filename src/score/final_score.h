#pragma once
// The final score: the newest subtotal and what depends on this moment. Pure.

#include <cstdint>
#include <string>

namespace corvane {

struct FinalScoreInputs {
  std::int32_t subtotal = 0;
  std::int32_t loadPoints = -1;   // of the load element; below 0: the channel's load counts instead
  std::uint8_t channelLoad = 0;   // percent, 255 for no information
  std::int32_t bandAverage = -1;  // average load points of the BSS's band
  std::uint32_t loadWeight = 10;  // QBSSBumpMax
  bool guest = false;             // a guest network by its name
  bool bluetoothBand = false;     // outside the 5 GHz range
  std::int32_t bluetoothPenalty = 0;
};

// With a log, rewrites it with the terms.
std::int32_t ComputeFinalScore(const FinalScoreInputs& in, std::string* log);

}  // namespace corvane
