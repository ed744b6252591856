#include "platform/sim/devices/sim_paths.h"

#include <algorithm>
#include <cstring>

namespace corvane::platform::sim {

namespace {

constexpr DWORD kAlreadyThere = 5010;  // ERROR_OBJECT_ALREADY_EXISTS
constexpr double kGatewayMs = 2.0, kProviderMs = 9.0, kBeyondMs = 10.0;
constexpr BYTE kProvider4[4] = {198, 51, 100, 1};
constexpr BYTE kProvider6[16] = {0x20, 0x01, 0x0D, 0xB8, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

DWORD Number(const IpAddress& address) {
  DWORD number = 0;
  std::memcpy(&number, address.bytes.data(), sizeof number);
  return number;
}

bool HasSame(const IpAddress& a, const IpAddress& b, int bits) {
  if (a.family != b.family) return false;
  for (int bit = 0; bit < bits; ++bit) {
    const auto at = static_cast<std::size_t>(bit / 8);
    const int mask = 0x80 >> (bit % 8);
    if ((a.bytes[at] & mask) != (b.bytes[at] & mask)) return false;
  }
  return true;
}

bool IsSame(const MIB_IPFORWARDROW& a, const MIB_IPFORWARDROW& b) {
  return a.dwForwardDest == b.dwForwardDest && a.dwForwardMask == b.dwForwardMask &&
         a.dwForwardNextHop == b.dwForwardNextHop && a.dwForwardIfIndex == b.dwForwardIfIndex;
}

bool IsSame(const MIB_IPFORWARD_ROW2& a, const MIB_IPFORWARD_ROW2& b) {
  return a.InterfaceIndex == b.InterfaceIndex &&
         std::memcmp(&a.DestinationPrefix.Prefix, &b.DestinationPrefix.Prefix,
                     sizeof a.DestinationPrefix.Prefix) == 0;
}

template <class Row>
DWORD AddRow(std::vector<Row>* rows, const Row& row) {
  if (std::ranges::any_of(*rows, [&](const Row& other) { return IsSame(other, row); })) {
    return kAlreadyThere;
  }
  rows->push_back(row);
  return ERROR_SUCCESS;
}

template <class Row>
DWORD DeleteRow(std::vector<Row>* rows, const Row& row) {
  return std::erase_if(*rows, [&](const Row& other) { return IsSame(other, row); }) > 0
             ? ERROR_SUCCESS
             : ERROR_NOT_FOUND;
}

const IpAddress* GatewayOf(const SimInterface& face, int family) {
  for (const IpAddress& gateway : face.ip->gateways) {
    if (gateway.family == family) return &gateway;
  }
  return nullptr;
}

// The world's, or the gateway and a router of the provider.
std::vector<Hop> HopsOf(const SimInterface& face, const std::vector<Hop>& given, int family) {
  std::vector<Hop> hops;
  for (const Hop& hop : given) {
    if (hop.address.family == family) hops.push_back(hop);
  }
  if (!hops.empty()) return hops;
  if (const IpAddress* gateway = GatewayOf(face, family)) hops.push_back({*gateway, kGatewayMs});
  IpAddress provider;
  provider.family = family;
  if (family == IpAddress::kV4) {
    std::ranges::copy(kProvider4, provider.bytes.begin());
  } else {
    std::ranges::copy(kProvider6, provider.bytes.begin());
  }
  hops.push_back({provider, kProviderMs});
  return hops;
}

}  // namespace

IpAddress Ip4AddressOf(DWORD networkOrder) {
  IpAddress address;
  std::memcpy(address.bytes.data(), &networkOrder, sizeof networkOrder);
  return address;
}

IpAddress AddressOf(const SOCKADDR_INET& address) {
  IpAddress out;
  out.family = address.si_family;
  if (address.si_family == AF_INET6) {
    SOCKADDR_IN6 in;
    std::memcpy(static_cast<void*>(&in), &address, sizeof in);
    std::ranges::copy(in.sin6_addr, out.bytes.begin());
  } else {
    SOCKADDR_IN in;
    std::memcpy(static_cast<void*>(&in), &address, sizeof in);
    std::ranges::copy(in.sin_addr, out.bytes.begin());
  }
  return out;
}

SOCKADDR_INET SocketAddressOf(const IpAddress& address) {
  SOCKADDR_INET out;
  if (address.family == IpAddress::kV6) {
    SOCKADDR_IN6 in;
    std::copy_n(address.bytes.begin(), 16, in.sin6_addr);
    std::memcpy(static_cast<void*>(&out), &in, sizeof in);
  } else {
    SOCKADDR_IN in;
    std::copy_n(address.bytes.begin(), 4, in.sin_addr);
    std::memcpy(static_cast<void*>(&out), &in, sizeof in);
  }
  return out;
}

bool SimPaths::IsInterface(DWORD ifIndex) const {
  return std::ranges::any_of(
      Interfaces(), [ifIndex](const SimInterface& face) { return face.ifIndex == ifIndex; });
}

DWORD SimPaths::Add(const MIB_IPFORWARDROW& row) {
  if (!IsInterface(row.dwForwardIfIndex)) return ERROR_INVALID_PARAMETER;
  return AddRow(&m_Routes4, row);
}

DWORD SimPaths::Add(const MIB_IPFORWARD_ROW2& row) {
  if (!IsInterface(row.InterfaceIndex)) return ERROR_INVALID_PARAMETER;
  return AddRow(&m_Routes6, row);
}

DWORD SimPaths::Delete(const MIB_IPFORWARDROW& row) {
  const DWORD code = DeleteRow(&m_Routes4, row);
  return IsInterface(row.dwForwardIfIndex) ? code : ERROR_FILE_NOT_FOUND;
}

DWORD SimPaths::Delete(const MIB_IPFORWARD_ROW2& row) {
  const DWORD code = DeleteRow(&m_Routes6, row);
  return IsInterface(row.InterfaceIndex) ? code : ERROR_FILE_NOT_FOUND;
}

std::vector<MIB_IPFORWARDROW> SimPaths::Table() const {
  std::vector<MIB_IPFORWARDROW> rows;
  for (const SimInterface& face : Interfaces()) {
    const IpAddress* gateway = GatewayOf(face, IpAddress::kV4);
    if (!face.up || !gateway) continue;
    MIB_IPFORWARDROW& row = rows.emplace_back();
    row.dwForwardNextHop = Number(*gateway);
    row.dwForwardIfIndex = face.ifIndex;
    row.dwForwardProto = MIB_IPPROTO_NETMGMT;
  }
  rows.insert(rows.end(), m_Routes4.begin(), m_Routes4.end());
  return rows;
}

std::optional<SimInterface> SimPaths::InterfaceTo(const IpAddress& destination) const {
  const std::vector<SimInterface> faces = Interfaces();
  const auto take = [&](const auto& fits) -> std::optional<SimInterface> {
    const auto found = std::ranges::find_if(
        faces, [&](const SimInterface& face) { return face.up && fits(face); });
    return found == faces.end() ? std::nullopt : std::optional(*found);
  };
  const auto added = [&](const SimInterface& face) {
    const auto four = [&](const MIB_IPFORWARDROW& row) {
      return destination.family == IpAddress::kV4 && row.dwForwardIfIndex == face.ifIndex &&
             (Number(destination) & row.dwForwardMask) == row.dwForwardDest;
    };
    const auto six = [&](const MIB_IPFORWARD_ROW2& row) {
      return row.InterfaceIndex == face.ifIndex &&
             HasSame(AddressOf(row.DestinationPrefix.Prefix), destination,
                     row.DestinationPrefix.PrefixLength);
    };
    return std::ranges::any_of(m_Routes4, four) || std::ranges::any_of(m_Routes6, six);
  };
  const auto near = [&](const SimInterface& face) {
    return std::ranges::any_of(face.ip->unicast, [&](const IpAddress& own) {
      return HasSame(own, destination, own.prefix);
    });
  };
  if (const auto face = take(added)) return face;
  if (const auto face = take(near)) return face;
  return take([&](const SimInterface& face) { return GatewayOf(face, destination.family); });
}

const SimWlanAdapter* SimPaths::WirelessOf(const SimInterface& face) const {
  for (const auto& adapter : m_Adapters) {
    if (adapter->Data().ifIndex == face.ifIndex) return adapter.get();
  }
  return nullptr;
}

std::optional<SimPaths::Answer> SimPaths::Echo(const SimInterface& face,
                                               const IpAddress& destination, int ttl) {
  double extraMs = 0.0;
  std::vector<Hop> given;
  const SimWlanAdapter* const adapter = WirelessOf(face);
  if (adapter && adapter->Connection()) {
    AccessPoint& ap = m_Machine.world.accessPoints[adapter->Connection()->accessPoint];
    if (!ap.noise.empty()) extraMs = ap.noise[ap.noiseTaken++ % ap.noise.size()];
    given = ap.hops;
  }
  const bool internet = !face.network || m_Machine.world.networks[*face.network].internet;
  if (extraMs == kEchoLost || (!internet && ttl > 1)) return std::nullopt;
  const std::vector<Hop> hops = HopsOf(face, given, destination.family);
  if (static_cast<std::size_t>(ttl) <= hops.size()) {
    const Hop& hop = hops[static_cast<std::size_t>(ttl) - 1];
    return Answer{hop.address, false, hop.rttMs + extraMs};
  }
  return Answer{destination, true, hops.back().rttMs + kBeyondMs + extraMs};
}

}  // namespace corvane::platform::sim
