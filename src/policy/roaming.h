#pragma once
#include "policy/roaming_rules.h"
#include "wlan/wlan_interface.h"

namespace corvane {

// The roam test for an entry of the adapter's model. `ssid` is the connected one. On the adapter's
// worker.
bool IsRoam(CWlanInterface* pIf, CWlanBssEntry* target, WStringView ssid);

}  // namespace corvane
