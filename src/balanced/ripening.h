#pragma once
// How much better an access point has to be, and for how long. Pure.

#include <cstdint>

namespace corvane::balanced {

struct GainFacts {
  std::int32_t points = 0;        // of the candidate above the connection; 9 are twice the rate
  std::int32_t current = 0;       // of the connection
  bool sameNetwork = false;       // a move keeps addresses and sessions
  bool falling = false;           // the link has lost 5 dB within half a minute
  std::uint64_t sinceLeftMs = 0;  // since the adapter was there and left; far back if it never was
};

// Points that a move has to bring, so that what is gained outweighs the break and the noise of the
// measurement. Going back soon is dear: it is how ping-pong begins.
std::int32_t NeededGain(const GainFacts& gain);

// Rounds with a fresh scan that it has to bring them: 1 where much is gained or the link is about
// to go, else 2.
std::int32_t RoundsToWin(const GainFacts& gain);

}  // namespace corvane::balanced
