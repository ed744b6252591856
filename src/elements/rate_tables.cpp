#include "elements/rate_tables.h"

#include <algorithm>
#include <string_view>

namespace corvane {

namespace {

// Columns: 20, 20 SGI, 40, 40 SGI. Row 32 is the duplicate mode.
constexpr double kHt[33][4] = {
    {6.5, 7.2, 13.5, 15},   {13, 14.4, 27, 30},     {19.5, 21.7, 40.5, 45}, {26, 28.9, 54, 60},
    {39, 43.3, 81, 90},     {52, 57.8, 108, 120},   {58.5, 65, 121.5, 135}, {65, 72.2, 135, 150},
    {13, 14.4, 27, 30},     {26, 28.9, 54, 60},     {39, 43.3, 81, 90},     {52, 57.8, 108, 120},
    {78, 86.7, 162, 180},   {104, 115.6, 216, 240}, {117, 130, 243, 270},   {130, 144.4, 270, 300},
    {19.5, 21.7, 40.5, 45}, {39, 43.3, 81, 90},     {58.5, 65, 121.5, 135}, {78, 86.7, 162, 180},
    {117, 130, 243, 270},   {156, 173.3, 324, 360}, {175.5, 195, 364, 405}, {195, 216.7, 405, 450},
    {26, 28.9, 54, 60},     {52, 57.8, 108, 120},   {78, 86.7, 162, 180},   {104, 115.6, 216, 240},
    {156, 173.3, 324, 360}, {208, 231.1, 432, 480}, {234, 260, 486, 540},   {260, 288.9, 540, 600},
    {0, 0, 6, 6.7},
};

// For one spatial stream. Columns: 20, 20 SGI, 40, 40 SGI, 80, 80 SGI, 160, 160 SGI.
constexpr double kVht[10][8] = {
    {6.5, 7.2, 13.5, 15, 29.333, 32.5, 58.5, 65},
    {13, 14.4, 27, 30, 56.5, 65, 117, 130},
    {19.5, 21.666, 40.5, 45, 87.777, 97.5, 175.5, 195},
    {26, 28.9, 54, 60, 117, 130, 234, 260},
    {39, 43.333, 81, 90, 175.5, 195, 351, 390},
    {52, 57.777, 108, 120, 234, 260, 468, 520},
    {58.5, 65, 121.5, 135, 263.333, 292.5, 526.5, 585},
    {65, 72.2, 135, 150, 292.5, 325, 585, 650},
    {78, 86.666, 162, 180, 351, 390, 702, 780},
    {86.666, 96.3, 180, 200, 390, 433.333, 780, 867.666},
};
constexpr double kHe[12][8] = {
    {8, 8.6, 16, 17.2, 34, 36, 68, 72},
    {16, 17.2, 33, 34.4, 68, 72.1, 136, 144},
    {24, 25.8, 49, 51.6, 102, 108.1, 204, 216},
    {33, 34.4, 65, 68.8, 136, 144.1, 272, 282},
    {49, 51.6, 98, 103.2, 204, 216.2, 408, 432},
    {65, 68.8, 130, 137.6, 272, 288.2, 544, 576},
    {73, 77.4, 146, 154.9, 306, 324.4, 613, 649},
    {81, 86, 163, 172.1, 340, 360.3, 681, 721},
    {98, 103.2, 195, 206.5, 408, 432.4, 817, 865},
    {108, 114.7, 217, 229.4, 453, 480.4, 907, 961},
    {122, 129, 244, 258.1, 510, 540.4, 1021, 1081},
    {135, 143.4, 271, 286.8, 567, 600.5, 1134, 1201},
};

int WidthColumn(std::uint32_t width) {
  switch (width) {
    case 20:
      return 0;
    case 40:
      return 2;
    case 80:
      return 4;
    case 160:
      return 6;
    default:
      return -1;
  }
}

// VHT MCS 9 does not exist for some widths and stream counts (IEEE Std 802.11-2020 21.5).
bool LacksVhtMcs9(std::uint32_t width, std::uint32_t streams) {
  switch (width) {
    case 20:
      return streams != 3 && streams != 6;
    case 80:
      return streams == 6;
    case 160:
      return streams == 3;
    default:
      return false;
  }
}

constexpr std::uint32_t kVhtTop[3] = {7, 8, 9};
constexpr std::uint32_t kHeTop[3] = {7, 9, 11};
constexpr std::string_view kVhtText[3] = {"0-7", "0-8", "0-9"};
constexpr std::string_view kHeText[3] = {"0-7", "0-9", "0-11"};

}  // namespace

double HtRateMbps(unsigned mcs, bool forty, bool shortGI20, bool shortGI40) {
  if (mcs > 32) return 0.0;
  if (forty) return kHt[mcs][shortGI40 ? 3 : 2];
  return kHt[mcs][shortGI20 ? 1 : 0];
}

McsMapReading ReadMcsMap(McsGeneration generation, std::uint16_t map, std::uint32_t width,
                         bool shortGI) {
  const bool vht = generation == McsGeneration::kVht;
  McsMapReading reading;
  reading.maxMcs = 99;
  for (unsigned stream = 0; stream < 8; ++stream) {
    const unsigned field = map >> (2 * stream) & 3;
    if (field == 3) continue;
    if (reading.streams++ != 0) reading.text += ", ";
    reading.text += vht ? kVhtText[field] : kHeText[field];
    reading.maxMcs = std::min(reading.maxMcs, vht ? kVhtTop[field] : kHeTop[field]);
  }
  if (reading.streams == 0) {
    reading.maxMcs = 0;
    return reading;
  }
  const int column = WidthColumn(width);
  if (column < 0) return reading;
  std::uint32_t row = reading.maxMcs;
  if (vht && row == 9 && LacksVhtMcs9(width, reading.streams)) row = 8;
  const int at = column + (shortGI ? 1 : 0);
  reading.rateMbps = reading.streams * (vht ? kVht[row][at] : kHe[row][at]);
  return reading;
}

}  // namespace corvane
