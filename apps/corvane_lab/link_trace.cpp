#include "corvane_lab/link_trace.h"

#include <algorithm>
#include <cmath>

namespace corvane::lab {

namespace {

constexpr std::uint64_t kSecondMs = 1000;

// What of second `second` a link holds that lasts from one time to another, 0 to 1.
double ShareOf(std::size_t second, std::uint64_t fromMs, std::uint64_t toMs) {
  const std::uint64_t begin = std::max<std::uint64_t>(fromMs, second * kSecondMs);
  const std::uint64_t end = std::min<std::uint64_t>(toMs, (second + 1) * kSecondMs);
  return begin < end ? static_cast<double>(end - begin) / kSecondMs : 0.0;
}

// Calls `with(access point, second, share of the second)` for all that the links of a trace hold.
template <class With>
void ForEachSecond(const Truth& truth, const AdapterTrace& trace, With&& with) {
  const std::uint64_t endMs = truth.seconds * kSecondMs;
  for (std::size_t i = 0; i < trace.links.size(); ++i) {
    const LinkChange& link = trace.links[i];
    const std::uint64_t next = i + 1 < trace.links.size() ? trace.links[i + 1].ms : endMs;
    const std::uint64_t toMs = std::min(next, endMs);
    if (link.accessPoint == kNoLink) continue;
    for (std::size_t second = link.ms / kSecondMs; second * kSecondMs < toMs; ++second)
      with(static_cast<std::size_t>(link.accessPoint), second, ShareOf(second, link.ms, toMs));
  }
}

int AdaptersOn(const PolicyTrace& trace, std::size_t accessPoint, std::size_t second) {
  return static_cast<int>(std::ranges::count_if(trace, [&](const AdapterTrace& adapter) {
    return adapter.At(second * kSecondMs + kSecondMs / 2) == static_cast<int>(accessPoint);
  }));
}

void CountMoves(const AdapterTruth& truth, const AdapterTrace& trace, TraceScore* score) {
  constexpr std::uint64_t kPingPongMs = 120'000;
  int last = kNoLink, before = kNoLink;  // access points, `before` the one before `last`
  std::uint64_t arrivedMs = 0, leftMs = 0;
  for (const LinkChange& link : trace.links) {
    if (link.accessPoint == kNoLink) {
      leftMs = link.ms;
      continue;
    }
    if (link.accessPoint == last) continue;
    if (last != kNoLink) {
      ++score->moves;
      if (link.accessPoint == before && link.ms - arrivedMs <= kPingPongMs) ++score->pingPongs;
      // A roam of the driver leaves no gap.
      const std::uint64_t ms = leftMs > arrivedMs ? leftMs : link.ms;
      const std::size_t second = std::min<std::size_t>(ms / kSecondMs, truth.busy.size() - 1);
      if (truth.busy[second] && truth.heard[static_cast<std::size_t>(last)][second])
        ++score->movesInPhases;
    }
    before = last;
    last = link.accessPoint;
    arrivedMs = link.ms;
  }
}

}  // namespace

int AdapterTrace::At(std::uint64_t ms) const {
  const auto next =
      std::upper_bound(links.begin(), links.end(), ms,
                       [](std::uint64_t time, const LinkChange& link) { return time < link.ms; });
  return next == links.begin() ? kNoLink : std::prev(next)->accessPoint;
}

double WorthOf(Measure measure, double mbps) {
  constexpr double kUsefulMbps = 100.0;
  switch (measure) {
    case Measure::kRate:
      return mbps;
    case Measure::kUseful:
      return std::min(mbps, kUsefulMbps);
    case Measure::kLog:
      return std::log1p(mbps);
  }
  return 0.0;
}

std::vector<float> RatesOf(const Truth& truth, const PolicyTrace& trace, std::size_t adapter) {
  std::vector<float> rates(truth.seconds);
  const AdapterTruth& air = truth.adapters[adapter];
  ForEachSecond(truth, trace[adapter], [&](std::size_t ap, std::size_t second, double share) {
    const int sharing = trace.size() > 1 ? std::max(AdaptersOn(trace, ap, second), 1) : 1;
    rates[second] +=
        static_cast<float>(static_cast<double>(air.mbps[ap][second]) * share / sharing);
  });
  return rates;
}

TraceScore ScoreTrace(const Truth& truth, const PolicyTrace& trace) {
  TraceScore score;
  for (std::size_t i = 0; i < trace.size(); ++i) {
    const AdapterTruth& air = truth.adapters[i];
    double connected = 0.0;
    ForEachSecond(truth, trace[i], [&](std::size_t ap, std::size_t second, double share) {
      if (!air.heard[ap][second]) return;
      connected += share;
      const int sharing = trace.size() > 1 ? std::max(AdaptersOn(trace, ap, second), 1) : 1;
      const double mbps = static_cast<double>(air.mbps[ap][second]) / sharing;
      for (std::size_t m = 0; m < kMeasures.size(); ++m)
        score.worth[m] += share * WorthOf(kMeasures[m], mbps);
      if (air.busy[second]) score.phaseRate += share * mbps;
    });
    score.disconnectedSeconds += static_cast<double>(truth.seconds) - connected;
    CountMoves(air, trace[i], &score);
    for (const std::uint64_t ms : trace[i].scans) {
      const std::size_t second = ms / kSecondMs;
      if (second >= truth.seconds) continue;
      ++score.scans;
      score.scansInPhases += air.busy[second] && trace[i].At(ms) != kNoLink;
    }
  }
  return score;
}

}  // namespace corvane::lab
