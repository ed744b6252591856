#pragma once
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "corvane_lab/pc_trace.h"
#include "corvane_lab/peer_rules.h"
#include "platform/sim/world/world.h"
#include "platform/wlan_types.h"

namespace corvane::lab {

// A program on the simulated PC in force that acts by a peer's rule: it reads its link, scans and
// connects through the WLAN service as any program does. What the system and the driver do by
// themselves goes on beside it.
class PeerClient {
 public:
  using MakeRule = std::unique_ptr<PeerRule> (*)();
  // `trace` observes the PC; both it and the world outlive the client.
  PeerClient(const platform::sim::World& world, PcTrace& trace, MakeRule make);
  ~PeerClient();
  PeerClient(const PeerClient&) = delete;
  PeerClient& operator=(const PeerClient&) = delete;

  void Look(std::uint64_t nowMs);  // once a second, by whoever drives the PC

 private:
  struct Place {
    std::unique_ptr<PeerRule> rule;
    bool scanning = false;
  };

  void LookAt(std::size_t adapter, std::uint64_t nowMs);
  std::optional<PeerLink> LinkOf(std::size_t adapter) const;
  std::vector<PeerEntry> Heard(std::size_t adapter) const;
  PeerEntry Read(std::size_t adapter, std::size_t accessPoint,
                 const platform::WLAN_BSS_ENTRY& entry) const;
  void Connect(std::size_t adapter, int accessPoint) const;
  const platform::sim::Profile* ProfileOf(std::size_t adapter, const std::string& ssid) const;

  const platform::sim::World& m_World;
  PcTrace& m_Trace;
  std::map<platform::sim::Mac, std::size_t> m_Numbers;  // of access points
  std::vector<Place> m_Places;                          // by adapter
  platform::HANDLE m_hClient = nullptr;
};

}  // namespace corvane::lab
