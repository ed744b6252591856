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

// In 6 GHz there are no HT elements; what is built for that band is wide.
bool IsWideBand(const std::vector<BYTE>& elements) { return !Find(elements, 45, 5); }

int WidthMhz(LONG phy, const std::vector<BYTE>& elements) {
  if (phy == dot11_phy_type_he && IsWideBand(elements)) return 80;
  const BYTE* ht = Find(elements, 61, 2);
  const bool forty = ht && (ht[1] & 0x4) != 0;
  const BYTE* vht = phy >= dot11_phy_type_vht ? Find(elements, 192, 3) : nullptr;
  if (!vht || vht[0] == 0) return forty ? 40 : 20;
  const int distance = vht[2] == 0 ? 0 : std::abs(int{vht[2]} - int{vht[1]});
  return vht[0] >= 2 || distance == 8 || distance == 16 ? 160 : 80;
}

ULONG Streams(const std::vector<BYTE>& elements) {
  const BYTE* ht = Find(elements, 45, 5);
  return !ht || ht[4] != 0 ? 2 : 1;
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

ULONG LinkRateKbps(LONG phy, const std::vector<BYTE>& elements, double dbm) {
  if (RankOf(phy) <= 1) return dbm > -80 ? 11'000 : dbm > -86 ? 5'500 : 1'000;
  const int width = RankOf(phy) <= 2 ? 20 : WidthMhz(phy, elements);
  // Twice the width needs 3 dB more.
  const double needed = width >= 160 ? 9.0 : width >= 80 ? 6.0 : width >= 40 ? 3.0 : 0.0;
  const int highest = RankOf(phy) <= 2 ? 6 : RankOf(phy) == 3 ? 7 : RankOf(phy) == 4 ? 9 : 11;
  int mcs = 0;
  while (mcs < highest && dbm >= kWeakest[static_cast<std::size_t>(mcs) + 1] + needed) ++mcs;
  const ULONG bits = kBitsTimesSix[static_cast<std::size_t>(mcs)];
  if (RankOf(phy) <= 2) return 48 * bits / 6 * 250;  // symbols of 4 us
  const bool he = phy == dot11_phy_type_he;
  const ULONG carriers = he ? (width >= 160  ? 1960u
                               : width >= 80 ? 980u
                               : width >= 40 ? 468u
                                             : 234u)
                            : (width >= 160  ? 468u
                               : width >= 80 ? 234u
                               : width >= 40 ? 108u
                                             : 52u);
  const double symbolUs = he ? 13.6 : 3.6;
  return static_cast<ULONG>(carriers * Streams(elements) * bits / 6.0 * 1000.0 / symbolUs);
}

}  // namespace corvane::platform::sim
