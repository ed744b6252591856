#include "balanced/worth.h"

#include <algorithm>
#include <cmath>

namespace corvane::balanced {

namespace {

constexpr double kPointsPerDoubling = 9.0;
constexpr double kLeastFree = 0.02;
// What is usual where nobody says: 2.4 GHz is shared by whole houses.
constexpr double kUsualLoad2 = 37.0, kUsualLoad5 = 8.0, kUsualLoad6 = 3.0;
constexpr std::uint8_t kNoLoad = 255;

double UsualLoad(int band) {
  return band == 6 ? kUsualLoad6 : band == 5 ? kUsualLoad5 : kUsualLoad2;
}

}  // namespace

// What others on the channel say was measured where they are: it shifts what is usual by a quarter.
double FreeShare(const AirFacts& air) {
  constexpr double kHearsay = 0.25;
  double load = air.loadPct;
  if (load < 0.0) {
    load = UsualLoad(air.band);
    if (air.channelLoad != kNoLoad && air.channelLoad > 0)
      load += kHearsay * (air.channelLoad - load);
  }
  return std::clamp(1.0 - load / 100.0, kLeastFree, 1.0);
}

double ExpectedMbps(const Link& link, double dbm, const AirFacts& air) {
  return PhyMbps(link, dbm) * FreeShare(air);
}

std::int32_t PointsOf(double mbps) {
  const double points = kPointsPerDoubling * std::log2(1.0 + std::max(mbps, 0.0));
  return static_cast<std::int32_t>(std::lround(std::min(points, 100.0)));
}

double MbpsOf(std::int32_t points) { return std::exp2(points / kPointsPerDoubling) - 1.0; }

SubtotalResult Subtotal(const SubtotalInputs& in, const HeardLink& link, std::string* log) {
  static const ElementFields kNone;
  SubtotalInputs rated = in;
  // A connection's own figure is newer than the scan's; a point of quality is half a dB.
  const double newer =
      in.pegQuality > 0
          ? (static_cast<double>(in.pegQuality) - static_cast<double>(in.quality)) / 2.0
          : 0.0;
  const Link rate = LinkOf(link.elements ? *link.elements : kNone, link.band, link.adapterHe);
  const AirFacts air{link.band, in.radio ? in.radio->loadPct : -1.0, link.channelLoad};
  // Two adapters on one access point have half of it each: the later one looks for another.
  const double mbps = ExpectedMbps(rate, link.dbm + newer, air) / (link.shared ? 6.0 : 1.0);
  rated.worth = WorthTerm{PointsOf(mbps), static_cast<std::int32_t>(mbps)};
  return ComputeSubtotal(rated, log);
}

}  // namespace corvane::balanced
