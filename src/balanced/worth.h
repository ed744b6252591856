#pragma once
// What an access point is worth: the rate that an adapter would get there, in points. Pure.

#include <cstdint>

#include "balanced/link_rate.h"
#include "score/subtotal_rule.h"

namespace corvane::balanced {

// How busy the air of a channel is, as far as anybody says, in percent.
struct AirFacts {
  int band = 0;                    // 2, 5 or 6
  double loadPct = -1.0;           // of the BSS's own load element, -1 without
  std::uint8_t channelLoad = 255;  // what others on the channel say of it, 255 for nothing
};

// Share of the air that is left, above 0. Without any figure what is usual on the band.
double FreeShare(const AirFacts& air);

// Mbps that are left for this adapter.
double ExpectedMbps(const Link& link, double dbm, const AirFacts& air);

// 0 to 100: nine points for each doubling of the rate, so that a difference of points is a ratio.
// 1 Mbps is 9 points, 100 Mbps 60, 2000 Mbps 99.
std::int32_t PointsOf(double mbps);
// The rate of a number of points; the inverse of PointsOf but for its rounding.
double MbpsOf(std::int32_t points);

// The SubtotalRule of this profile: the worth stands for signal, generation, rate, load and noise;
// category, security, internet and lists count as ever.
SubtotalResult Subtotal(const SubtotalInputs& in, const HeardLink& link, std::string* log);

}  // namespace corvane::balanced
