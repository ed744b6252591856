#pragma once
#include <vector>

#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// The newest generation that both sides speak (DOT11_PHY_TYPE).
LONG CommonPhy(const std::vector<LONG>& adapterPhys, LONG accessPointPhy);

// The rate that a driver reports at this signal, in kbit/s: in the width that the elements tell, by
// the modulation that the signal carries (IEEE 802.11-2020, clauses 17, 19 and 21; IEEE 802.11ax,
// clause 27), with the streams that the access point and the adapter, which has `streams`, share.
ULONG LinkRateKbps(LONG phy, const std::vector<BYTE>& elements, double dbm, int streams = 2);

}  // namespace corvane::platform::sim
