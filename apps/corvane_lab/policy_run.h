#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "corvane_lab/link_trace.h"
#include "corvane_lab/peer_client.h"
#include "corvane_lab/round_notes.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

// The service as it is to act: settings that are written to the registry before it starts, to its
// own key and to that of each adapter, and again once the start has given all their defaults.
struct ServiceProfile {
  std::string name;
  std::vector<std::pair<std::string, std::uint32_t>> settings;  // names and DWORDs
};

// What a policy made of a world.
struct PolicyRun {
  PolicyTrace trace;
  std::vector<RoundNotes> rounds;  // of the service, by adapter
  std::string trouble;             // what the service did that it must never do; empty for nothing
};

// The service by a profile, on its own, in autoswitch mode.
PolicyRun RunService(const platform::sim::World& world, std::uint64_t seed, std::size_t seconds,
                     const ServiceProfile& profile);
// No service: the system and the driver alone, or beside them a peer.
PolicyRun RunPeer(const platform::sim::World& world, std::uint64_t seed, std::size_t seconds,
                  PeerClient::MakeRule make);  // null: no peer

}  // namespace corvane::lab
