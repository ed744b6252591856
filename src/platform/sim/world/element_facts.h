#pragma once
// What the simulated air must know of, or change in, the element bytes of its access points. Bytes
// that are malformed are taken as far as they go.

#include <optional>
#include <string>
#include <vector>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// The bytes of the SSID element, up to 32; empty without one.
std::string SsidOf(const std::vector<BYTE>& elements);

// The same elements with an SSID of no bytes: what a hidden access point's beacon carries.
std::vector<BYTE> CarryNoSsid(const std::vector<BYTE>& elements);

// Sets the load element (id 11), adding it where there is none; -1 leaves a figure as it was.
void SetQbssLoad(std::vector<BYTE>* elements, int stations, int utilisation);

// The channel utilisation of the load element, 0 to 255; nothing without one.
std::optional<int> UtilisationOf(const std::vector<BYTE>& elements);

// The domain of the mobility domain element (fast transition); nothing without one.
std::optional<int> MobilityDomainOf(const std::vector<BYTE>& elements);

// The legacy rates in the form of WLAN_RATE_SET: units of 500 kbit/s, basic bit 0x8000.
WLAN_RATE_SET RateSetOf(const std::vector<BYTE>& elements);

// DOT11_PHY_TYPE of the newest generation.
LONG PhyOf(const std::vector<BYTE>& elements, ULONG frequencyMhz);

// Authentication and cipher by the first key management suite, without a key. What only the privacy
// bit tells (WEP) reads as open.
Security SecurityOf(const std::vector<BYTE>& elements);

}  // namespace corvane::platform::sim
