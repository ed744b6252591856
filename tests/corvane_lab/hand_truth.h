#pragma once
#include <vector>

#include "corvane_lab/air_truth.h"

namespace corvane::test {

// A truth written by hand, with one adapter: for each access point its Mbps by second, where 0 is
// not heard. Everybody is let in everywhere.
inline lab::Truth HandTruth(const std::vector<std::vector<float>>& mbps) {
  lab::Truth truth;
  truth.accessPoints = mbps.size();
  truth.seconds = mbps.front().size();
  lab::AdapterTruth adapter;
  adapter.mbps = mbps;
  for (const auto& row : mbps) {
    auto& heard = adapter.heard.emplace_back();
    for (const float rate : row) heard.push_back(rate > 0.0f);
  }
  adapter.letsIn = adapter.heard;
  adapter.busy.resize(truth.seconds);
  truth.adapters = {adapter};
  return truth;
}

// So many seconds at one rate.
inline std::vector<float> Steady(std::size_t seconds, float mbps) {
  return std::vector<float>(seconds, mbps);
}

}  // namespace corvane::test
