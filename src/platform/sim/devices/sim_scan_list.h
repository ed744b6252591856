#pragma once
#include <map>
#include <optional>
#include <string>

#include "platform/sim/devices/sim_machine.h"

namespace corvane::platform::sim {

// What one adapter has heard lately, as its BSS list shows it.
class SimScanList {
 public:
  struct Bss {
    std::uint64_t heardMs = 0;
    double dbm = 0.0;
    SimMachine::Elements elements;
    // Until when the name of a hidden access point is known; kForever for one that tells it.
    std::uint64_t namedUntilMs = 0;
  };

  // `named`: by a probe response, with the SSID.
  void Hear(const SimMachine& machine, std::size_t accessPoint, double dbm, bool named,
            std::uint64_t staleMs);
  // Drops what was heard longer ago than that, and names that are as old.
  void Age(const SimMachine& machine, std::uint64_t staleMs);
  void Clear() { m_Bss.clear(); }

  const std::map<std::size_t, Bss>& All() const { return m_Bss; }  // by access point
  const Bss* Find(std::size_t accessPoint) const;
  // Empty while the name of a hidden access point is not known.
  static std::string SsidOf(const SimMachine& machine, std::size_t accessPoint, const Bss& bss);

 private:
  std::map<std::size_t, Bss> m_Bss;
};

}  // namespace corvane::platform::sim
