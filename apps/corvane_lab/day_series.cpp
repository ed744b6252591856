#include "corvane_lab/day_series.h"

#include <cstdlib>
#include <utility>

namespace corvane::lab {

namespace {

constexpr std::uint64_t kFirstLeastMs = 15'000;

}  // namespace

bool DaySeries::Differs(const Point& a, const Point& b) const {
  const bool isHeard = a.quality != kNone, wasHeard = b.quality != kNone;
  if (isHeard != wasHeard || a.counter != b.counter) return true;
  if (a.ms - b.ms < m_LeastMs) return false;
  return a.score != b.score || a.reason != b.reason ||
         std::abs(a.quality - b.quality) > m_Tolerance;
}

void DaySeries::Add(const Point& point) {
  if (!m_Points.empty() && !Differs(point, m_Points.back())) return;
  m_Points.push_back(point);
  if (m_Points.size() > kMostPoints) Coarsen();
}

// Until at most half of them is left. Where the changes that always count are too many, every
// second one goes: no picture has room for them.
void DaySeries::Coarsen() {
  m_LeastMs = m_LeastMs == 0 ? kFirstLeastMs : m_LeastMs * 2;
  ++m_Tolerance;
  std::vector<Point> all = std::exchange(m_Points, {});
  for (const Point& point : all) {
    if (m_Points.empty() || Differs(point, m_Points.back())) m_Points.push_back(point);
  }
  if (m_Points.size() <= kMostPoints / 2) return;
  all = std::exchange(m_Points, {});
  for (std::size_t i = 0; i < all.size(); i += 2) m_Points.push_back(all[i]);
}

}  // namespace corvane::lab
