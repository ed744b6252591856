#pragma once
#include <cstdint>

namespace corvane {

// The weights of the score, in points. Each is one 32-bit word: the adapter's worker writes them,
// other threads may read a mixture of old and new ones.
struct ScoreWeights {
  std::uint32_t Internet = 20;     // taken for a network without internet
  std::uint32_t SQMax = 30;        // for a link quality of 100
  std::uint32_t PNMax = 1;         // for a network of the private category
  std::uint32_t MUMIMOMax = 5;     // for MU-MIMO
  std::uint32_t MBPSBumpMax = 5;   // for each 1000 Mbps above the first, half of the first's
  std::uint32_t QBSSBumpMax = 10;  // for an unloaded BSS
  std::uint32_t NOISEMax = 10;     // for a quiet channel
  friend bool operator==(const ScoreWeights&, const ScoreWeights&) = default;
};

}  // namespace corvane
