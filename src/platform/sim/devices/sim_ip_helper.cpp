#include "platform/sim/devices/sim_ip_helper.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kLoopback = 24;       // IF_TYPE_SOFTWARE_LOOPBACK
constexpr DWORD kAdminUp = 1;         // MIB_IF_ADMIN_STATUS_UP
constexpr DWORD kOperational = 5;     // MIB_IF_OPER_STATUS_OPERATIONAL
constexpr DWORD kNonOperational = 0;  // MIB_IF_OPER_STATUS_NON_OPERATIONAL
constexpr DWORD kReachable = 5;       // NlnsReachable
constexpr DWORD ERROR_BAD_NET_NAME = 67;
// The flags with which the load-balance engine lists the adapters, and nobody else.
constexpr ULONG kEngineFlags = GAA_FLAG_INCLUDE_GATEWAYS | GAA_FLAG_SKIP_MULTICAST;

// NET_LUID: the interface's number, and its type in the uppermost 16 bits.
ULONGLONG LuidOf(const SimInterface& face) {
  return ULONGLONG{face.ifIndex} << 24 | ULONGLONG{face.ifType} << 48;
}

// Hands out the parts of the caller's buffer one behind the other, each aligned. What has no room
// any more is null, and counted.
class Arena {
 public:
  Arena(void* base, std::size_t size)
      : m_pBase(static_cast<BYTE*>(base)), m_Size(base ? size : 0) {}
  void* Take(std::size_t bytes) {
    const std::size_t from = m_Used;
    m_Used += (bytes + 7) / 8 * 8;
    return m_Used <= m_Size ? m_pBase + from : nullptr;
  }
  template <class T>
  T* Make() {
    void* at = Take(sizeof(T));
    return at ? new (at) T() : nullptr;
  }
  template <class Char>
  Char* Text(std::basic_string_view<Char> text) {
    auto* at = static_cast<Char*>(Take((text.size() + 1) * sizeof(Char)));
    if (!at) return nullptr;
    std::copy(text.begin(), text.end(), at);
    at[text.size()] = 0;
    return at;
  }
  std::size_t Used() const { return m_Used; }

 private:
  BYTE* m_pBase;
  std::size_t m_Size;
  std::size_t m_Used = 0;
};

SOCKET_ADDRESS MakeAddress(Arena& arena, const IpAddress& address) {
  SOCKET_ADDRESS result;
  if (address.family == IpAddress::kV4) {
    auto* in = arena.Make<SOCKADDR_IN>();
    result = {in, sizeof(SOCKADDR_IN)};
    if (in) std::copy_n(address.bytes.begin(), 4, in->sin_addr);
  } else {
    auto* in = arena.Make<SOCKADDR_IN6>();
    result = {in, sizeof(SOCKADDR_IN6)};
    if (in) std::copy_n(address.bytes.begin(), 16, in->sin6_addr);
  }
  return result;
}

// The records of one list, each behind the one before.
template <class Record>
void MakeList(Arena& arena, const std::vector<IpAddress>& addresses, ULONG family, Record** first) {
  Record** next = first;
  for (const IpAddress& address : addresses) {
    if (family != AF_UNSPEC && family != static_cast<ULONG>(address.family)) continue;
    auto* record = arena.Make<Record>();
    const SOCKET_ADDRESS socket = MakeAddress(arena, address);
    if (!record) continue;
    record->Address = socket;
    if constexpr (requires { record->OnLinkPrefixLength; }) {
      record->OnLinkPrefixLength = static_cast<BYTE>(address.prefix);
      record->DadState = IpDadStatePreferred;
    }
    *next = record;
    next = &record->Next;
  }
}

void MakeAdapters(Arena& arena, const std::vector<SimInterface>& interfaces, ULONG family,
                  ULONG flags) {
  IP_ADAPTER_ADDRESSES* last = nullptr;
  for (const SimInterface& face : interfaces) {
    auto* adapter = arena.Make<IP_ADAPTER_ADDRESSES>();
    IP_ADAPTER_ADDRESSES measured;  // takes the pointers when there is no room
    IP_ADAPTER_ADDRESSES& out = adapter ? *adapter : measured;
    out.AdapterName = arena.Text<char>(ToUtf8(GuidText(face.guid)));
    out.DnsSuffix = arena.Text<char16_t>(face.ip->dnsSuffix);
    out.Description = arena.Text<char16_t>(face.description);
    out.FriendlyName = arena.Text<char16_t>(face.friendlyName);
    MakeList(arena, face.ip->unicast, family, &out.FirstUnicastAddress);
    if ((flags & GAA_FLAG_INCLUDE_GATEWAYS) != 0) {
      MakeList(arena, face.ip->gateways, family, &out.FirstGatewayAddress);
    }
    out.IfIndex = out.Ipv6IfIndex = face.ifIndex;
    out.IfType = face.ifType;
    out.Luid = LuidOf(face);
    out.OperStatus = face.up ? IfOperStatusUp : IfOperStatusDown;
    out.Mtu = face.mtu;
    std::ranges::copy(face.mac, out.PhysicalAddress);
    out.PhysicalAddressLength = static_cast<ULONG>(face.mac.size());
    out.TransmitLinkSpeed = out.ReceiveLinkSpeed = static_cast<ULONGLONG>(face.linkMbps * 1e6);
    if (last) last->Next = adapter;
    last = adapter;
  }
}

void PutDotted(const BYTE* bytes, char (&out)[16]) {
  char* at = out;
  for (int i = 0; i < 4; ++i) {
    if (i > 0) *at++ = '.';
    at = std::to_chars(at, std::end(out), bytes[i]).ptr;
  }
  *at = 0;
}

template <std::size_t N>
void PutText(std::u16string_view text, char (&out)[N]) {
  const std::string narrow = ToUtf8(text);
  out[narrow.copy(out, N - 1)] = 0;
}

// Where the list has no address of its own, the first record says 0.0.0.0.
void MakeStrings(Arena& arena, const std::vector<IpAddress>& addresses, IP_ADDR_STRING* first) {
  constexpr BYTE kNone[4] = {};
  PutDotted(kNone, first->IpAddress);
  PutDotted(kNone, first->IpMask);
  IP_ADDR_STRING* last = nullptr;
  IP_ADDR_STRING measured;
  for (const IpAddress& address : addresses) {
    if (address.family != IpAddress::kV4) continue;
    IP_ADDR_STRING* record = first;
    if (last) {
      record = last->Next = arena.Make<IP_ADDR_STRING>();
      if (!record) record = &measured;
    }
    PutDotted(address.bytes.data(), record->IpAddress);
    const std::uint64_t bits = 0xFFFFFFFF00000000u >> std::clamp(address.prefix, 0, 32);
    const BYTE mask[4] = {static_cast<BYTE>(bits >> 24), static_cast<BYTE>(bits >> 16),
                          static_cast<BYTE>(bits >> 8), static_cast<BYTE>(bits)};
    PutDotted(mask, record->IpMask);
    last = record;
  }
}

void MakeInfos(Arena& arena, const std::vector<SimInterface>& interfaces) {
  IP_ADAPTER_INFO* last = nullptr;
  for (const SimInterface& face : interfaces) {
    auto* info = arena.Make<IP_ADAPTER_INFO>();
    IP_ADAPTER_INFO measured;
    IP_ADAPTER_INFO& out = info ? *info : measured;
    PutText(GuidText(face.guid), out.AdapterName);
    PutText(face.description, out.Description);
    out.AddressLength = static_cast<DWORD>(face.mac.size());
    std::ranges::copy(face.mac, out.Address);
    out.ComboIndex = out.Index = face.ifIndex;
    out.Type = face.ifType;
    out.DhcpEnabled = face.ip->dhcp ? 1 : 0;
    MakeStrings(arena, face.ip->unicast, &out.IpAddressList);
    MakeStrings(arena, face.ip->gateways, &out.GatewayList);
    if (last) last->Next = info;
    last = info;
  }
}

// Writes a list with `make(arena)` into the caller's buffer. One that is too small is left with a
// part of it.
template <class Make>
ULONG Write(void* buffer, ULONG* size, bool empty, Make&& make) {
  if (empty) return ERROR_NO_DATA;
  const std::size_t room = buffer ? *size : 0;
  Arena arena(buffer, room);
  make(arena);
  *size = static_cast<ULONG>(arena.Used());
  return arena.Used() <= room ? ERROR_SUCCESS : ERROR_BUFFER_OVERFLOW;
}

MIB_IPNET_ROW2 NeighbourRow(const Neighbour& neighbour, DWORD ifIndex) {
  MIB_IPNET_ROW2 row;
  if (neighbour.address.family == IpAddress::kV4) {
    SOCKADDR_IN in;
    std::copy_n(neighbour.address.bytes.begin(), 4, in.sin_addr);
    std::memcpy(static_cast<void*>(&row.Address), &in, sizeof in);
  } else {
    SOCKADDR_IN6 in;
    std::copy_n(neighbour.address.bytes.begin(), 16, in.sin6_addr);
    std::memcpy(static_cast<void*>(&row.Address), &in, sizeof in);
  }
  row.InterfaceIndex = ifIndex;
  std::ranges::copy(neighbour.mac, row.PhysicalAddress);
  row.PhysicalAddressLength = static_cast<ULONG>(neighbour.mac.size());
  row.State = kReachable;
  return row;
}

}  // namespace

DWORD SimIpHelper::GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL order) {
  if (const DWORD code = m_Gate.Enter("GetIfTable"); code != ERROR_SUCCESS) return code;
  if (!size) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    std::vector<SimInterface> interfaces = Interfaces();
    if (order) std::ranges::stable_sort(interfaces, {}, &SimInterface::ifIndex);
    const std::size_t needed = std::max(
        sizeof(MIB_IFTABLE), offsetof(MIB_IFTABLE, table) + interfaces.size() * sizeof(MIB_IFROW));
    const bool fits = table && *size >= needed;
    *size = static_cast<ULONG>(needed);
    if (!fits) return ERROR_INSUFFICIENT_BUFFER;
    table->dwNumEntries = static_cast<DWORD>(interfaces.size());
    for (std::size_t i = 0; i < interfaces.size(); ++i) {
      const SimInterface& face = interfaces[i];
      MIB_IFROW row;
      CopyText(u"\\DEVICE\\TCPIP_" + GuidText(face.guid), row.wszName, std::size(row.wszName));
      row.dwIndex = face.ifIndex;
      row.dwType = face.ifType;
      row.dwMtu = face.mtu;
      row.dwSpeed = static_cast<DWORD>(std::min(face.linkMbps * 1e6, 4294967295.0));
      row.dwPhysAddrLen = static_cast<DWORD>(face.mac.size());
      std::ranges::copy(face.mac, row.bPhysAddr);
      row.dwAdminStatus = kAdminUp;
      row.dwOperStatus = face.up ? kOperational : kNonOperational;
      row.dwInOctets = static_cast<DWORD>(static_cast<std::uint64_t>(face.totals.inBytes));
      row.dwOutOctets = static_cast<DWORD>(static_cast<std::uint64_t>(face.totals.outBytes));
      row.dwInErrors = static_cast<DWORD>(static_cast<std::uint64_t>(face.totals.inErrors));
      row.dwOutErrors = static_cast<DWORD>(static_cast<std::uint64_t>(face.totals.outErrors));
      const std::string description = ToUtf8(face.description);
      const std::size_t length = std::min(description.size(), std::size(row.bDescr) - 1);
      std::copy_n(description.begin(), length, row.bDescr);
      row.dwDescrLen = static_cast<DWORD>(length + 1);
      std::memcpy(reinterpret_cast<BYTE*>(table) + offsetof(MIB_IFTABLE, table) + i * sizeof row,
                  &row, sizeof row);
    }
    return ERROR_SUCCESS;
  });
}

ULONG SimIpHelper::GetAdaptersAddresses(ULONG family, ULONG flags, void*,
                                        IP_ADAPTER_ADDRESSES* addresses, ULONG* size) {
  if (flags == kEngineFlags) m_Driver.OnPassBegins();
  if (const DWORD code = m_Gate.Enter("GetAdaptersAddresses"); code != ERROR_SUCCESS) return code;
  if (!size) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] {
    const std::vector<SimInterface> interfaces = Interfaces();
    return Write(addresses, size, interfaces.empty(),
                 [&](Arena& arena) { MakeAdapters(arena, interfaces, family, flags); });
  });
}

ULONG SimIpHelper::GetAdaptersInfo(IP_ADAPTER_INFO* info, ULONG* size) {
  if (const DWORD code = m_Gate.Enter("GetAdaptersInfo"); code != ERROR_SUCCESS) return code;
  if (!size) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&] {
    std::vector<SimInterface> interfaces = Interfaces();
    std::erase_if(interfaces, [](const SimInterface& face) {
      return face.ifType == kLoopback || face.ifType == IF_TYPE_TUNNEL;
    });
    return Write(info, size, interfaces.empty(),
                 [&](Arena& arena) { MakeInfos(arena, interfaces); });
  });
}

// Each network that somebody is on shows its hosts, behind the rows that always stand there.
DWORD SimIpHelper::GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table) {
  if (const DWORD code = m_Gate.Enter("GetIpNetTable2"); code != ERROR_SUCCESS) return code;
  if (!table) return ERROR_INVALID_PARAMETER;
  std::vector<MIB_IPNET_ROW2> rows;
  m_Machine.loop.WithLock([&] {
    const auto add = [&](const Neighbour& neighbour, DWORD ifIndex) {
      if (family != AF_UNSPEC && family != neighbour.address.family) return;
      rows.push_back(NeighbourRow(neighbour, ifIndex));
    };
    for (const Neighbour& neighbour : m_Machine.world.neighbours) add(neighbour, 0);
    for (const SimInterface& face : Interfaces()) {
      if (!face.network) continue;
      for (const Neighbour& neighbour : m_Machine.world.networks[*face.network].neighbours) {
        add(neighbour, face.ifIndex);
      }
    }
  });
  const std::size_t bytes =
      std::max(sizeof(MIB_IPNET_TABLE2),
               offsetof(MIB_IPNET_TABLE2, Table) + rows.size() * sizeof(MIB_IPNET_ROW2));
  void* memory = std::calloc(1, bytes);
  if (!memory) return ERROR_NOT_ENOUGH_MEMORY;
  const auto count = static_cast<ULONG>(rows.size());
  std::memcpy(memory, &count, sizeof count);
  if (!rows.empty()) {
    std::memcpy(static_cast<BYTE*>(memory) + offsetof(MIB_IPNET_TABLE2, Table), rows.data(),
                rows.size() * sizeof(MIB_IPNET_ROW2));
  }
  ++m_TablesOut;
  *table = static_cast<MIB_IPNET_TABLE2*>(memory);
  return ERROR_SUCCESS;
}

void SimIpHelper::FreeMibTable(void* memory) {
  if (memory) --m_TablesOut;
  std::free(memory);
  m_Gate.Enter("FreeMibTable");
}

// The host answers, where there is one of this address on a network that somebody is on.
DWORD SimIpHelper::ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET*) {
  if (const DWORD code = m_Gate.Enter("ResolveIpNetEntry2"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    const auto answers = [&](const Neighbour& host) {
      const MIB_IPNET_ROW2 own = NeighbourRow(host, row->InterfaceIndex);
      const Mac mac = host.resolved != Mac{} ? host.resolved : host.mac;
      if (std::memcmp(&own.Address, &row->Address, sizeof own.Address) != 0 || mac == Mac{})
        return false;
      std::ranges::copy(mac, row->PhysicalAddress);
      row->PhysicalAddressLength = static_cast<ULONG>(mac.size());
      row->State = kReachable;
      return true;
    };
    const World& world = m_Machine.world;
    if (std::ranges::any_of(world.neighbours, answers)) return ERROR_SUCCESS;
    for (const SimInterface& face : Interfaces()) {
      if (face.network && std::ranges::any_of(world.networks[*face.network].neighbours, answers))
        return ERROR_SUCCESS;
    }
    return ERROR_BAD_NET_NAME;
  });
}

DWORD SimIpHelper::GetIfEntry2(MIB_IF_ROW2* row) {
  if (const DWORD code = m_Gate.Enter("GetIfEntry2"); code != ERROR_SUCCESS) return code;
  if (!row) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    for (const SimInterface& face : Interfaces()) {
      if (LuidOf(face) != row->InterfaceLuid) continue;
      row->InterfaceIndex = face.ifIndex;
      row->PhysicalAddressLength = static_cast<ULONG>(face.mac.size());
      std::ranges::copy(face.mac, row->PhysicalAddress);
      return ERROR_SUCCESS;
    }
    return ERROR_FILE_NOT_FOUND;
  });
}

DWORD SimIpHelper::ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid) {
  if (const DWORD code = m_Gate.Enter("ConvertInterfaceGuidToLuid"); code != ERROR_SUCCESS)
    return code;
  if (!adapter || !luid) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    for (const SimInterface& face : Interfaces()) {
      if (face.guid != *adapter) continue;
      *luid = LuidOf(face);
      return ERROR_SUCCESS;
    }
    return ERROR_INVALID_PARAMETER;
  });
}

}  // namespace corvane::platform::sim
