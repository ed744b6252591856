#pragma once
#include "engine/adapter_entry.h"

namespace corvane {

// What the network list says of an adapter's network, as its slot holds it.
struct LBNetworkFacts {
  std::uint32_t connectivity = 0;
  bool internet = false;
  platform::LONG category = -1;  // 0 public, 1 private, 2 domain
};
struct LBNetworkWords {
  std::uint32_t networkFlags = 0;
  std::uint8_t category = 0;
  std::uint8_t ip4Connectivity = 0;
  std::uint8_t ip6Connectivity = 0;
  friend bool operator==(const LBNetworkWords&, const LBNetworkWords&) = default;
};
LBNetworkWords NetworkWords(const LBNetworkFacts& facts);

// Reads the network that an adapter is on into its slot: 1 with Internet, 0 without or when it is
// not found; ERROR_GEN_FAILURE when the engine stops or COM is not there, and then all stays as it
// was. The thread has COM open. Under the engine lock.
platform::DWORD LBReadNetworkState(LBAdapterEntry* entry, LBAdapterSlot* slot, bool comReady,
                                   bool stopping);

}  // namespace corvane
