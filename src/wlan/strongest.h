#pragma once
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

namespace corvane {

// The places of `limit` items of a list, by rising place: all of a list that is not longer, else
// those for which rankOf(place) is highest; of equal ones the earlier.
template <class RankOf>
std::vector<std::uint32_t> StrongestOf(std::uint32_t count, std::uint32_t limit, RankOf rankOf) {
  std::vector<std::uint32_t> places(count);
  std::iota(places.begin(), places.end(), 0u);
  if (count <= limit) return places;
  std::nth_element(places.begin(), places.begin() + limit, places.end(),
                   [&rankOf](std::uint32_t a, std::uint32_t b) {
                     const auto one = rankOf(a), other = rankOf(b);
                     return one != other ? one > other : a < b;
                   });
  places.resize(limit);
  std::sort(places.begin(), places.end());
  return places;
}

}  // namespace corvane
