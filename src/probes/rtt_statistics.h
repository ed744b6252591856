#pragma once
#include <cstdint>
#include <list>

namespace corvane {

// Of a list of times in ms; 0 for an empty one. The deviation is that of the whole population.
double MeanOf(const std::list<std::uint32_t>& times);
double DeviationOf(const std::list<std::uint32_t>& times);

}  // namespace corvane
