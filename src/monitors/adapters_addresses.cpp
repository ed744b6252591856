#include "monitors/adapters_addresses.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/adapter_kind.h"
#include "monitors/adapter_list.h"
#include "platform/ip_helper_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

using platform::ULONG;

constexpr char kClassName[] = "CAdaptersAddresses";
constexpr ULONG kFirstBytes = 15000;  // enough for ordinary machines
constexpr ULONG kMaxBytes = 16u << 20;
constexpr int kAttempts = 3;

std::atomic<bool> g_TraceVPN{false};

// The block that fill(data, &size) filled, empty where it has nothing to list; null with the code
// in *result when it failed.
template <typename Fill>
CSmartPointer<CGenericMalloc> FillBlock(const char* operation, ULONG* result, Fill&& fill) {
  ULONG size = kFirstBytes;
  CSmartPointer<CGenericMalloc> block;
  for (int attempt = 0; attempt < kAttempts && size <= kMaxBytes; ++attempt) {
    try {
      block.CreateObject()->Initialize(size);
    } catch (const Exception&) {
      throw Exception(FormatA("CAdaptersAddresses::%s_internal: out of memory", operation));
    }
    *result = fill(block->GetData(), &size);
    if (*result == platform::ERROR_SUCCESS) return block;
    if (*result == platform::ERROR_NO_DATA) {
      block->Initialize(0);
      return block;
    }
    if (*result != platform::ERROR_BUFFER_OVERFLOW) break;
  }
  return nullptr;
}

// A neighbour table of the platform, given back at the end of the scope.
class NeighbourTable {
 public:
  explicit NeighbourTable(platform::WORD family) : m_Family(family) {
    m_Result = Os().ipHelper.GetIpNetTable2(family, &m_pTable);
    if (m_Result != platform::ERROR_SUCCESS) return;
    if (!m_pTable || m_pTable->NumEntries > kMaxRows) m_Result = platform::ERROR_INVALID_DATA;
  }
  ~NeighbourTable() {
    if (!m_pTable) return;
    GiveBack("CAdaptersAddresses", "FreeMibTable",
             [this] { Os().ipHelper.FreeMibTable(m_pTable); });
  }
  NeighbourTable(const NeighbourTable&) = delete;
  NeighbourTable& operator=(const NeighbourTable&) = delete;

  platform::DWORD Result() const { return m_Result; }

  // The MAC of the first usable row whose address matches; false without one.
  template <class Sockaddr, class Matches>
  bool FindMac(Matches&& matches, MacValue* mac) const {
    for (ULONG i = 0; i < m_pTable->NumEntries; ++i) {
      const platform::MIB_IPNET_ROW2& row = m_pTable->Table[i];
      Sockaddr address;
      std::memcpy(static_cast<void*>(&address), &row.Address, sizeof(address));
      if (row.Address.si_family != m_Family || !matches(address) ||
          row.PhysicalAddressLength < MacAddress{}.size() || IsZero(ToMac(row.PhysicalAddress))) {
        continue;
      }
      *mac = 0;
      for (std::size_t b = std::min<std::size_t>(row.PhysicalAddressLength, sizeof(*mac)); b > 0;
           --b) {
        *mac = *mac << 8 | row.PhysicalAddress[b - 1];
      }
      return true;
    }
    return false;
  }

 private:
  static constexpr ULONG kMaxRows = 1u << 16;

  platform::WORD m_Family;
  platform::MIB_IPNET_TABLE2* m_pTable = nullptr;
  platform::DWORD m_Result = 0;
};

void Append(const AddressLists& from, std::vector<Ip4Address>* ip4, std::vector<Ip6Address>* ip6) {
  ip4->insert(ip4->end(), from.ip4.begin(), from.ip4.end());
  ip6->insert(ip6->end(), from.ip6.begin(), from.ip6.end());
}

AdapterFacts FactsOf(const AdapterRecord& adapter) {
  return {adapter.description, adapter.ifType, adapter.operStatus};
}

// The adapters of the GUID, by their names.
std::vector<AdapterRecord> AdaptersOf(const CGenericMalloc& block, const platform::GUID& guid) {
  const WString wanted = GuidText(guid);
  std::vector<AdapterRecord> adapters = ReadAdapters(block);
  std::erase_if(adapters, [&](const AdapterRecord& one) {
    return !EqualsIgnoreCase(Widen(one.name), wanted);
  });
  return adapters;
}

}  // namespace

void CAdaptersAddresses::SetVPNTrace(bool on) { g_TraceVPN = on; }

void CAdaptersAddresses::Initialize() {
  Guarded(kClassName, "Initialize", false, [this] {
    InitializeAddresses();
    InitializeAdapterInfo();
    return true;
  });
}

void CAdaptersAddresses::InitializeAddresses() {
  if (m_pAddresses) return;
  ULONG result = platform::ERROR_BUFFER_OVERFLOW;
  m_pAddresses = FillBlock("InitializeAddresses", &result, [](std::uint8_t* data, ULONG* size) {
    return Os().ipHelper.GetAdaptersAddresses(
        platform::AF_UNSPEC,
        platform::GAA_FLAG_INCLUDE_PREFIX | platform::GAA_FLAG_INCLUDE_GATEWAYS, nullptr,
        reinterpret_cast<platform::IP_ADAPTER_ADDRESSES*>(data), size);
  });
  if (m_pAddresses) return;
  LOG_DEBUG(DBG(31),
            u"CAdaptersAddresses::InitializeAddresses_internal: GetAdaptersAddresses failed %lu\n",
            result);
}

void CAdaptersAddresses::InitializeAdapterInfo() {
  if (m_pAdapterInfo) return;
  ULONG result = platform::ERROR_BUFFER_OVERFLOW;
  m_pAdapterInfo = FillBlock("InitializeAdapterInfo", &result, [](std::uint8_t* data, ULONG* size) {
    return Os().ipHelper.GetAdaptersInfo(reinterpret_cast<platform::IP_ADAPTER_INFO*>(data), size);
  });
  if (m_pAdapterInfo) return;
  LOG_DEBUG(DBG(31),
            u"CAdaptersAddresses::InitializeAdapterInfo_internal: GetAdaptersInfo failed %lu\n",
            result);
}

std::uint32_t CAdaptersAddresses::CountVPNAdapters() {
  return Guarded(kClassName, "CountVPNAdapters", std::uint32_t{0},
                 [this] { return CountVPNAdapters_internal(); });
}

std::uint32_t CAdaptersAddresses::CountVPNAdapters_internal() {
  if (!m_pAddresses) {
    LOG_INFO(u"CAdaptersAddresses::CountVPNAdapters_internal: not initialized\n");
    return 0;
  }
  std::uint32_t count = 0;
  for (const AdapterRecord& adapter : ReadAdapters(*m_pAddresses)) {
    const bool vpn = IsActiveVpn(FactsOf(adapter));
    if (vpn) ++count;
    if (g_TraceVPN) {
      LOG_INFO(
          u"CAdaptersAddresses::CountVPNAdapters: [%s] IfType=%lu, OperStatus=%lu, named=%i, "
          u"VPN=%i\n",
          adapter.description, adapter.ifType, adapter.operStatus,
          HasVpnName(ToLower(adapter.description)), vpn);
    }
  }
  return count;
}

std::uint32_t CAdaptersAddresses::CountConnectedAdapters(std::uint32_t* total,
                                                         std::uint32_t* lanUp) {
  *total = 0;
  *lanUp = 0;
  return Guarded(kClassName, "CountConnectedAdapters", std::uint32_t{0},
                 [&] { return CountConnectedAdapters_internal(total, lanUp); });
}

std::uint32_t CAdaptersAddresses::CountConnectedAdapters_internal(std::uint32_t* total,
                                                                  std::uint32_t* lanUp) {
  if (!m_pAddresses) return 0;
  std::uint32_t up = 0;
  for (const AdapterRecord& adapter : ReadAdapters(*m_pAddresses)) {
    const AdapterFacts facts = FactsOf(adapter);
    if (!IsLanCandidate(facts)) continue;
    ++*total;
    if (!facts.IsUp()) continue;
    ++up;
    if (facts.ifType == platform::IF_TYPE_ETHERNET_CSMACD) ++*lanUp;
  }
  return up;
}

std::size_t CAdaptersAddresses::GetIPAddressesForInterface(const platform::GUID& adapter,
                                                           std::vector<Ip4Address>* ip4,
                                                           std::vector<Ip6Address>* ip6,
                                                           WString* dnsSuffix) {
  if (!m_pAddresses)
    throw Exception("CAdaptersAddresses::GetIPAddressesForInterface: not initialized");
  std::size_t count = 0;
  for (const AdapterRecord& one : AdaptersOf(*m_pAddresses, adapter)) {
    *dnsSuffix = one.dnsSuffix;
    Append(one.addresses, ip4, ip6);
    count += one.addresses.ip4.size() + one.addresses.ip6.size();
  }
  return count;
}

std::size_t CAdaptersAddresses::GetIPGatewaysForInterface(const platform::GUID& adapter,
                                                          std::vector<Ip4Address>* ip4,
                                                          std::vector<Ip6Address>* ip6) {
  if (!m_pAddresses)
    throw Exception("CAdaptersAddresses::GetIPGatewaysForInterface: not initialized");
  std::size_t count = 0;
  for (const AdapterRecord& one : AdaptersOf(*m_pAddresses, adapter)) {
    for (const Ip4Address gateway : one.gateways.ip4) {
      ++count;
      LOG_DEBUG(DBG(40),
                u"CAdaptersAddresses::GetIPGatewaysForInterface: [count=%i] IP4 GATEWAY: %s\n",
                count, Ip4Text(gateway));
    }
    for (const Ip6Address& gateway : one.gateways.ip6) {
      ++count;
      LOG_DEBUG(DBG(40),
                u"CAdaptersAddresses::GetIPGatewaysForInterface: [count=%i] IP6 GATEWAY: %s\n",
                count, Ip6Text(gateway));
    }
    Append(one.gateways, ip4, ip6);
  }
  return count;
}

bool CAdaptersAddresses::GetIPv6AddressForIndex(std::uint32_t ifIndex, Ip6Address* address) {
  if (!m_pAddresses) return false;
  const std::vector<AdapterRecord> adapters = ReadAdapters(*m_pAddresses);
  const auto found =
      std::find_if(adapters.begin(), adapters.end(), [ifIndex](const AdapterRecord& one) {
        return one.ifIndex == ifIndex && !one.addresses.ip6.empty();
      });
  if (found == adapters.end()) return false;
  *address = found->addresses.ip6.front();
  return true;
}

bool CAdaptersAddresses::GetIP4MaskFromAdaptersInfo(std::int32_t ifIndex, const std::string& ip4,
                                                    std::string* mask) {
  if (!m_pAdapterInfo || ifIndex < 0) return false;
  for (const AdapterInfoRecord& one : ReadAdapterInfo(*m_pAdapterInfo)) {
    if (one.index != static_cast<std::uint32_t>(ifIndex) || one.ipAddress != ip4) continue;
    *mask = one.ipMask;
    return true;
  }
  return false;
}

std::size_t CAdaptersAddresses::GetMacForIP4(const std::vector<Ip4Address>& ip4,
                                             std::vector<MacValue>* macs) {
  if (ip4.empty()) return 0;
  return Guarded(kClassName, "GetMacForIP4", std::size_t{0}, [&]() -> std::size_t {
    const NeighbourTable table(platform::AF_INET);
    if (table.Result() != platform::ERROR_SUCCESS) {
      LOG_ERROR(u"CAdaptersAddresses::GetMacForIP4: GetIpNetTable2 for IPv4 Failed: %ld\n",
                table.Result());
      return 0;
    }
    std::size_t found = 0;
    for (const Ip4Address ip : ip4) {
      MacValue mac = 0;
      const auto matches = [ip](const platform::SOCKADDR_IN& row) {
        return std::memcmp(row.sin_addr, &ip, sizeof(ip)) == 0;
      };
      if (table.FindMac<platform::SOCKADDR_IN>(matches, &mac)) {
        macs->push_back(mac);
        ++found;
      } else {
        LOG_INFO(u"CAdaptersAddresses::GetMacForIP4: failed to find mac for ip4: %s\n",
                 Ip4Text(ip));
      }
    }
    return found;
  });
}

std::size_t CAdaptersAddresses::GetMacForIP6(const std::vector<Ip6Address>& ip6,
                                             std::vector<MacValue>* macs) {
  if (ip6.empty()) return 0;
  return Guarded(kClassName, "GetMacForIP6", std::size_t{0}, [&]() -> std::size_t {
    const NeighbourTable table(platform::AF_INET6);
    if (table.Result() != platform::ERROR_SUCCESS) {
      LOG_ERROR(u"CAdaptersAddresses::GetMacForIP6: GetIpNetTable2 for IPv6 Failed: %ld\n",
                table.Result());
      return 0;
    }
    std::size_t found = 0;
    for (const Ip6Address& ip : ip6) {
      MacValue mac = 0;
      const auto matches = [&ip](const platform::SOCKADDR_IN6& row) {
        return std::equal(ip.begin(), ip.end(), row.sin6_addr);
      };
      if (table.FindMac<platform::SOCKADDR_IN6>(matches, &mac)) {
        macs->push_back(mac);
        ++found;
      } else {
        LOG_INFO(u"CAdaptersAddresses::GetMacForIP6: failed to find mac for ip6: %s\n",
                 Ip6Text(ip));
      }
    }
    return found;
  });
}

}  // namespace corvane
