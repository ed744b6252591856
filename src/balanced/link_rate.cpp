#include "balanced/link_rate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace corvane::balanced {

namespace {

constexpr std::uint32_t kAdapterStreams = 2;
constexpr double kNoiseDbm = -95.0;  // of 20 MHz
// From where on each MCS is received well, in dB over the noise.
constexpr std::array<double, 12> kMcsSnr = {2, 5, 9, 11, 15, 18, 20, 25, 29, 31, 34, 36};
// Bits of a subcarrier and symbol with the coding (IEEE Std 802.11-2020 21.5, 802.11ax-2021 27.5).
constexpr std::array<double, 12> kBits = {0.5, 1,   1.5, 2,        3,   4,
                                          4.5, 5.0, 6.0, 20.0 / 3, 7.5, 25.0 / 3};

std::uint32_t HeOperationWidth(const ElementFields& elements) {
  // Behind the parameters (3 bytes), colour and basic MCS set (3): the VHT operation information
  // and the co-hosted BSSID indicator where announced, then channel and control.
  constexpr std::uint8_t kVhtInfo = 0x40, kCoHosted = 0x80, k6GHzInfo = 0x02;
  const auto& raw = elements.m_HEOperRaw;
  if (!elements.m_HEOperGood || (raw[2] & k6GHzInfo) == 0) return 20;
  const std::size_t control =
      6 + ((raw[1] & kVhtInfo) != 0 ? 3u : 0u) + ((raw[1] & kCoHosted) != 0 ? 1u : 0u) + 1;
  return 20u << (raw[control] & 3);
}

std::uint32_t VhtWidth(const ElementFields& elements) {
  if (elements.m_VHT80Plus80 || elements.m_VHTChannelWidth == 160) return 160;
  if (elements.m_VHTChannelWidth != 80) return elements.m_HTChannelWidth == 40 ? 40 : 20;
  if (elements.m_VHTSeg1Channel == 0) return 80;
  const int apart = std::abs(static_cast<int>(elements.m_VHTSeg1Channel) -
                             static_cast<int>(elements.m_VHTSeg0Channel));
  return apart >= 8 ? 160 : 80;
}

struct MapReading {
  std::uint32_t streams = 0;
  std::uint32_t field = 0;  // lowest two-bit field of the streams
};
MapReading ReadMap(std::uint16_t map) {
  MapReading reading{0, 2};
  for (unsigned stream = 0; stream < 8; ++stream) {
    const std::uint32_t field = map >> (2 * stream) & 3u;
    if (field == 3) continue;
    ++reading.streams;
    reading.field = std::min(reading.field, field);
  }
  return reading;
}

double Carriers(const Link& link) {
  const std::uint32_t width = link.widthMhz;
  if (link.generation == Generation::kHe)
    return width >= 160 ? 1960 : width >= 80 ? 980 : width >= 40 ? 468 : 234;
  return width >= 160 ? 468 : width >= 80 ? 234 : width >= 40 ? 108 : 52;
}

double McsMbps(const Link& link, std::size_t mcs) {
  if (link.generation == Generation::kLegacy) return 48 * kBits[mcs] / 4.0;  // symbols of 4 us
  const double symbolUs = link.generation == Generation::kHe ? 13.6 : 3.6;
  return Carriers(link) * link.streams * kBits[mcs] / symbolUs;
}

}  // namespace

Link LinkOf(const ElementFields& elements, int band, bool adapterHe) {
  constexpr std::uint32_t kHtTop = 7, kLegacyTop = 6;
  constexpr std::uint32_t kVhtTops[] = {7, 8, 9}, kHeTops[] = {7, 9, 11};
  Link link;
  const MapReading he = ReadMap(elements.m_HERxMcs80);
  const MapReading vht = ReadMap(elements.m_VHTRxMcsMap);
  if (elements.m_HECapsGood && adapterHe && he.streams > 0) {
    link = {Generation::kHe, 20, he.streams, kHeTops[he.field], false};
    link.widthMhz = band == 6 ? HeOperationWidth(elements) : VhtWidth(elements);
  } else if (elements.m_VHTPresent && band == 5) {
    link = {Generation::kVht, VhtWidth(elements), vht.streams, kVhtTops[vht.field], false};
  } else if (elements.m_HTPresent) {
    link = {Generation::kHt, elements.m_HTChannelWidth == 40 ? 40u : 20u, 0, kHtTop, false};
    for (std::size_t i = 0; i < 4; ++i) link.streams += elements.m_HTMcsBitmap[i] != 0 ? 1 : 0;
  } else {
    link.topMcs = kLegacyTop;
    link.dsssOnly = elements.m_MaxLegacyRateKbps > 0 && elements.m_MaxLegacyRateKbps <= 11000;
  }
  link.streams = std::clamp(link.streams, 1u, kAdapterStreams);
  return link;
}

double SnrOf(double dbm, std::uint32_t widthMhz) {
  return dbm - kNoiseDbm - 3.0 * std::log2(std::max(widthMhz, 20u) / 20.0);
}

double PhyMbps(const Link& link, double dbm) {
  constexpr double kDsssMbps = 11;
  const double snr = SnrOf(dbm, link.widthMhz);
  const std::size_t top = std::min<std::size_t>(link.topMcs, kMcsSnr.size() - 1);
  double mbps = 0.0;
  if (snr < kMcsSnr[0]) {
    mbps = std::max(snr / kMcsSnr[0], 0.0) * McsMbps(link, 0);
  } else {
    std::size_t mcs = 0;
    while (mcs < top && snr >= kMcsSnr[mcs + 1]) ++mcs;
    mbps = McsMbps(link, mcs);
    if (mcs < top) {
      const double share = (snr - kMcsSnr[mcs]) / (kMcsSnr[mcs + 1] - kMcsSnr[mcs]);
      mbps += share * (McsMbps(link, mcs + 1) - mbps);
    }
  }
  return link.dsssOnly ? std::min(mbps, kDsssMbps) : mbps;
}

}  // namespace corvane::balanced
