#include "elements/frequency_table.h"

#include <gtest/gtest.h>

#include <map>

namespace corvane {
namespace {

// The channels that exist, by MHz, from the rules of their numbering.
std::map<std::uint32_t, ChannelAndWidth> KnownChannels() {
  std::map<std::uint32_t, ChannelAndWidth> known;
  for (const std::uint32_t n : {183u, 184u, 185u, 187u, 188u, 189u, 192u, 196u})
    known[4000 + 5 * n] = {n, 20};
  known[5080] = {16, 20};
  for (std::uint32_t n = 34; n <= 64; n += 2) known[5000 + 5 * n] = {n, 20};
  for (std::uint32_t n = 100; n <= 128; n += 2) known[5000 + 5 * n] = {n, 20};
  for (std::uint32_t n = 132; n <= 144; n += 2) known[5000 + 5 * n] = {n, 20};
  for (std::uint32_t n = 149; n <= 165; n += 2) known[5000 + 5 * n] = {n, 20};
  known.erase(5000 + 5 * 163);
  for (const std::uint32_t n :
       {38u, 46u, 54u, 62u, 102u, 110u, 118u, 126u, 134u, 142u, 151u, 159u}) {
    known[5000 + 5 * n].width = 40;
  }
  for (const std::uint32_t n : {42u, 58u, 106u, 122u, 138u, 155u}) known[5000 + 5 * n].width = 80;
  for (const std::uint32_t n : {50u, 114u}) known[5000 + 5 * n].width = 160;
  EXPECT_EQ(known.size(), 55u);
  known[5935] = {2, 20};
  for (std::uint32_t n = 1; n <= 233; n += 4) known[5950 + 5 * n] = {n, 20};
  return known;
}

TEST(FrequencyTable, KnowsExactlyTheChannelsThatExistAbove3GHz) {
  const auto known = KnownChannels();
  for (std::uint32_t mhz = 3000; mhz <= 7300; ++mhz) {
    const auto at = known.find(mhz);
    ASSERT_EQ(ChannelOfFrequency(mhz * 1000), at == known.end() ? ChannelAndWidth{} : at->second)
        << mhz;
  }
}

TEST(FrequencyTable, CountsChannelsOf2GHzFromTheFirst) {
  const struct {
    std::uint32_t khz, channel, width;
  } cases[] = {
      {2400999, 0, 0},  {2408000, 1, 20},  {2412000, 1, 20},  {2416999, 1, 20},   {2417000, 2, 20},
      {2437000, 6, 20}, {2472000, 13, 20}, {2484000, 15, 20}, {2999999, 118, 20}, {3000000, 0, 0},
      {0, 0, 0},        {5160000, 0, 0},   {5180999, 36, 20},  // whole MHz count
  };
  for (const auto& one : cases) {
    EXPECT_EQ(ChannelOfFrequency(one.khz), (ChannelAndWidth{one.channel, one.width})) << one.khz;
  }
}

TEST(FrequencyTable, BandsAndTheirTexts) {
  const struct {
    std::uint32_t khz;
    int band;
    const char* text;
  } cases[] = {
      {0, 0, "0G"},         {1999999, 0, "1G"},   {2000000, 2, "2.4Ghz"}, {2999999, 2, "2.4Ghz"},
      {3000000, 0, "3G"},   {4980000, 0, "4G"},   {5149999, 0, "5G"},     {5150000, 5, "5Ghz"},
      {5924999, 5, "5Ghz"}, {5925000, 6, "6Ghz"}, {7129999, 6, "6Ghz"},   {7130000, 0, "7G"},
      {10999999, 0, "10G"}, {11000000, 0, "?G"},  {4294967295u, 0, "?G"},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(BandOfFrequency(one.khz), one.band) << one.khz;
    EXPECT_EQ(BandTextOf(one.khz), one.text) << one.khz;
  }
}

}  // namespace
}  // namespace corvane
