#pragma once
// The rate gate of a connection: from which rate on a switch is held back, learned once for each
// connection from its background traffic. Pure; rates in Mbps.

#include <optional>

namespace corvane {

struct RateGates {
  double high = 0.06;  // at or above it a switch waits
  double low = 0.04;   // trickle samples above it count as noise
  friend bool operator==(const RateGates&, const RateGates&) = default;
};

// What was measured of the connection's trickle: samples above 0 and below 0.1 Mbps.
struct TrickleMeasure {
  double ageSecs = 0.0;          // since the first trickle sample
  double percentAboveLow = 0.0;  // 0 to 100
  double mean = 0.0;             // running mean
  double rate = 0.0;             // of this moment, transmit and receive
};

struct GateLearning {
  std::optional<RateGates> learned;  // to be stored
  bool settled = false;              // nothing more is to be learned on this connection
};
// `start` are the gates that a connection begins with.
GateLearning LearnRateGates(const TrickleMeasure& measure, const RateGates& now,
                            const RateGates& start);

}  // namespace corvane
