#pragma once
// What kind of network adapter something is, by its type and its description. Pure.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// The description, in lower case, names a VPN product or a TAP adapter.
bool HasVpnName(WStringView description);

// One adapter as the platform describes it. `ifType` is an IANA interface type, `operStatus` is 1
// when the adapter is up.
struct AdapterFacts {
  WStringView description;
  std::uint32_t ifType = 0;
  std::uint32_t operStatus = 0;
  bool IsUp() const { return operStatus == 1; }
};

// An active VPN. PPP, SLIP and tunnel adapters are one by their type, the others by their name
// only.
bool IsActiveVpn(const AdapterFacts& adapter);

// A real wired or wireless adapter, up or down.
bool IsLanCandidate(const AdapterFacts& adapter);

}  // namespace corvane
