#pragma once
#include <cstdint>
#include <vector>

namespace corvane::lab {

// How one access point stood with one adapter over time, as far as a picture can show it: what has
// hardly changed is left out, and the more of it there is, the coarser it becomes.
class DaySeries {
 public:
  // Holds from its time on until the next one.
  struct Point {
    std::uint64_t ms = 0;
    int score = kNone;  // kNone: not scored yet, or not heard
    int quality = kNone;
    int counter = 0;
    int reason = kNone;  // a number of the caller's
    bool operator==(const Point&) const = default;
  };
  static constexpr int kNone = -1;
  static constexpr std::size_t kMostPoints = 2000;

  // By rising time. Changes of score, counter or reason count, and of the quality from 3 on.
  void Add(const Point& point);
  const std::vector<Point>& Points() const { return m_Points; }

 private:
  bool Differs(const Point& a, const Point& b) const;
  void Coarsen();

  std::vector<Point> m_Points;
  int m_Tolerance = 2;          // of quality, in points
  std::uint64_t m_LeastMs = 0;  // between two points that tell of score or quality alone
};

}  // namespace corvane::lab
