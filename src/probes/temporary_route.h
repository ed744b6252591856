#pragma once
#include <optional>

#include "platform/ip_types.h"

namespace corvane {

// A route through one adapter that stands only as long as its owner needs it: at most one of each
// family, and gone with this object whatever way its scope is left. Each prober has its own, so two
// adapters under test cannot lose each other's. For one thread.
class CTemporaryRoute {
 public:
  CTemporaryRoute() = default;
  ~CTemporaryRoute();
  CTemporaryRoute(const CTemporaryRoute&) = delete;
  CTemporaryRoute& operator=(const CTemporaryRoute&) = delete;

  // Addresses and mask in network order. A next hop of 0 or 0xFFFFFFFF is the interface's default
  // gateway. On false *error is the platform's code.
  bool AddIP4Route(std::uint32_t ifIndex, std::uint32_t destination, std::uint32_t mask,
                   std::uint32_t nextHop, platform::DWORD* error);
  // To the one address.
  bool AddIP6Route(std::uint32_t ifIndex, const platform::SOCKADDR_INET& destination,
                   const platform::SOCKADDR_INET& nextHop, platform::DWORD* error);
  // True when none is left; a route that the platform does not let go stays, for a later try.
  bool RemoveLastAddedIP4Route();
  bool RemoveLastAddedIP6Route();

  bool HasRoute() const { return m_Row4 || m_Row6; }

 private:
  std::optional<platform::MIB_IPFORWARDROW> m_Row4;
  std::optional<platform::MIB_IPFORWARD_ROW2> m_Row6;
};

// The next hop of the interface's default route, network order; nothing without one.
std::optional<std::uint32_t> GetIPv4DefaultGateway(std::uint32_t ifIndex);

}  // namespace corvane
