#include "balanced/background.h"

#include <algorithm>

namespace corvane::balanced {

namespace {

constexpr std::size_t kSamplesNeeded = 18;  // three minutes
constexpr double kMostBackground = 0.25;    // beyond it somebody speaks, or loads
constexpr double kFactor = 2.0;

}  // namespace

void Background::Add(double mbps) {
  m_Rates[m_Count % kKept] = mbps;
  ++m_Count;
}

double Background::Gate(double start) const {
  if (m_Count < kSamplesNeeded) return start;
  std::array<double, kKept> rates = m_Rates;
  const std::size_t known = std::min(m_Count, kKept);
  const auto tenth = rates.begin() + static_cast<std::ptrdiff_t>(known / 10);
  std::nth_element(rates.begin(), tenth, rates.begin() + static_cast<std::ptrdiff_t>(known));
  return start + kFactor * std::min(*tenth, kMostBackground);
}

}  // namespace corvane::balanced
