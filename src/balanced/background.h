#pragma once
// What a link carries while nobody uses it. Rates in Mbps, both ways together.

#include <array>
#include <cstddef>

namespace corvane::balanced {

// The rates of the last half hour, one a round. Worker only.
class Background {
 public:
  void Add(double mbps);
  // From which rate on the link counts as used: above what it carries nine times out of ten
  // anyway. A link that is not known yet, and one without a background, have `start`.
  double Gate(double start) const;

 private:
  static constexpr std::size_t kKept = 180;
  std::array<double, kKept> m_Rates{};
  std::size_t m_Count = 0;  // all that were added; the newest overwrite the oldest
};

}  // namespace corvane::balanced
