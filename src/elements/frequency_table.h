#pragma once
// Channels and bands of centre frequencies (IEEE Std 802.11-2020 Annex E; 802.11ax-2021 27.3.23.2).

#include <cstdint>
#include <string_view>

namespace corvane {

struct ChannelAndWidth {
  std::uint32_t channel = 0;  // 0 for a frequency that is in no table
  std::uint32_t width = 0;    // MHz
  friend bool operator==(const ChannelAndWidth&, const ChannelAndWidth&) = default;
};

// Channel and nominal width of a centre frequency in kHz.
ChannelAndWidth ChannelOfFrequency(std::uint32_t khz);

// 2, 5, 6, or 0 for anything else.
int BandOfFrequency(std::uint32_t khz);

// "2.4Ghz", "5Ghz", "6Ghz"; outside the bands whole GHz as "0G" to "10G", "?G" beyond.
std::string_view BandTextOf(std::uint32_t khz);

}  // namespace corvane
