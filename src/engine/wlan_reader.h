#pragma once
#include "engine/adapter_entry.h"
#include "engine/wlan_access.h"

namespace corvane {

struct LBWlanReading {
  std::uint32_t bits = 0;  // change bits
  platform::DWORD error = platform::ERROR_SUCCESS;
};

// Brings the wireless area of an adapter that is up to date. ERROR_INVALID_ENVIRONMENT without WLAN
// support, ERROR_NOT_FOUND when the adapter is not among the service's. What a failing call would
// have filled stays as it was. Under the engine lock.
LBWlanReading LBReadWlanState(CLBWlanAccess& wlan, LBAdapterEntry* entry, LBAdapterSlot* slot);

// The two private queries of an adapter that has such an interface, into its slot.
void RunPrivateQueries(CLBWlanAccess& wlan, LBAdapterEntry* entry, LBAdapterSlot* slot);

// Forgets the network.
void ClearWlanArea(LBAdapterSlot* slot);

}  // namespace corvane
