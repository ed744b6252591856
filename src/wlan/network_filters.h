#pragma once
#include "wlan/adapter_identity.h"

namespace corvane {

// Reads the permit and deny lists that group policy or the user have set, for the filters of the
// program and the texts that clients read. A list that cannot be read counts as empty.
void RefreshNetworkAllowDenyFilters(const AdapterIdentity& adapter);

}  // namespace corvane
