#pragma once
#include <array>
#include <cstdint>

namespace corvane {

// How crowded each channel number is. Entry n stands for channel n, 1 to 199.
struct ChannelLoadMap {
  using Row = std::array<std::uint8_t, 200>;
  struct Band {
    Row noise{};    // summed weights, at most 255
    Row load{};     // running load percent
    Row apCount{};  // BSSes on the channel
  };
  Band low;   // bands 2, 5 and 0; load 255 means no information
  Band six;   // band 6; load 0 means no information
};

}  // namespace corvane
