#include "engine/neighbour_address.h"

#include <algorithm>
#include <cstring>

#include "foundation/guarded.h"
#include "platform/ip_helper_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "LBEngine";

class NeighbourTable {
 public:
  explicit NeighbourTable(WORD family) {
    const DWORD result = Guarded(kClassName, "GetIpNetTable2", ERROR_GEN_FAILURE, [=, this] {
      return Os().ipHelper.GetIpNetTable2(family, &m_pTable);
    });
    m_bFilled = result == ERROR_SUCCESS && m_pTable;
  }
  ~NeighbourTable() {
    if (!m_pTable) return;
    GiveBack(kClassName, "FreeMibTable", [this] { Os().ipHelper.FreeMibTable(m_pTable); });
  }
  NeighbourTable(const NeighbourTable&) = delete;
  NeighbourTable& operator=(const NeighbourTable&) = delete;

  // The row of the address, of this interface rather than of another; null for none.
  template <class Matches>
  MIB_IPNET_ROW2* Find(std::uint32_t ifIndex, Matches&& matches) {
    MIB_IPNET_ROW2* found = nullptr;
    for (ULONG i = 0; m_bFilled && i < m_pTable->NumEntries; ++i) {
      MIB_IPNET_ROW2* const row = m_pTable->Table + i;
      if (!matches(*row)) continue;
      if (row->InterfaceIndex == ifIndex) return row;
      if (!found) found = row;
    }
    return found;
  }

 private:
  MIB_IPNET_TABLE2* m_pTable = nullptr;
  bool m_bFilled = false;
};

// False when it is all zero.
bool TakeAddress(const MIB_IPNET_ROW2& row, std::uint8_t (&address)[8]) {
  const std::size_t length = std::min<std::size_t>(row.PhysicalAddressLength, sizeof(address));
  std::memset(address, 0, sizeof(address));
  std::memcpy(address, row.PhysicalAddress, length);
  return std::any_of(std::begin(address), std::end(address), [](auto byte) { return byte != 0; });
}

}  // namespace

bool FindNeighbour(const LBGatewayAddresses& gateway, std::uint32_t ifIndex,
                   std::uint8_t (&address)[8]) {
  if (gateway.ip4 != 0) {
    NeighbourTable table(AF_INET);
    const MIB_IPNET_ROW2* const row = table.Find(ifIndex, [&](const MIB_IPNET_ROW2& one) {
      SOCKADDR_IN in;
      std::memcpy(static_cast<void*>(&in), &one.Address, sizeof(in));
      return one.Address.si_family == AF_INET &&
             std::memcmp(in.sin_addr, &gateway.ip4, sizeof(gateway.ip4)) == 0;
    });
    return row && TakeAddress(*row, address);
  }
  NeighbourTable table(AF_INET6);
  MIB_IPNET_ROW2* const row = table.Find(ifIndex, [&](const MIB_IPNET_ROW2& one) {
    SOCKADDR_IN6 in;
    std::memcpy(static_cast<void*>(&in), &one.Address, sizeof(in));
    return one.Address.si_family == AF_INET6 &&
           std::memcmp(in.sin6_addr, gateway.ip6, sizeof(gateway.ip6)) == 0;
  });
  if (!row) return false;
  if (TakeAddress(*row, address)) return true;
  Guarded(kClassName, "ResolveIpNetEntry2", ERROR_GEN_FAILURE,
          [row] { return Os().ipHelper.ResolveIpNetEntry2(row, nullptr); });
  return TakeAddress(*row, address);
}

}  // namespace corvane
