#pragma once
#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// Connects the adapter of this interface index to one BSSID ("aa:bb:cc:dd:ee:ff") of the SSID, and
// waits for the end with no time limit. Runs on its own, without the service's objects, and tells
// its steps on standard output. 0, or 1 for a failure.
int ConnectAndExit(std::uint32_t ifindex, WStringView ssid, WStringView bssid);

}  // namespace corvane
