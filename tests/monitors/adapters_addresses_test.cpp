#include "monitors/adapters_addresses.h"

#include <optional>

#include "foundation/exception.h"
#include "monitors/adapter_block.h"
#include "monitors/adapter_list.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

using platform::DWORD;
using platform::ULONG;
using test::AdapterSpec;
using test::Ip4;

constexpr platform::GUID kGuid{0xABCDEF01, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr Ip6Address kIp6{0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

class IpHelper : public platform::IpHelperApi {
 public:
  ULONG GetAdaptersAddresses(ULONG family, ULONG flags, void*, platform::IP_ADAPTER_ADDRESSES* list,
                             ULONG* size) override {
    EXPECT_EQ(family, platform::AF_UNSPEC);
    EXPECT_EQ(flags, 0x90u);
    ++calls;
    sizes.push_back(*size);
    if (fault) throw platform::PlatformFault{0xC0000005};
    if (result != 0) return result;
    const std::size_t needed = test::AdapterBlock().Write(adapters, list, *size);
    if (asks || needed > *size) {
      *size = asks.value_or(static_cast<ULONG>(needed));
      return platform::ERROR_BUFFER_OVERFLOW;
    }
    return 0;
  }
  ULONG GetAdaptersInfo(platform::IP_ADAPTER_INFO* list, ULONG*) override {
    if (info.empty()) return platform::ERROR_NO_DATA;
    for (std::size_t i = 0; i < info.size(); ++i) {
      list[i] = info[i];
      list[i].Next = i + 1 < info.size() ? &list[i + 1] : nullptr;
    }
    return 0;
  }
  DWORD GetIpNetTable2(platform::WORD, platform::MIB_IPNET_TABLE2** table) override {
    if (result != 0) return result;
    ++tables;
    storage.assign(8 + (rows.size() + 1) * sizeof(platform::MIB_IPNET_ROW2), 0);
    *table = reinterpret_cast<platform::MIB_IPNET_TABLE2*>(storage.data());
    (*table)->NumEntries = claimedRows.value_or(static_cast<ULONG>(rows.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) (*table)->Table[i] = rows[i];
    return 0;
  }
  void FreeMibTable(void* table) override {
    EXPECT_EQ(table, storage.data());
    --tables;
    if (faultInFree) throw platform::PlatformFault{0xC0000005};
  }
  bool faultInFree = false;

  template <class Sockaddr>
  void AddNeighbour(const Sockaddr& address, std::initializer_list<platform::BYTE> mac) {
    platform::MIB_IPNET_ROW2& row = rows.emplace_back();
    std::memcpy(static_cast<void*>(&row.Address), &address, sizeof(address));
    std::copy(mac.begin(), mac.end(), row.PhysicalAddress);
    row.PhysicalAddressLength = static_cast<ULONG>(mac.size());
  }
  void AddNeighbour(Ip4Address ip, std::initializer_list<platform::BYTE> mac) {
    platform::SOCKADDR_IN in;
    std::memcpy(in.sin_addr, &ip, sizeof(ip));
    AddNeighbour(in, mac);
  }

  std::vector<AdapterSpec> adapters;
  std::vector<platform::IP_ADAPTER_INFO> info;
  std::vector<platform::MIB_IPNET_ROW2> rows;
  std::vector<std::uint8_t> storage;
  std::vector<ULONG> sizes;
  std::optional<ULONG> asks, claimedRows;
  ULONG result = 0;
  bool fault = false;
  int calls = 0, tables = 0;
};

class AdaptersAddresses : public test::KernelTest {
 protected:
  AdaptersAddresses() : helper(Install<IpHelper>()) {}

  CSmartPointer<CAdaptersAddresses> Snapshot() {
    auto snapshot = CAdaptersAddresses::CreateObject();
    snapshot->Initialize();
    return snapshot;
  }

  IpHelper& helper;
};

TEST_F(AdaptersAddresses, CountsVpnAndWiredAdapters) {
  helper.adapters = {{"{1}", u"TAP-Windows Adapter V9"},
                     {"{2}", u"WAN", 23},
                     {"{3}", u"WAN", 23, 2},
                     {"{4}", u"Realtek"},
                     {"{5}", u"Realtek 2", 6, 2},
                     {"{6}", u"Intel Wi-Fi", 71},
                     {"{7}", u"Hyper-V Virtual Ethernet"}};
  const auto snapshot = Snapshot();
  EXPECT_EQ(snapshot->CountVPNAdapters(), 2u);
  std::uint32_t total = 9, lanUp = 9;
  EXPECT_EQ(snapshot->CountConnectedAdapters(&total, &lanUp), 2u);
  EXPECT_EQ(total, 3u);
  EXPECT_EQ(lanUp, 1u);
  snapshot->Initialize();
  EXPECT_EQ(helper.calls, 1) << "what is filled stays";
}

TEST_F(AdaptersAddresses, AFailureLooksLikeNoAdaptersToTheCounts) {
  helper.adapters = {{"{1}", u"VPN", 23}};
  const auto expectNone = [this](const char* what, int calls) {
    helper.calls = 0;
    const auto snapshot = Snapshot();
    std::uint32_t total = 9, lanUp = 9;
    EXPECT_EQ(snapshot->CountVPNAdapters(), 0u) << what;
    EXPECT_EQ(snapshot->CountConnectedAdapters(&total, &lanUp), 0u) << what;
    EXPECT_EQ(total + lanUp, 0u) << what;
    EXPECT_EQ(helper.calls, calls) << what;
    return snapshot;
  };
  std::vector<Ip4Address> ip4;
  std::vector<Ip6Address> ip6;
  WString suffix;
  helper.result = 5;
  EXPECT_THROW(expectNone("refused", 1)->GetIPAddressesForInterface(kGuid, &ip4, &ip6, &suffix),
               Exception);
  EXPECT_THROW(expectNone("refused", 1)->GetIPGatewaysForInterface(kGuid, &ip4, &ip6), Exception);
  helper.result = 0;
  helper.asks = 40'000;
  expectNone("never satisfied", 3);
  EXPECT_EQ(helper.sizes.back(), 40'000u);
  helper.asks = 0xFFFFFFFF;
  expectNone("asks for the impossible", 1);
  helper.asks = {};
  helper.fault = true;
  expectNone("faults", 1);
  helper.fault = false;
  helper.result = platform::ERROR_NO_DATA;
  EXPECT_EQ(expectNone("empty", 1)->GetIPAddressesForInterface(kGuid, &ip4, &ip6, &suffix), 0u)
      << "an empty list is a list";
}

TEST_F(AdaptersAddresses, GrowsTheBufferToWhatTheListTakes) {
  helper.adapters.assign(60, {"{1}", u"PPP", 23});
  EXPECT_EQ(Snapshot()->CountVPNAdapters(), 60u);
  EXPECT_EQ(helper.calls, 2);
}

TEST_F(AdaptersAddresses, AddressesAndGatewaysOfTheAdapterByItsGuid) {
  AdapterSpec mine{"{abcdef01-0002-0003-0405-060708090A0B}", u"Wi-Fi", 71, 1, 12, u"corp.example"};
  mine.ip4 = {Ip4(10, 0, 0, 2), Ip4(10, 0, 0, 3)};
  mine.ip6 = {kIp6};
  mine.gateways4 = {Ip4(10, 0, 0, 1)};
  mine.gateways6 = {kIp6};
  AdapterSpec other{
      "abcdef01-0002-0003-0405-060708090A0B", u"no braces", 71, 1, 13, u"other.example"};
  other.ip4 = {Ip4(1, 1, 1, 1)};
  helper.adapters = {mine, other};
  const auto snapshot = Snapshot();
  std::vector<Ip4Address> ip4, gateways4;
  std::vector<Ip6Address> ip6, gateways6;
  WString suffix;
  EXPECT_EQ(snapshot->GetIPAddressesForInterface(kGuid, &ip4, &ip6, &suffix), 3u);
  EXPECT_EQ(ip4, mine.ip4);
  EXPECT_EQ(ip6, mine.ip6);
  EXPECT_EQ(suffix, u"corp.example");
  EXPECT_EQ(snapshot->GetIPGatewaysForInterface(kGuid, &gateways4, &gateways6), 2u);
  EXPECT_EQ(gateways4, mine.gateways4);
  EXPECT_EQ(gateways6, mine.gateways6);
  Ip6Address found{};
  EXPECT_TRUE(snapshot->GetIPv6AddressForIndex(12, &found));
  EXPECT_EQ(found, kIp6);
  EXPECT_FALSE(snapshot->GetIPv6AddressForIndex(13, &found)) << "has none";
}

TEST_F(AdaptersAddresses, MasksByIndexAndExactAddress) {
  platform::IP_ADAPTER_INFO one;
  one.Index = 5;
  std::strcpy(one.IpAddressList.IpAddress, "10.0.0.2");
  std::strcpy(one.IpAddressList.IpMask, "255.255.0.0");
  helper.info = {{}, one};
  const auto snapshot = Snapshot();
  std::string mask;
  EXPECT_TRUE(snapshot->GetIP4MaskFromAdaptersInfo(5, "10.0.0.2", &mask));
  EXPECT_EQ(mask, "255.255.0.0");
  EXPECT_FALSE(snapshot->GetIP4MaskFromAdaptersInfo(5, "10.0.0.20", &mask));
  EXPECT_FALSE(snapshot->GetIP4MaskFromAdaptersInfo(6, "10.0.0.2", &mask));
  EXPECT_FALSE(snapshot->GetIP4MaskFromAdaptersInfo(-1, "10.0.0.2", &mask));
}

TEST_F(AdaptersAddresses, MacsComeFromTheFirstUsableNeighbour) {
  const Ip4Address a = Ip4(10, 0, 0, 1), b = Ip4(10, 0, 0, 2), c = Ip4(10, 0, 0, 3),
                   d = Ip4(10, 0, 0, 4);
  helper.AddNeighbour(a, {0, 0, 0, 0, 0, 0});
  helper.AddNeighbour(a, {1, 2, 3, 4, 5});
  helper.AddNeighbour(a, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  helper.AddNeighbour(a, {9, 9, 9, 9, 9, 9});
  helper.AddNeighbour(b, {0, 0, 0, 0, 0, 0});
  helper.AddNeighbour(d, {6, 5, 4, 3, 2, 1});
  platform::SOCKADDR_IN6 in6;
  std::copy(kIp6.begin(), kIp6.end(), in6.sin6_addr);
  helper.AddNeighbour(in6, {0xAA, 0, 0, 0, 0, 1});
  std::vector<MacValue> macs;
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP4({d, c, b, a}, &macs), 2u);
  EXPECT_EQ(macs, (std::vector<MacValue>{0x010203040506, 0x0807060504030201}));
  EXPECT_EQ(MacsFromValues(macs), (MacList{{6, 5, 4, 3, 2, 1}, {1, 2, 3, 4, 5, 6}}));
  macs.clear();
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP6({kIp6, Ip6Address{}}, &macs), 1u);
  EXPECT_EQ(MacsFromValues(macs), (MacList{{0xAA, 0, 0, 0, 0, 1}}));
  helper.faultInFree = true;
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP4({a}, &macs), 1u);
  helper.faultInFree = false;
  helper.claimedRows = 0xFFFFFFFF;
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP4({a}, &macs), 0u);
  helper.result = 1;
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP4({a}, &macs), 0u);
  EXPECT_EQ(CAdaptersAddresses::GetMacForIP6({kIp6}, &macs), 0u);
  EXPECT_EQ(helper.tables, 0) << "every table goes back";
}

TEST_F(AdaptersAddresses, NothingOutsideTheBlockIsRead) {
  AdapterSpec one{"{1}", u"PPP", 23};
  one.ip4 = {Ip4(1, 2, 3, 4)};
  one.ip6 = {kIp6};
  CGenericMalloc block;
  block.Initialize(
      static_cast<std::uint32_t>(test::AdapterBlock().Write({one, one, one}, nullptr, 0)));
  const auto rewrite = [&] {
    test::AdapterBlock().Write({one, one, one}, block.GetData(), block.GetSize());
    return reinterpret_cast<platform::IP_ADAPTER_ADDRESSES*>(block.GetData());
  };
  std::uint8_t* const end = block.GetData() + block.GetSize();

  EXPECT_EQ(rewrite()->Next->Next->Next, nullptr);
  EXPECT_EQ(ReadAdapters(block).size(), 3u);
  auto* first = rewrite();
  first->Next->Next = first;
  EXPECT_EQ(ReadAdapters(block).size(), 2u) << "a chain that bites its tail";
  first = rewrite();
  first->Next = reinterpret_cast<platform::IP_ADAPTER_ADDRESSES*>(end - 447);
  EXPECT_EQ(ReadAdapters(block).size(), 1u) << "a node that ends past the block";
  first = rewrite();
  first->Description = reinterpret_cast<char16_t*>(end - 1);
  first->AdapterName = reinterpret_cast<char*>(16);
  first->FirstUnicastAddress->Address.iSockaddrLength = -1;
  first->FirstUnicastAddress->Next->Address.iSockaddrLength = 27;
  first->FirstUnicastAddress->Next->Next =
      reinterpret_cast<platform::IP_ADAPTER_UNICAST_ADDRESS*>(end);
  first->Next->Next->Description = reinterpret_cast<char16_t*>(end - 4);
  std::memcpy(end - 4, u"ab", 4);
  auto records = ReadAdapters(block);
  ASSERT_EQ(records.size(), 3u);
  EXPECT_EQ(records[0].description, u"");
  EXPECT_EQ(records[0].name, "");
  EXPECT_TRUE(records[0].addresses.ip4.empty());
  EXPECT_TRUE(records[0].addresses.ip6.empty());
  EXPECT_EQ(records[1].addresses.ip4, one.ip4);
  EXPECT_EQ(records[2].description, u"ab") << "a text without its NUL ends with the block";

  block.Initialize(447);
  EXPECT_TRUE(ReadAdapters(block).empty());
  EXPECT_TRUE(ReadAdapterInfo(block).empty());
}

TEST(IpAddressText, IsThatOfTheStandard) {
  EXPECT_EQ(Ip4Text(Ip4(192, 168, 0, 255)), u"192.168.0.255");
  const std::pair<Ip6Address, WStringView> cases[] = {
      {{}, u"::"},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}, u"::1"},
      {{0x20, 0x01, 0x0D, 0xB8}, u"2001:db8::"},
      {kIp6, u"fe80::1"},
      {{0, 1, 0, 0, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7}, u"1:0:2:3:4:5:6:7"},
      {{0, 1, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 6, 0, 7}, u"1::3:0:0:6:7"},
      {{0, 1, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 7}, u"1:0:0:3::7"},
  };
  for (const auto& [address, text] : cases) EXPECT_EQ(Narrow(Ip6Text(address)), Narrow(text));
}

}  // namespace
}  // namespace corvane
