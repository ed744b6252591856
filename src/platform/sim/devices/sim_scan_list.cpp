#include "platform/sim/devices/sim_scan_list.h"

#include <algorithm>

namespace corvane::platform::sim {

void SimScanList::Hear(const SimMachine& machine, std::size_t accessPoint, double dbm, bool named,
                       std::uint64_t staleMs) {
  const AccessPoint& ap = machine.world.accessPoints[accessPoint];
  Bss& bss = m_Bss[accessPoint];
  bss.heardMs = machine.loop.NowMs();
  bss.dbm = dbm;
  if (!ap.hidden) {
    bss.namedUntilMs = kForever;
  } else if (named) {
    bss.namedUntilMs = bss.heardMs + staleMs;
  }
  bss.elements = machine.ElementsOf(accessPoint, bss.namedUntilMs > bss.heardMs);
}

void SimScanList::Age(const SimMachine& machine, std::uint64_t staleMs) {
  const std::uint64_t now = machine.loop.NowMs();
  std::erase_if(m_Bss, [&](const auto& entry) { return entry.second.heardMs + staleMs < now; });
  for (auto& [accessPoint, bss] : m_Bss) {
    if (bss.namedUntilMs <= now && bss.namedUntilMs != 0) {
      bss.namedUntilMs = 0;
      bss.elements = machine.ElementsOf(accessPoint, false);
    }
  }
}

const SimScanList::Bss* SimScanList::Find(std::size_t accessPoint) const {
  const auto found = m_Bss.find(accessPoint);
  return found == m_Bss.end() ? nullptr : &found->second;
}

std::string SimScanList::SsidOf(const SimMachine& machine, std::size_t accessPoint,
                                const Bss& bss) {
  return bss.namedUntilMs > machine.loop.NowMs() ? machine.world.accessPoints[accessPoint].ssid
                                                 : std::string();
}

}  // namespace corvane::platform::sim
