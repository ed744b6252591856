#pragma once
// What a connect order is held against, and the form of its BSSID. Pure.

#include "foundation/text.h"

namespace corvane {

struct ConnectObstacles {
  bool vpn = false;
  bool radioOff = false;
  bool airplane = false;
  bool adapterOff = false;
};
// The reason that the client is told; empty when nothing stands in the way.
WStringView RefusalFor(const ConnectObstacles& obstacles);

// Lower case with hyphens, as access points are named inside; clients also send colons.
WString NormalBssid(WStringView text);

}  // namespace corvane
