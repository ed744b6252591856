#include "platform/sim/devices/sim_link_rate.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace corvane::platform::sim {

namespace {

// Weakest signal of each modulation and coding scheme in 20 MHz, MCS 0 first, in dBm.
constexpr std::array<double, 12> kWeakest = {-92, -87, -84, -81, -77, -72,
                                             -69, -66, -62, -58, -54, -51};
// Bits of a subcarrier and symbol, times six, by MCS.
constexpr std::array<ULONG, 12> kBitsTimesSix = {3, 6, 9, 12, 18, 24, 27, 30, 36, 40, 45, 50};

// The content of the first element of an id, from its first byte on; null when there is none with
// so many bytes.
const BYTE* Find(const std::vector<BYTE>& elements, BYTE id, std::size_t bytes) {
  for (std::size_t i = 0; i + 2 <= elements.size();) {
    const std::size_t length = elements[i + 1];
    if (i + 2 + length > elements.size()) return nullptr;
    if (elements[i] == id && length >= bytes) return &elements[i + 2];
    i += 2 + length;
  }
  return nullptr;
}

// The same of an element with an extended id, from the byte behind it on.
const BYTE* FindExtended(const std::vector<BYTE>& elements, BYTE extendedId, std::size_t bytes) {
  constexpr BYTE kExtension = 255;
  for (std::size_t i = 0; i + 2 <= elements.size();) {
    const std::size_t length = elements[i + 1];
    if (i + 2 + length > elements.size()) return nullptr;
    if (elements[i] == kExtension && length >= bytes + 1 && elements[i + 2] == extendedId) {
      return &elements[i + 3];
    }
    i += 2 + length;
  }
  return nullptr;
}

// Where there are no HT elements, in 6 GHz, the width stands in the HE operation element (IEEE
// 802.11ax-2021, clause 9.4.2.249): behind the fields that its parameters announce.
int Width6GHz(const std::vector<BYTE>& elements) {
  constexpr BYTE kHeOperation = 36;
  constexpr int kParameters = 3, kColourAndMcs = 3, kVhtInformation = 3, kControl = 1;
  const BYTE* he = FindExtended(elements, kHeOperation, kParameters);
  if (!he || (he[2] & 0x2) == 0) return 20;
  const int skipped = ((he[1] & 0x40) ? kVhtInformation : 0) + ((he[1] & 0x80) ? 1 : 0);
  const int control = kParameters + kColourAndMcs + skipped + kControl;
  he = FindExtended(elements, kHeOperation, static_cast<std::size_t>(control) + 1);
  return he ? 20 << (he[control] & 0x3) : 20;
}

int HtWidthMhz(LONG phy, const std::vector<BYTE>& elements) {
  if (phy == dot11_phy_type_he && !Find(elements, 45, 5)) return Width6GHz(elements);
  const BYTE* ht = Find(elements, 61, 2);
  const bool forty = ht && (ht[1] & 0x4) != 0;
  const BYTE* vht = phy >= dot11_phy_type_vht ? Find(elements, 192, 3) : nullptr;
  if (!vht || vht[0] == 0) return forty ? 40 : 20;
  const int distance = vht[2] == 0 ? 0 : std::abs(int{vht[2]} - int{vht[1]});
  return vht[0] >= 2 || distance == 8 || distance == 16 ? 160 : 80;
}

// Spatial streams of a map with two bits each, 3 for one that is not there.
int StreamsOfMap(const BYTE* map) {
  int streams = 0;
  for (int stream = 0; stream < 8; ++stream) {
    if ((map[stream / 4] >> (stream % 4 * 2) & 0x3) != 3) streams = stream + 1;
  }
  return streams;
}

int RankOf(LONG phy) {
  switch (phy) {
    case dot11_phy_type_hrdsss:
      return 1;
    case dot11_phy_type_erp:
    case dot11_phy_type_ofdm:
      return 2;
    case dot11_phy_type_ht:
      return 3;
    case dot11_phy_type_vht:
      return 4;
    case dot11_phy_type_he:
      return 5;
    default:
      return 0;
  }
}

}  // namespace

LONG CommonPhy(const std::vector<LONG>& adapterPhys, LONG accessPointPhy) {
  LONG best = dot11_phy_type_unknown;
  for (const LONG phy : adapterPhys) {
    if (RankOf(phy) <= RankOf(accessPointPhy) && RankOf(phy) > RankOf(best)) best = phy;
  }
  return best == dot11_phy_type_unknown ? accessPointPhy : best;
}

int LinkWidthMhz(LONG phy, const std::vector<BYTE>& elements) {
  return RankOf(phy) <= 2 ? 20 : HtWidthMhz(phy, elements);
}

// What the access point receives by the newest generation that both have; 1 where it says nothing.
int LinkStreams(LONG phy, const std::vector<BYTE>& elements) {
  constexpr BYTE kHeCapabilities = 35;
  constexpr std::size_t kHeMap = 6 + 11, kVhtMap = 4, kHtMasks = 3;
  int streams = 0;
  if (phy == dot11_phy_type_he) {
    if (const BYTE* he = FindExtended(elements, kHeCapabilities, kHeMap + 2)) {
      streams = StreamsOfMap(he + kHeMap);
    }
  } else if (phy == dot11_phy_type_vht) {
    if (const BYTE* vht = Find(elements, 191, kVhtMap + 2)) streams = StreamsOfMap(vht + kVhtMap);
  } else if (const BYTE* ht = Find(elements, 45, kHtMasks + 4)) {
    while (streams < 4 && ht[kHtMasks + static_cast<std::size_t>(streams)] != 0) ++streams;
  }
  return std::max(streams, 1);
}

int HighestMcs(LONG phy) {
  return RankOf(phy) <= 2 ? 6 : RankOf(phy) == 3 ? 7 : RankOf(phy) == 4 ? 9 : 11;
}

ULONG ModulatedKbps(LONG phy, int widthMhz, int streams, int mcs) {
  const ULONG bits = kBitsTimesSix[static_cast<std::size_t>(mcs)];
  if (RankOf(phy) <= 2) return 48 * bits / 6 * 250;  // symbols of 4 us
  const bool he = phy == dot11_phy_type_he;
  const ULONG carriers = he ? (widthMhz >= 160  ? 1960u
                               : widthMhz >= 80 ? 980u
                               : widthMhz >= 40 ? 468u
                                                : 234u)
                            : (widthMhz >= 160  ? 468u
                               : widthMhz >= 80 ? 234u
                               : widthMhz >= 40 ? 108u
                                                : 52u);
  const double symbolUs = he ? 13.6 : 3.6;
  return static_cast<ULONG>(carriers * static_cast<ULONG>(streams) * bits / 6.0 * 1000.0 /
                            symbolUs);
}

ULONG LinkRateKbps(LONG phy, const std::vector<BYTE>& elements, double dbm, int streams) {
  if (RankOf(phy) <= 1) return dbm > -80 ? 11'000 : dbm > -86 ? 5'500 : 1'000;
  const int width = LinkWidthMhz(phy, elements);
  // Twice the width needs 3 dB more.
  const double needed = width >= 160 ? 9.0 : width >= 80 ? 6.0 : width >= 40 ? 3.0 : 0.0;
  const int highest = HighestMcs(phy);
  int mcs = 0;
  while (mcs < highest && dbm >= kWeakest[static_cast<std::size_t>(mcs) + 1] + needed) ++mcs;
  return ModulatedKbps(phy, width, std::min(streams, LinkStreams(phy, elements)), mcs);
}

}  // namespace corvane::platform::sim
