#pragma once
#include <vector>

#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// The newest generation that both sides speak (DOT11_PHY_TYPE).
LONG CommonPhy(const std::vector<LONG>& adapterPhys, LONG accessPointPhy);

// What a link of this generation can use of an access point, by its elements: the width in MHz (20
// to 160), and the streams (at least 1).
int LinkWidthMhz(LONG phy, const std::vector<BYTE>& elements);
int LinkStreams(LONG phy, const std::vector<BYTE>& elements);
// The highest modulation and coding scheme of a generation: 6 for the rates of 802.11a/g, 11 for
// HE.
int HighestMcs(LONG phy);
// The rate of a link in kbit/s, with the short guard interval of HT and VHT; `mcs` is 0 to 11. The
// rates of 802.11a/g count in 20 MHz by one stream.
ULONG ModulatedKbps(LONG phy, int widthMhz, int streams, int mcs);

// The rate that a driver reports at this signal, in kbit/s: in the width that the elements tell, by
// the modulation that the signal carries (IEEE 802.11-2020, clauses 17, 19 and 21; IEEE 802.11ax,
// clause 27), with the streams that the access point and the adapter, which has `streams`, share.
ULONG LinkRateKbps(LONG phy, const std::vector<BYTE>& elements, double dbm, int streams = 2);

}  // namespace corvane::platform::sim
