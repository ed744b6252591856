#include "probes/rtt_statistics.h"

#include <cmath>

namespace corvane {

double MeanOf(const std::list<std::uint32_t>& times) {
  if (times.empty()) return 0.0;
  double sum = 0.0;
  for (const std::uint32_t time : times) sum += time;
  return sum / static_cast<double>(times.size());
}

double DeviationOf(const std::list<std::uint32_t>& times) {
  if (times.empty()) return 0.0;
  const double mean = MeanOf(times);
  double squares = 0.0;
  for (const std::uint32_t time : times) squares += (time - mean) * (time - mean);
  return std::sqrt(squares / static_cast<double>(times.size()));
}

}  // namespace corvane
