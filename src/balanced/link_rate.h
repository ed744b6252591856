#pragma once
// The rate that an adapter gets from an access point at a signal. Pure.

#include <cstdint>

#include "elements/element_fields.h"

namespace corvane::balanced {

// The newest generation that both sides have.
enum class Generation { kLegacy, kHt, kVht, kHe };

struct Link {
  Generation generation = Generation::kLegacy;
  std::uint32_t widthMhz = 20;  // operating width, 20 to 160
  std::uint32_t streams = 1;    // that both sides have
  std::uint32_t topMcs = 7;     // the highest that the access point takes
  bool dsssOnly = false;        // 11 Mbps at most
};

// What the elements say of the link that an adapter would have there. The width is that of the
// operation elements as access points send it today: in VHT by both segments (IEEE Std 802.11-2020
// 9.4.2.158, table 9-274), in 6 GHz by the HE Operation element (802.11ax-2021 9.4.2.249). Adapters
// are taken to have two antennas, as nearly all of them do. `band` is 2, 5 or 6.
Link LinkOf(const ElementFields& elements, int band, bool adapterHe);

// The signal over the noise floor in the link's width, in dB: each doubling of the width doubles
// the noise.
double SnrOf(double dbm, std::uint32_t widthMhz);

// Mbps on the air, by the MCS that the signal carries; even between the thresholds of two, since
// the signal varies around what was heard.
double PhyMbps(const Link& link, double dbm);

}  // namespace corvane::balanced
