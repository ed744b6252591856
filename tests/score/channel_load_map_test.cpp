#include "score/channel_load_map.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

// A 20 MHz OFDM BSS of 5 GHz.
FootprintInputs Ofdm(std::int32_t channel, std::uint32_t quality, double loadPct = -1.0) {
  FootprintInputs in;
  in.band = 5;
  in.quality = quality;
  in.width = 20;
  in.channel = static_cast<std::uint32_t>(channel);
  in.hasElements = true;
  in.centerChannel = channel;
  in.loadPct = loadPct;
  return in;
}

FootprintInputs Dsss(std::int32_t channel, std::uint32_t quality) {
  FootprintInputs in = Ofdm(channel, quality);
  in.band = 2;
  in.dsss = true;
  return in;
}

FootprintInputs Split(std::int32_t seg0, std::int32_t seg1, std::uint32_t quality) {
  FootprintInputs in = Ofdm(42, quality);
  in.eightyPlusEighty = true;
  in.seg0Channel = seg0;
  in.seg1Channel = seg1;
  return in;
}

// The channels with noise or APs, as "channel:noise", "*" behind those that count an AP.
std::string Shape(const ChannelLoadMap::Band& band) {
  std::string text;
  for (std::size_t channel = 0; channel < 200; ++channel) {
    if (band.noise[channel] == 0 && band.apCount[channel] == 0) continue;
    text += std::to_string(channel) + ":" + std::to_string(band.noise[channel]);
    text.append(band.apCount[channel], '*');
    text += ' ';
  }
  return text;
}

std::string Around(int low, int high, int half, int full, int center) {
  std::string text;
  for (int channel = low; channel <= high; ++channel) {
    const bool edge = channel == low || channel == high;
    text += std::to_string(channel) + ":" + std::to_string(edge ? half : full) +
            (channel == center ? "* " : " ");
  }
  return text;
}

TEST(ChannelLoadMap, FootprintsOfEachKind) {
  FootprintInputs withoutElements = Ofdm(36, 80);
  withoutElements.hasElements = false;
  withoutElements.centerChannel = 99;  // not looked at
  FootprintInputs byFrequency = Ofdm(36, 80);
  byFrequency.centerChannel = -1;
  FootprintInputs wide = Ofdm(42, 80);
  wide.width = 80;
  FootprintInputs noWidth = Ofdm(42, 80);
  noWidth.width = 0;
  const struct {
    FootprintInputs in;
    std::string shape;
    const char* text;
  } cases[] = {
      {Ofdm(6, 80), "4:4 5:8 6:8* 7:8 8:4 ", "{4}-{8}"},
      {Dsss(6, 80), "4:8 5:8 6:8* 7:8 8:8 ", "{4}-{8}"},
      {Ofdm(6, 15), "5:1 6:1* 7:1 ", "{4}-{8}"},  // half of 15 is below a point
      {Ofdm(6, 9), "6:0* ", "{4}-{8}"},           // too weak for a point, but it covers and counts
      {Ofdm(1, 100), "1:10* 2:10 3:5 ", "{1}-{3}"},
      {Ofdm(2, 100), "1:10 2:10* 3:10 4:5 ", "{1}-{4}"},
      {Ofdm(3, 100), "1:5 2:10 3:10* 4:10 5:5 ", "{1}-{5}"},
      {Dsss(1, 100), "1:10* 2:10 3:10 ", "{1}-{3}"},
      {Ofdm(194, 100), "192:5 193:10 194:10* 195:10 196:5 ", "{192}-{196}"},
      {Ofdm(195, 100), "193:5 194:10 195:10* 196:10 ", "{193}-{196}"},
      {Ofdm(196, 100), "194:5 195:10 196:10* ", "{194}-{196}"},
      {wide, Around(34, 50, 4, 8, 42), "{34}-{50}"},
      {noWidth, "42:8* ", "{42}-{42}"},  // both edges fall on the channel itself
      {withoutElements, "34:4 35:8 36:8* 37:8 38:4 ", "{34}-{38}"},
      {byFrequency, "34:4 35:8 36:8* 37:8 38:4 ", "{34}-{38}"},
      {Split(42, 155, 50), Around(34, 50, 2, 5, 42) + Around(147, 163, 2, 5, 155),
       "{34}-{50}, {147}-{163}"},
  };
  for (const auto& one : cases) {
    ChannelLoadMap map;
    Footprint footprint;
    LayFootprint(one.in, &map, &footprint);
    EXPECT_EQ(footprint.fault, FootprintFault::kNone);
    EXPECT_EQ(Shape(map.low), one.shape);
    EXPECT_EQ(footprint.text, one.text);
    EXPECT_EQ(map.low.noise[0], 0);
  }
}

TEST(ChannelLoadMap, ABadChannelAddsNothing) {
  const struct {
    FootprintInputs in;
    FootprintFault fault;
    std::int64_t channel;
  } cases[] = {
      {Ofdm(0, 80), FootprintFault::kBadChannel, 0},
      {Ofdm(200, 80), FootprintFault::kBadChannel, 200},
      {Dsss(200, 80), FootprintFault::kBadChannel, 200},
      {Split(0, 155, 80), FootprintFault::kBadPrimary, 0},
      {Split(200, 200, 80), FootprintFault::kBadPrimary, 200},
      {Split(42, 0, 80), FootprintFault::kBadSecondary, 0},
      {Split(42, 200, 80), FootprintFault::kBadSecondary, 200},
  };
  for (const auto& one : cases) {
    ChannelLoadMap map;
    Footprint footprint{FootprintFault::kNone, 0, {1, 2}, "old"};
    LayFootprint(one.in, &map, &footprint);
    EXPECT_EQ(footprint.fault, one.fault) << one.channel;
    EXPECT_EQ(footprint.badChannel, one.channel);
    EXPECT_TRUE(footprint.channels.empty() && footprint.text.empty());
    EXPECT_EQ(Shape(map.low) + Shape(map.six), "");
  }
  ChannelLoadMap map;
  Footprint footprint;
  LayFootprint(Ofdm(199, 80), &map, &footprint);  // the last one; only its edge is in range
  EXPECT_EQ(footprint.fault, FootprintFault::kNone);
  EXPECT_EQ(map.ApCountOf(5, 199), 1);
}

TEST(ChannelLoadMap, LoadRunsOverTheFootprintAndTheLastWeighsMost) {
  ChannelLoadMap map;
  Footprint footprint;
  const auto after = [&](double loadPct) {
    LayFootprint(Ofdm(36, 80, loadPct), &map, &footprint);
    return int{map.LoadOf(5, 36)};
  };
  EXPECT_EQ(after(-1.0), 255);
  EXPECT_EQ(after(0.0), 255);  // an idle AP says nothing
  EXPECT_EQ(after(30.9), 30);
  EXPECT_EQ(after(60.0), 40);
  EXPECT_EQ(after(90.0), 56);
  EXPECT_EQ(map.LoadOf(5, 34), 56);  // the half-weight edges too
  EXPECT_EQ(map.LoadOf(5, 38), 56);
  EXPECT_EQ(map.LoadOf(5, 39), 255);
  map.Reset();
  EXPECT_EQ(map.LoadOf(5, 36), 255);
  EXPECT_EQ(after(250.0), 100);
  EXPECT_EQ(after(0.5), 66);  // (200 + 0) / 3: counts, as it is above 0
  EXPECT_EQ(Shape(map.low), "34:8 35:16 36:16** 37:16 38:8 ");
}

TEST(ChannelLoadMap, SixGigahertzHasArraysOfItsOwn) {
  ChannelLoadMap map;
  Footprint footprint;
  FootprintInputs six = Ofdm(37, 100, 50.0);
  six.band = 6;
  for (int i = 0; i < 3; ++i) LayFootprint(six, &map, &footprint);
  LayFootprint(Ofdm(37, 40), &map, &footprint);
  EXPECT_EQ(map.ApCountOf(6, 37), 3);
  for (const int band : {0, 2, 5}) EXPECT_EQ(map.ApCountOf(band, 37), 1) << band;
  EXPECT_FALSE(map.IsQuiet(6, 37));
  EXPECT_TRUE(map.IsQuiet(0, 37) && map.IsQuiet(2, 37) && map.IsQuiet(5, 37));
  EXPECT_EQ(map.LoadOf(6, 37), 50);
  EXPECT_EQ(map.LoadOf(6, 93), 0);  // no information reads as no load there
  EXPECT_EQ(map.LoadOf(5, 93), 255);
  EXPECT_EQ(map.LoadOf(0, 37), 0);
}

TEST(ChannelLoadMap, QuietUpToTenPointsAndOutsideTheChannels) {
  ChannelLoadMap map;
  Footprint footprint;
  LayFootprint(Ofdm(36, 100), &map, &footprint);
  EXPECT_TRUE(map.IsQuiet(5, 36));
  LayFootprint(Ofdm(36, 10), &map, &footprint);
  EXPECT_FALSE(map.IsQuiet(5, 36));
  for (const int channel : {-3, 0, 200, 100000}) {
    EXPECT_TRUE(map.IsQuiet(5, channel)) << channel;
    EXPECT_EQ(map.LoadOf(5, channel), 0) << channel;
    EXPECT_EQ(map.ApCountOf(5, channel), 0) << channel;
  }
  // A crowd stays noisy: the sums don't wrap.
  for (int i = 0; i < 300; ++i) LayFootprint(Ofdm(36, 100), &map, &footprint);
  EXPECT_EQ(map.low.noise[36], 255);
  EXPECT_EQ(map.ApCountOf(5, 36), 255);
}

}  // namespace
}  // namespace corvane
