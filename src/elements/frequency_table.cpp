#include "elements/frequency_table.h"

#include <algorithm>
#include <iterator>

namespace corvane {

namespace {

struct Row {
  std::uint16_t mhz;
  std::uint8_t channel;
  std::uint8_t width;
};

// 4.9 and 5 GHz, by frequency.
constexpr Row kRows[] = {
    {4915, 183, 20}, {4920, 184, 20}, {4925, 185, 20},  {4935, 187, 20}, {4940, 188, 20},
    {4945, 189, 20}, {4960, 192, 20}, {4980, 196, 20},  {5080, 16, 20},  {5170, 34, 20},
    {5180, 36, 20},  {5190, 38, 40},  {5200, 40, 20},   {5210, 42, 80},  {5220, 44, 20},
    {5230, 46, 40},  {5240, 48, 20},  {5250, 50, 160},  {5260, 52, 20},  {5270, 54, 40},
    {5280, 56, 20},  {5290, 58, 80},  {5300, 60, 20},   {5310, 62, 40},  {5320, 64, 20},
    {5500, 100, 20}, {5510, 102, 40}, {5520, 104, 20},  {5530, 106, 80}, {5540, 108, 20},
    {5550, 110, 40}, {5560, 112, 20}, {5570, 114, 160}, {5580, 116, 20}, {5590, 118, 40},
    {5600, 120, 20}, {5610, 122, 80}, {5620, 124, 20},  {5630, 126, 40}, {5640, 128, 20},
    {5660, 132, 20}, {5670, 134, 40}, {5680, 136, 20},  {5690, 138, 80}, {5700, 140, 20},
    {5710, 142, 40}, {5720, 144, 20}, {5745, 149, 20},  {5755, 151, 40}, {5765, 153, 20},
    {5775, 155, 80}, {5785, 157, 20}, {5795, 159, 40},  {5805, 161, 20}, {5825, 165, 20},
};
static_assert(std::size(kRows) == 55);
static_assert(std::is_sorted(std::begin(kRows), std::end(kRows),
                             [](const Row& a, const Row& b) { return a.mhz < b.mhz; }));

ChannelAndWidth ChannelIn6GHz(std::uint32_t mhz) {
  constexpr std::uint32_t kSpecialMhz = 5935, kSpecialChannel = 2, kBase = 5950, kLast = 233;
  if (mhz == kSpecialMhz) return {kSpecialChannel, 20};
  if (mhz <= kBase || (mhz - kBase) % 5 != 0) return {};
  const std::uint32_t channel = (mhz - kBase) / 5;
  return channel <= kLast && channel % 4 == 1 ? ChannelAndWidth{channel, 20} : ChannelAndWidth{};
}

}  // namespace

ChannelAndWidth ChannelOfFrequency(std::uint32_t khz) {
  const std::uint32_t mhz = khz / 1000;
  if (mhz >= 2401 && mhz <= 2999) {
    // The division truncates toward zero: 2408 MHz and up reads as channel 1. What lies lower has
    // no channel number that anything accepts.
    const std::int32_t offset = (static_cast<std::int32_t>(mhz) - 2412) / 5;
    return {static_cast<std::uint32_t>(offset + 1), 20};
  }
  const Row* row =
      std::lower_bound(std::begin(kRows), std::end(kRows), mhz,
                       [](const Row& a, std::uint32_t wanted) { return a.mhz < wanted; });
  if (row != std::end(kRows) && row->mhz == mhz) return {row->channel, row->width};
  return ChannelIn6GHz(mhz);
}

int BandOfFrequency(std::uint32_t khz) {
  if (khz >= 2000000 && khz <= 2999999) return 2;
  if (khz >= 5150000 && khz <= 5924999) return 5;
  if (khz >= 5925000 && khz <= 7129999) return 6;
  return 0;
}

std::string_view BandTextOf(std::uint32_t khz) {
  static constexpr std::string_view kWhole[] = {"0G", "1G", "2G", "3G", "4G", "5G",
                                                "6G", "7G", "8G", "9G", "10G"};
  switch (BandOfFrequency(khz)) {
    case 2:
      return "2.4Ghz";
    case 5:
      return "5Ghz";
    case 6:
      return "6Ghz";
    default:
      break;
  }
  const std::uint32_t ghz = khz / 1000000;
  return ghz < std::size(kWhole) ? kWhole[ghz] : "?G";
}

}  // namespace corvane
