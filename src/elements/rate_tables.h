#pragma once
// Data rates by MCS, in Mbps (IEEE Std 802.11-2020 19.5 and 21.5, 802.11ax-2021 27.5).

#include <cstdint>
#include <string>

namespace corvane {

// Rate of HT MCS 0 to 32, all streams of the MCS included; 0 for others.
double HtRateMbps(unsigned mcs, bool forty, bool shortGI20, bool shortGI40);

enum class McsGeneration { kVht, kHe };

// What a VHT or HE map of eight 2-bit fields says, one field a spatial stream.
struct McsMapReading {
  std::uint32_t streams = 0;  // fields that are not 3, holes included
  std::uint32_t maxMcs = 0;   // lowest of the streams' top MCS
  double rateMbps = 0.0;      // of all streams; 0 for a width of none of the columns
  std::string text;           // such as "0-9, 0-9"
};

// `width` in MHz; 0 leaves the rate out.
McsMapReading ReadMcsMap(McsGeneration generation, std::uint16_t map, std::uint32_t width,
                         bool shortGI);

}  // namespace corvane
