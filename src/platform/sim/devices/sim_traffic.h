#pragma once
#include <vector>

#include "platform/sim/devices/sim_machine.h"

namespace corvane::platform::sim {

// What an adapter has carried since the machine came up.
struct TrafficTotals {
  double inBytes = 0.0;
  double outBytes = 0.0;
  double inErrors = 0.0;  // packets
  double outErrors = 0.0;
};

// Counts the world's traffic, while the adapters are connected. Under the devices' lock.
class SimTraffic {
 public:
  explicit SimTraffic(SimMachine& machine)
      : m_Machine(machine), m_Meters(machine.world.adapters.size()) {}

  // The adapter's link comes up or goes down now.
  void SetConnected(int adapter, bool connected);
  const TrafficTotals& Totals(int adapter);
  // Beside the world's own traffic.
  void AddSent(int adapter, double bytes) { Count(adapter).totals.outBytes += bytes; }

 private:
  struct Meter {
    bool connected = false;
    std::uint64_t countedToMs = 0;
    TrafficTotals totals;
  };
  Meter& Count(int adapter);  // up to now

  SimMachine& m_Machine;
  std::vector<Meter> m_Meters;
};

}  // namespace corvane::platform::sim
