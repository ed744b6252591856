#pragma once
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/ip_types.h"
#include "platform/sim/devices/sim_interfaces.h"

namespace corvane::platform::sim {

// Which way packets go: the routes that the program has added, before the machine's own, and the
// routers behind each interface. Under the devices' lock.
class SimPaths {
 public:
  SimPaths(SimMachine& machine, const SimWlanAdapters& adapters, SimTraffic& traffic)
      : m_Machine(machine), m_Adapters(adapters), m_Traffic(traffic) {}

  // Codes of the IP helper.
  DWORD Add(const MIB_IPFORWARDROW& row);
  DWORD Add(const MIB_IPFORWARD_ROW2& row);
  DWORD Delete(const MIB_IPFORWARDROW& row);
  DWORD Delete(const MIB_IPFORWARD_ROW2& row);
  std::vector<MIB_IPFORWARDROW> Table() const;  // default routes, then what was added
  std::size_t Standing() const { return m_Routes4.size() + m_Routes6.size(); }

  // The interface that takes packets to the address; nothing: it can't be reached.
  std::optional<SimInterface> InterfaceTo(const IpAddress& destination) const;
  // The wireless adapter of the interface; null for another one.
  const SimWlanAdapter* WirelessOf(const SimInterface& face) const;

  struct Answer {
    IpAddress from;
    bool reached = false;
    double rttMs = 0.0;
  };
  // What comes of an echo with this time to live; nothing: it is lost. The noise of the access
  // point goes on to its next.
  std::optional<Answer> Echo(const SimInterface& face, const IpAddress& destination, int ttl);

 private:
  std::vector<SimInterface> Interfaces() const {
    return InterfacesOf(m_Machine, m_Adapters, m_Traffic);
  }
  bool IsInterface(DWORD ifIndex) const;

  SimMachine& m_Machine;
  const SimWlanAdapters& m_Adapters;
  SimTraffic& m_Traffic;
  std::vector<MIB_IPFORWARDROW> m_Routes4;
  std::vector<MIB_IPFORWARD_ROW2> m_Routes6;
};

// Of a socket address of either family.
IpAddress AddressOf(const SOCKADDR_INET& address);
SOCKADDR_INET SocketAddressOf(const IpAddress& address);
IpAddress Ip4AddressOf(DWORD networkOrder);

}  // namespace corvane::platform::sim
