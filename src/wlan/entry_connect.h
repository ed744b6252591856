#pragma once
#include "wlan/wlan_interface.h"

namespace corvane {

// Connects to this access point: by the profile text when there is one, else by the stored profile,
// else by a temporary one. Without any the user is asked for credentials, and nothing is connected
// on return. `ConnectStatus` tells which way it goes. Throws Exception; a null adapter is logged.
void ConnectEntry(const CWlanBssEntry& entry, CWlanInterface* adapter, WStringView profileText,
                  bool save, std::uint32_t timeoutMs);

}  // namespace corvane
