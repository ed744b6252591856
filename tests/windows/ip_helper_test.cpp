// The IP helper: rows and tables through a library's functions onto simulated interfaces, and the
// system's own.

#include "platform/windows/windows_ip_helper.h"
#include "windows/system_functions.h"

namespace corvane::test {

using platform::windows::SystemLibrary;
using platform::windows::WindowsIpHelper;

namespace {

// The rows of which the seam has a part only.
::DWORD WINAPI InterfaceEntry(::MIB_IPINTERFACE_ROW* row) {
  MIB_IPINTERFACE_ROW it;
  it.Family = row->Family;
  it.InterfaceIndex = row->InterfaceIndex;
  const DWORD code = g_pBehind<IpHelperApi>->GetIpInterfaceEntry(&it);
  row->Metric = it.Metric;
  return code;
}
::DWORD WINAPI IfEntry2(::MIB_IF_ROW2* row) {
  MIB_IF_ROW2 it;
  it.InterfaceLuid = row->InterfaceLuid.Value;
  const DWORD code = g_pBehind<IpHelperApi>->GetIfEntry2(&it);
  row->InterfaceIndex = it.InterfaceIndex;
  row->PhysicalAddressLength = it.PhysicalAddressLength;
  std::memcpy(row->PhysicalAddress, it.PhysicalAddress, sizeof it.PhysicalAddress);
  return code;
}
// Leaves what was there in the bytes that no member has.
::DWORD WINAPI NeighbourTable(::ADDRESS_FAMILY family, ::MIB_IPNET_TABLE2** table) {
  MIB_IPNET_TABLE2* it = nullptr;
  const DWORD code = g_pBehind<IpHelperApi>->GetIpNetTable2(family, &it);
  *table = reinterpret_cast<::MIB_IPNET_TABLE2*>(it);
  if (code == 0 && it->NumEntries > 0) it->Table[0].Flags = 0xCDCDCD01;
  return code;
}

#define CORVANE_IP(name) FunctionOf<&IpHelperApi::name, decltype(::name)>(#name)
const SystemFunction kFunctions[] = {
    CORVANE_IP(GetIfTable),
    CORVANE_IP(GetAdaptersAddresses),
    CORVANE_IP(GetAdaptersInfo),
    {"GetIpNetTable2", reinterpret_cast<void*>(&NeighbourTable), nullptr},
    CORVANE_IP(FreeMibTable),
    CORVANE_IP(ResolveIpNetEntry2),
    CORVANE_IP(CreateIpForwardEntry),
    CORVANE_IP(DeleteIpForwardEntry),
    CORVANE_IP(GetIpForwardTable),
    CORVANE_IP(InitializeIpForwardEntry),
    CORVANE_IP(CreateIpForwardEntry2),
    CORVANE_IP(DeleteIpForwardEntry2),
    {"GetIpInterfaceEntry", reinterpret_cast<void*>(&InterfaceEntry), nullptr},
    {"GetIfEntry2", reinterpret_cast<void*>(&IfEntry2), nullptr},
    CORVANE_IP(ConvertInterfaceGuidToLuid),
};
#undef CORVANE_IP
const SystemLibrary kSimulated(+[](const char* name) { return FindIn(kFunctions, name); });

std::vector<Operation<IpHelperApi>> Operations() {
  static ULONG size;
  static GUID adapter;
  static ULONGLONG luid;
  static MIB_IPNET_TABLE2* neighbours;
  static MIB_IPNET_ROW2 neighbour;
  static MIB_IPFORWARDROW route;
  static MIB_IPFORWARD_ROW2 route2;
  static MIB_IPINTERFACE_ROW interfaceRow;
  static MIB_IF_ROW2 row;
  return {
      {"GetIfTable", [](auto& it) { return it.GetIfTable(nullptr, &size, FALSE); }},
      {"GetAdaptersAddresses",
       [](auto& it) { return it.GetAdaptersAddresses(0, 0, nullptr, nullptr, &size); }},
      {"GetAdaptersInfo", [](auto& it) { return it.GetAdaptersInfo(nullptr, &size); }},
      {"GetIpNetTable2", [](auto& it) { return it.GetIpNetTable2(2, &neighbours); }},
      {"ResolveIpNetEntry2", [](auto& it) { return it.ResolveIpNetEntry2(&neighbour, nullptr); }},
      {"CreateIpForwardEntry", [](auto& it) { return it.CreateIpForwardEntry(&route); }},
      {"DeleteIpForwardEntry", [](auto& it) { return it.DeleteIpForwardEntry(&route); }},
      {"GetIpForwardTable", [](auto& it) { return it.GetIpForwardTable(nullptr, &size, FALSE); }},
      {"CreateIpForwardEntry2", [](auto& it) { return it.CreateIpForwardEntry2(&route2); }},
      {"DeleteIpForwardEntry2", [](auto& it) { return it.DeleteIpForwardEntry2(&route2); }},
      {"GetIpInterfaceEntry", [](auto& it) { return it.GetIpInterfaceEntry(&interfaceRow); }},
      {"GetIfEntry2", [](auto& it) { return it.GetIfEntry2(&row); }},
      {"ConvertInterfaceGuidToLuid",
       [](auto& it) { return it.ConvertInterfaceGuidToLuid(&adapter, &luid); }},
  };
}

// The answer of a call that tells the size first, in a buffer of that size.
template <typename Table, typename Call>
std::vector<std::uint64_t> Sized(DWORD tooSmall, const Call& call) {
  ULONG size = 0;
  EXPECT_EQ(call(static_cast<Table*>(nullptr), &size), tooSmall);
  std::vector<std::uint64_t> buffer(size / 8 + 1);
  EXPECT_EQ(call(reinterpret_cast<Table*>(buffer.data()), &size), ERROR_SUCCESS);
  return buffer;
}

std::vector<std::uint64_t> AddressesOf(IpHelperApi& ip) {
  return Sized<IP_ADAPTER_ADDRESSES>(
      ERROR_BUFFER_OVERFLOW, [&](IP_ADAPTER_ADDRESSES* list, ULONG* size) {
        return ip.GetAdaptersAddresses(0, GAA_FLAG_INCLUDE_PREFIX | GAA_FLAG_INCLUDE_GATEWAYS,
                                       nullptr, list, size);
      });
}

class WindowsIpHelperTest : public SystemPcTest {
 protected:
  static World Office() {
    World world = TwoNetworks();
    world.adapters[0].connectedTo = Mac{2, 0, 0, 0, 1, 1};
    platform::sim::Network office;
    office.name = u"Office";
    office.ssid = "Office";
    IpAddress own, gateway;
    own.bytes = {192, 168, 5, 20};
    gateway.bytes = {192, 168, 5, 1};
    office.ip.unicast = {own};
    office.ip.gateways = {gateway};
    office.neighbours = {{gateway, {2, 9, 9, 9, 9, 1}}};
    world.networks = {office};
    return world;
  }
  WindowsIpHelper ip{kSimulated};
};

}  // namespace

TEST_F(WindowsIpHelperTest, TablesAndRowsPassThroughTheSystemsFunctions) {
  Start(Office(), {.ipHelper = &ip});
  const auto addresses = AddressesOf(ip);
  const auto& wifi = *reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(addresses.data());
  EXPECT_STREQ(wifi.AdapterName, "{000000A1-0000-0000-0102-030405060708}");
  EXPECT_EQ(wifi.IfType, IF_TYPE_IEEE80211);
  ASSERT_NE(wifi.FirstGatewayAddress, nullptr);
  const auto infos = Sized<IP_ADAPTER_INFO>(
      ERROR_BUFFER_OVERFLOW,
      [&](IP_ADAPTER_INFO* list, ULONG* size) { return ip.GetAdaptersInfo(list, size); });
  const auto& info = *reinterpret_cast<const IP_ADAPTER_INFO*>(infos.data());
  EXPECT_STREQ(info.GatewayList.IpAddress, "192.168.5.1");
  const auto interfaces = Sized<MIB_IFTABLE>(
      ERROR_INSUFFICIENT_BUFFER,
      [&](MIB_IFTABLE* table, ULONG* size) { return ip.GetIfTable(table, size, FALSE); });
  const auto& table = *reinterpret_cast<const MIB_IFTABLE*>(interfaces.data());
  EXPECT_EQ(table.dwNumEntries, 1u);
  EXPECT_EQ(table.table[0].bPhysAddr[5], 1);

  // By GUID to LUID to row.
  ULONGLONG luid = 0;
  ASSERT_EQ(ip.ConvertInterfaceGuidToLuid(&guid, &luid), ERROR_SUCCESS);
  MIB_IF_ROW2 row;
  row.InterfaceLuid = luid;
  ASSERT_EQ(ip.GetIfEntry2(&row), ERROR_SUCCESS);
  EXPECT_EQ(row.InterfaceIndex, table.table[0].dwIndex);
  ASSERT_EQ(row.PhysicalAddressLength, 6u);
  EXPECT_EQ(row.PhysicalAddress[5], 1);
  MIB_IPINTERFACE_ROW metric;
  metric.Family = AF_INET;
  metric.InterfaceIndex = row.InterfaceIndex;
  ASSERT_EQ(ip.GetIpInterfaceEntry(&metric), ERROR_SUCCESS);
  EXPECT_GT(metric.Metric, 0u);

  MIB_IPNET_TABLE2* neighbours = nullptr;
  ASSERT_EQ(ip.GetIpNetTable2(AF_INET, &neighbours), ERROR_SUCCESS);
  ASSERT_EQ(neighbours->NumEntries, 1u);
  EXPECT_EQ(neighbours->Table[0].PhysicalAddress[1], 9);
  EXPECT_EQ(neighbours->Table[0].Flags, 1u) << "and nothing of what lies behind the flags";
  MIB_IPNET_ROW2 asked = neighbours->Table[0];
  ip.FreeMibTable(neighbours);
  asked.PhysicalAddressLength = 0;
  EXPECT_EQ(ip.ResolveIpNetEntry2(&asked, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(asked.PhysicalAddressLength, 6u);
}

TEST_F(WindowsIpHelperTest, RoutesComeAndGo) {
  Start(Office(), {.ipHelper = &ip});
  ULONGLONG luid = 0;
  ASSERT_EQ(ip.ConvertInterfaceGuidToLuid(&guid, &luid), ERROR_SUCCESS);
  MIB_IF_ROW2 face;
  face.InterfaceLuid = luid;
  ASSERT_EQ(ip.GetIfEntry2(&face), ERROR_SUCCESS);
  MIB_IPFORWARDROW route;
  route.dwForwardDest = 0x010000CB;  // 203.0.0.1
  route.dwForwardMask = 0xFFFFFFFF;
  route.dwForwardNextHop = 0x0105A8C0;  // 192.168.5.1
  route.dwForwardIfIndex = face.InterfaceIndex;
  route.dwForwardProto = MIB_IPPROTO_NETMGMT;
  route.dwForwardMetric1 = 50;
  EXPECT_EQ(ip.CreateIpForwardEntry(&route), ERROR_SUCCESS);
  const auto routes = Sized<MIB_IPFORWARDTABLE>(
      ERROR_INSUFFICIENT_BUFFER,
      [&](MIB_IPFORWARDTABLE* table, ULONG* size) { return ip.GetIpForwardTable(table, size, 0); });
  const auto& table = *reinterpret_cast<const MIB_IPFORWARDTABLE*>(routes.data());
  bool found = false;
  for (DWORD i = 0; i < table.dwNumEntries; ++i) {
    found = found || table.table[i].dwForwardDest == route.dwForwardDest;
  }
  EXPECT_TRUE(found);
  EXPECT_EQ(ip.DeleteIpForwardEntry(&route), ERROR_SUCCESS);
  MIB_IPFORWARD_ROW2 six;
  ip.InitializeIpForwardEntry(&six);
  six.InterfaceLuid = luid;
  six.InterfaceIndex = face.InterfaceIndex;
  six.DestinationPrefix.Prefix.si_family = six.NextHop.si_family = AF_INET6;
  six.DestinationPrefix.PrefixLength = 128;
  EXPECT_EQ(ip.CreateIpForwardEntry2(&six), ERROR_SUCCESS);
  EXPECT_EQ(ip.DeleteIpForwardEntry2(&six), ERROR_SUCCESS);
  for (const SystemFunction& function : kFunctions) {
    if (function.calls) {
      EXPECT_GT(*function.calls, 0) << function.name;
    }
  }
}

TEST(WindowsIpHelper, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  WindowsIpHelper missing(kMissing), faulting(kFaulting);
  ExpectFailures<IpHelperApi>(Operations(), missing, faulting);
  MIB_IPFORWARD_ROW2 row;
  row.Metric = 7;
  missing.InitializeIpForwardEntry(&row);
  EXPECT_EQ(row.Metric, 7u);
  missing.FreeMibTable(nullptr);
  EXPECT_EQ(FaultCodeOf([&] { faulting.FreeMibTable(nullptr); }), EXCEPTION_ACCESS_VIOLATION);
  EXPECT_EQ(FaultCodeOf([&] { faulting.InitializeIpForwardEntry(&row); }),
            EXCEPTION_ACCESS_VIOLATION);
}

// This machine's own interfaces: the lists agree about them.
TEST(WindowsIpHelper, TheSystemsOwnTablesAgree) {
  WindowsIpHelper ip;
  const auto addresses = AddressesOf(ip);
  const auto& first = *reinterpret_cast<const IP_ADAPTER_ADDRESSES*>(addresses.data());
  EXPECT_EQ(first.Length, sizeof first);
  ASSERT_NE(first.AdapterName, nullptr);
  EXPECT_EQ(first.AdapterName[0], '{');
  MIB_IF_ROW2 row;
  row.InterfaceLuid = first.Luid;
  ASSERT_EQ(ip.GetIfEntry2(&row), ERROR_SUCCESS);
  EXPECT_EQ(row.InterfaceIndex, first.IfIndex);
  EXPECT_EQ(row.PhysicalAddressLength, first.PhysicalAddressLength);
  const auto interfaces = Sized<MIB_IFTABLE>(
      ERROR_INSUFFICIENT_BUFFER,
      [&](MIB_IFTABLE* table, ULONG* size) { return ip.GetIfTable(table, size, TRUE); });
  EXPECT_GT(reinterpret_cast<const MIB_IFTABLE*>(interfaces.data())->dwNumEntries, 0u);
  ULONG size = 0;
  EXPECT_NE(ip.GetAdaptersInfo(nullptr, &size), ERROR_SUCCESS);
  MIB_IPNET_TABLE2* neighbours = nullptr;
  ASSERT_EQ(ip.GetIpNetTable2(AF_INET, &neighbours), ERROR_SUCCESS);
  ip.FreeMibTable(neighbours);
  GUID unknown{1, 2, 3, {4}};
  ULONGLONG luid = 0;
  EXPECT_NE(ip.ConvertInterfaceGuidToLuid(&unknown, &luid), ERROR_SUCCESS);
  MIB_IF_ROW2 none;
  none.InterfaceLuid = ~ULONGLONG{0};
  EXPECT_NE(ip.GetIfEntry2(&none), ERROR_SUCCESS);
}

}  // namespace corvane::test
