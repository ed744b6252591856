#pragma once
#include <vector>

#include "platform/sim/devices/sim_wlan_adapter.h"

namespace corvane::platform::sim {

// What the lists of the WLAN service hold for one adapter. Under the devices' lock.

// One record for each SSID and profile of it, one for an SSID without a profile, and one with an
// empty SSID for all access points whose names are not known.
std::vector<WLAN_AVAILABLE_NETWORK> AvailableNetworks(const SimMachine& machine,
                                                      SimWlanAdapter& adapter);

// A whole WLAN_BSS_LIST as bytes: the records, then the elements of each at its offset. With an
// SSID, only its access points; bssType narrows too.
std::vector<BYTE> BssList(const SimMachine& machine, SimWlanAdapter& adapter,
                          const DOT11_SSID* ssid, LONG bssType);

WLAN_CONNECTION_ATTRIBUTES ConnectionAttributes(const SimMachine& machine,
                                                const SimWlanAdapter& adapter);
WLAN_RADIO_STATE RadioState(const Adapter& adapter);
ULONG ChannelOf(ULONG frequencyMhz);  // IEEE 802.11-2020 annex E; 0 for none

}  // namespace corvane::platform::sim
