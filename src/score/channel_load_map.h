#pragma once
// How crowded each channel number is, worked out from the footprints of all BSSes. Pure.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvane {

// Channel numbers run from 1 to 199; entry 0 is not used. 2.4 and 5 GHz share one band of arrays,
// as their numbers do not meet; 6 GHz has its own.
struct ChannelLoadMap {
  static constexpr int kChannels = 200;
  static constexpr std::uint8_t kNoLoad = 255;
  using Row = std::array<std::uint8_t, kChannels>;
  struct Band {
    Row noise{};    // summed weights, at most 255
    Row load{};     // running load percent; kNoLoad (in the low bands) for no information
    Row apCount{};  // BSSes on the channel
    friend bool operator==(const Band&, const Band&) = default;
  };

  ChannelLoadMap() { Reset(); }
  void Reset();

  Band& OfBand(int band) { return band == 6 ? six : low; }
  const Band& OfBand(int band) const { return band == 6 ? six : low; }

  static bool IsChannel(std::int64_t channel) { return channel >= 1 && channel < kChannels; }
  // Quiet, or no channel at all.
  bool IsQuiet(int band, std::int32_t channel) const;
  // Load percent; kNoLoad for no information, 0 for band 0 and for no channel.
  std::uint8_t LoadOf(int band, std::int32_t channel) const;
  std::uint8_t ApCountOf(int band, std::int64_t channel) const;  // 0 for no channel

  friend bool operator==(const ChannelLoadMap&, const ChannelLoadMap&) = default;

  Band low;  // bands 2, 5 and 0
  Band six;  // band 6
};

// One BSS as the map sees it.
struct FootprintInputs {
  int band = 0;
  std::uint32_t quality = 0;  // 0 to 100
  std::uint32_t width = 0;    // MHz, of the frequency table
  std::uint32_t channel = 0;  // of the frequency
  bool hasElements = false;
  bool eightyPlusEighty = false;
  bool dsss = false;               // a DSSS rate is listed
  std::int32_t centerChannel = 0;  // of the elements
  std::int32_t seg0Channel = 0;
  std::int32_t seg1Channel = 0;
  double loadPct = -1.0;
};

enum class FootprintFault { kNone, kBadPrimary, kBadSecondary, kBadChannel };

struct Footprint {
  FootprintFault fault = FootprintFault::kNone;
  std::int64_t badChannel = 0;         // of the fault
  std::vector<std::int32_t> channels;  // touched, ascending within a segment
  std::string text;                    // such as "{2}-{10}"
};

// Lays the footprint of one BSS over the map and spreads its load figure. A BSS on a bad channel
// adds nothing. `out` keeps its storage over calls.
void LayFootprint(const FootprintInputs& in, ChannelLoadMap* map, Footprint* out);

}  // namespace corvane
