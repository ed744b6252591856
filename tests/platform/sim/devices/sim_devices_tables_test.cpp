// Network list, counters, address tables and power, as the world makes them.

#include <string>

#include "device_story.h"
#include "platform/ip_types.h"
#include "platform/sim/devices/sim_link_rate.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_registry.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/window_api.h"

namespace corvane::test {

namespace {

constexpr Mac kOne{2, 0, 0, 0, 1, 1};

IpAddress V4(BYTE a, BYTE b, BYTE c, BYTE d) {
  IpAddress address;
  address.bytes = {a, b, c, d};
  return address;
}

IpAddress V6(BYTE last) {
  IpAddress address;
  address.family = IpAddress::kV6;
  address.bytes[0] = 0xFE;
  address.bytes[1] = 0x80;
  address.bytes[15] = last;
  address.prefix = 64;
  return address;
}

// Wi-Fi connected to "Office", a wired LAN on its own network, a VPN that is down.
World OfficeWithLan() {
  World world = TwoNetworks();
  world.adapters[0].connectedTo = kOne;
  platform::sim::Network office;
  office.name = u"Office 2";
  office.description = u"Office";
  office.ssid = "Office";
  office.category = 1;
  office.ip.unicast = {V4(192, 168, 5, 20), V6(20)};
  office.ip.gateways = {V4(192, 168, 5, 1), V6(1)};
  office.ip.dnsSuffix = u"corp.example";
  office.neighbours = {{V4(192, 168, 5, 1), {2, 9, 9, 9, 9, 1}}, {V6(1), {2, 9, 9, 9, 9, 1}}};
  platform::sim::Network wired;
  wired.name = u"Wired";
  platform::sim::Network nameless;
  nameless.nullName = true;
  world.networks = {office, wired, nameless};
  OtherAdapter lan;
  lan.guid = {0xB2, 0, 0, {}};
  lan.friendlyName = u"Ethernet";
  lan.description = u"Gigabit";
  lan.network = 1;
  OtherAdapter tunnel = lan;
  tunnel.guid = {0xC3, 0, 0, {}};
  tunnel.friendlyName = u"Tunnel";
  tunnel.ifType = IF_TYPE_TUNNEL;
  tunnel.network = -1;
  world.otherAdapters = {lan, tunnel};
  return world;
}

class SimTablesTest : public DeviceTest {
 protected:
  void Do(const char* action) { Pc().Devices().Do(action); }

  // "name category connectivity" of each network of the list.
  std::string Networks() {
    std::string text;
    IEnumNetworks* networks = nullptr;
    if (m_pManager->GetNetworks(NLM_ENUM_NETWORK_ALL, &networks) != S_OK) return "failed";
    INetwork* network = nullptr;
    ULONG fetched = 0;
    while (networks->Next(1, &network, &fetched) == S_OK) {
      std::u16string name;
      LONG category = -1;
      DWORD connectivity = 0;
      const HRESULT named = network->GetName(&name);
      EXPECT_EQ(network->GetCategory(&category), S_OK);
      EXPECT_EQ(network->GetConnectivity(&connectivity), S_OK);
      bool internet = false;
      EXPECT_EQ(network->get_IsConnectedToInternet(&internet), S_OK);
      EXPECT_EQ(internet, (connectivity & 0x440) != 0);
      text += (text.empty() ? "" : ", ") +
              (named == S_OK ? std::string(name.begin(), name.end()) : "null") + " " +
              std::to_string(category) + " " + std::to_string(connectivity);
      network->Release();
    }
    EXPECT_EQ(fetched, 0u);
    networks->Release();
    return text;
  }
  // First parts of the GUIDs of the adapters that are on a network.
  std::string Connections() {
    std::string text;
    IEnumNetworkConnections* connections = nullptr;
    EXPECT_EQ(m_pManager->GetNetworkConnections(&connections), S_OK);
    INetworkConnection* connection = nullptr;
    ULONG fetched = 0;
    while (connections->Next(1, &connection, &fetched) == S_OK) {
      GUID adapter;
      EXPECT_EQ(connection->GetAdapterId(&adapter), S_OK);
      text += std::to_string(adapter.Data1) + " ";
      connection->Release();
    }
    connections->Release();
    return text;
  }

  INetworkListManager* m_pManager = nullptr;
};

}  // namespace

TEST_F(SimTablesTest, TheNetworkListFollowsLinksAndTimeline) {
  Start(OfficeWithLan());
  NetworkListApi& list = Os().networkList;
  EXPECT_EQ(list.CoCreateNetworkListManager(&m_pManager), CO_E_NOTINITIALIZED);
  ASSERT_EQ(list.CoInitializeEx(0), S_OK);
  ASSERT_EQ(list.CoCreateNetworkListManager(&m_pManager), S_OK);
  EXPECT_EQ(Networks(), "Office 2 1 64, Wired 0 0, null 0 0");
  EXPECT_EQ(Connections(), "161 ");
  Do(R"({"do": "interface", "interface": "Ethernet", "on": true})");
  Do(R"({"do": "network", "network": "Office 2", "internet": false, "category": "domain"})");
  EXPECT_EQ(Networks(), "Office 2 2 32, Wired 0 64, null 0 0");
  EXPECT_EQ(Connections(), "161 178 ");
  Do(R"({"do": "disconnect", "adapter": 0})");
  RunFor(1s);
  EXPECT_EQ(Networks(), "Office 2 2 0, Wired 0 64, null 0 0");
  // An SSID that the system meets for the first time becomes a network of its own.
  Do(R"({"do": "connect", "adapter": 0, "ssid": "Attic"})");
  RunFor(4s);
  EXPECT_EQ(Networks(), "Office 2 2 0, Wired 0 64, null 0 0, Attic 0 64");
  Do(R"({"do": "networkList", "on": false})");
  EXPECT_EQ(Networks(), "failed");
  m_pManager->Release();
}

TEST_F(SimTablesTest, AddressesAreThoseOfTheNetworkThatTheAdapterIsOn) {
  Start(OfficeWithLan());
  ULONG size = 100;
  std::vector<std::uint64_t> buffer(13);
  const auto list = [&] { return reinterpret_cast<IP_ADAPTER_ADDRESSES*>(buffer.data()); };
  constexpr ULONG kFlags = GAA_FLAG_INCLUDE_PREFIX | GAA_FLAG_INCLUDE_GATEWAYS;
  IpHelperApi& ip = Os().ipHelper;
  ASSERT_EQ(ip.GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, list(), &size),
            ERROR_BUFFER_OVERFLOW);
  buffer.resize(size / 8 + 1);
  ULONG tooSmall = size - 1;
  EXPECT_EQ(ip.GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, list(), &tooSmall),
            ERROR_BUFFER_OVERFLOW);
  ASSERT_EQ(ip.GetAdaptersAddresses(AF_UNSPEC, kFlags, nullptr, list(), &size), ERROR_SUCCESS);
  const IP_ADAPTER_ADDRESSES& wifi = *list();
  EXPECT_STREQ(wifi.AdapterName, "{000000A1-0000-0000-0102-030405060708}");
  EXPECT_EQ(std::u16string(wifi.DnsSuffix), u"corp.example");
  EXPECT_EQ(wifi.IfType, IF_TYPE_IEEE80211);
  EXPECT_EQ(wifi.OperStatus, IfOperStatusUp);
  ASSERT_NE(wifi.FirstUnicastAddress, nullptr);
  const auto* four = static_cast<SOCKADDR_IN*>(wifi.FirstUnicastAddress->Address.lpSockaddr);
  EXPECT_EQ(four->sin_family, AF_INET);
  EXPECT_EQ(four->sin_addr[3], 20);
  ASSERT_NE(wifi.FirstUnicastAddress->Next, nullptr);
  const auto* six = static_cast<SOCKADDR_IN6*>(wifi.FirstUnicastAddress->Next->Address.lpSockaddr);
  EXPECT_EQ(six->sin6_family, AF_INET6);
  EXPECT_EQ(six->sin6_addr[15], 20);
  EXPECT_EQ(wifi.FirstUnicastAddress->Next->Next, nullptr);
  ASSERT_NE(wifi.FirstGatewayAddress, nullptr);
  ASSERT_NE(wifi.Next, nullptr);
  EXPECT_EQ(wifi.Next->OperStatus, IfOperStatusDown);
  EXPECT_EQ(wifi.Next->FirstUnicastAddress, nullptr);
  ASSERT_NE(wifi.Next->Next, nullptr);
  EXPECT_EQ(wifi.Next->Next->Next, nullptr);

  IP_ADAPTER_INFO infos[2];
  size = sizeof infos;
  ASSERT_EQ(ip.GetAdaptersInfo(infos, &size), ERROR_SUCCESS) << "the tunnel is none of them";
  EXPECT_EQ(infos[0].Next, &infos[1]);
  EXPECT_STREQ(infos[0].IpAddressList.IpAddress, "192.168.5.20");
  EXPECT_STREQ(infos[0].IpAddressList.IpMask, "255.255.255.0");
  EXPECT_STREQ(infos[1].IpAddressList.IpAddress, "0.0.0.0");
}

TEST_F(SimTablesTest, NeighboursStandThereWhileSomebodyIsOnTheNetwork) {
  Start(OfficeWithLan());
  const auto count = [](WORD family) {
    MIB_IPNET_TABLE2* table = nullptr;
    EXPECT_EQ(Os().ipHelper.GetIpNetTable2(family, &table), ERROR_SUCCESS);
    const ULONG rows = table->NumEntries;
    if (rows > 0) {
      EXPECT_EQ(table->Table[0].PhysicalAddress[5], 1);
    }
    Os().ipHelper.FreeMibTable(table);
    return rows;
  };
  EXPECT_EQ(count(AF_INET), 1u);
  EXPECT_EQ(count(AF_INET6), 1u);
  Do(R"({"do": "disconnect", "adapter": 0})");
  RunFor(1s);
  EXPECT_EQ(count(AF_INET), 0u);
}

TEST_F(SimTablesTest, TheInterfaceTableNamesEachAdapter) {
  Start(OfficeWithLan());
  ULONG size = sizeof(MIB_IFTABLE);
  MIB_IFTABLE small;
  ASSERT_EQ(Os().ipHelper.GetIfTable(&small, &size, FALSE), ERROR_INSUFFICIENT_BUFFER);
  std::vector<std::uint64_t> buffer(size / 8 + 1);
  auto* table = reinterpret_cast<MIB_IFTABLE*>(buffer.data());
  ASSERT_EQ(Os().ipHelper.GetIfTable(table, &size, FALSE), ERROR_SUCCESS);
  ASSERT_EQ(table->dwNumEntries, 3u);
  const MIB_IFROW& row = table->table[0];
  EXPECT_EQ(std::u16string(row.wszName), u"\\DEVICE\\TCPIP_{000000A1-0000-0000-0102-030405060708}");
  EXPECT_STREQ(reinterpret_cast<const char*>(row.bDescr), "Simulated Wireless (2) #3");
  EXPECT_EQ(row.dwDescrLen, 26u);
  EXPECT_EQ(row.bPhysAddr[5], 1);
  EXPECT_NE(row.dwIndex, table->table[1].dwIndex);
}

TEST_F(SimTablesTest, CountersMeasureTheTrafficBetweenTwoCollections) {
  World world = OfficeWithLan();
  world.traffic = {{.adapter = 0,
                    .span = {10'000, 20'000},
                    .inMbps = 8.0,
                    .outMbps = 1.0,
                    .inErrorsPerSec = 2.0,
                    .outErrorsPerSec = 0.0}};
  Start(world);
  PerfCounterApi& pdh = Os().perfCounters;
  PDH_HQUERY query = nullptr;
  PDH_HCOUNTER in = nullptr, out = nullptr, errors = nullptr, none = nullptr;
  ASSERT_EQ(pdh.PdhOpenQueryW(nullptr, 0, &query), 0);
  const std::u16string head = u"\\Network Adapter(Simulated Wireless [2] _3)\\";
  ASSERT_EQ(pdh.PdhAddCounterW(query, (head + u"Bytes Received/sec").c_str(), 0, &in), 0);
  ASSERT_EQ(pdh.PdhAddCounterW(query, (head + u"Bytes Sent/sec").c_str(), 0, &out), 0);
  ASSERT_EQ(pdh.PdhAddCounterW(query, (head + u"Packets Received Errors").c_str(), 0, &errors), 0);
  EXPECT_NE(pdh.PdhAddCounterW(query, (head + u"Luck").c_str(), 0, &none), 0);
  const auto value = [&](PDH_HCOUNTER counter) {
    PDH_FMT_COUNTERVALUE formatted;
    const PDH_STATUS status = pdh.PdhGetFormattedCounterValue(
        counter, PDH_FMT_DOUBLE | PDH_FMT_NOSCALE, nullptr, &formatted);
    return status == 0 ? formatted.doubleValue : -1.0;
  };
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_EQ(value(in), -1.0) << "a rate needs two collections";
  RunFor(10s);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_EQ(value(in), 0.0);
  RunFor(5s);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_NEAR(value(in), 1'000'000.0, 0.5);
  EXPECT_NEAR(value(out), 125'000.0, 0.5);
  EXPECT_NEAR(value(errors), 10.0, 0.001);
  RunFor(10s);  // half of it with traffic
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_NEAR(value(in), 500'000.0, 0.5);
  Do(R"({"do": "traffic", "adapter": 0, "inMbps": 8})");
  Do(R"({"do": "disconnect", "adapter": 0})");
  RunFor(5s);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  RunFor(5s);
  ASSERT_EQ(pdh.PdhCollectQueryData(query), 0);
  EXPECT_EQ(value(in), 0.0) << "nothing is carried without a link";
  EXPECT_EQ(pdh.PdhCloseQuery(query), 0);
  EXPECT_NE(pdh.PdhCloseQuery(query), 0);
}

// The thread of a window notes what it hears; it ends when the window does.
class Listening {
 public:
  static inline std::string heard;
  static inline HWND window = nullptr;
  static inline HANDLE registration = nullptr;

  static DWORD Run(void*) {
    WindowApi& os = Os().windows;
    os.RegisterClassExW(u"Test", &Procedure, nullptr);
    window = os.CreateWindowExW(0, u"Test", u"", WS_POPUP, nullptr);
    registration = os.RegisterSuspendResumeNotification(window, DEVICE_NOTIFY_WINDOW_HANDLE);
    MSG message;
    while (os.GetMessageW(&message) > 0) os.DispatchMessageW(&message);
    heard += "end ";
    return 0;
  }

 private:
  static LRESULT Procedure(HWND target, unsigned message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND) return static_cast<LRESULT>(wParam) + lParam;
    if (message == WM_POWERBROADCAST) heard += std::to_string(wParam) + " ";
    if (message == WM_WTSSESSION_CHANGE) heard += "session ";
    if (message == WM_DESTROY) Os().windows.PostQuitMessage(0);
    return Os().windows.DefWindowProcW(target, message, wParam, lParam);
  }
};

TEST_F(SimTablesTest, AWindowHearsOfPowerWhileItIsRegistered) {
  World world = OfficeWithLan();
  world.adapters[0].autoConnect = true;
  Start(world);
  Listening::heard.clear();
  const HANDLE thread = Os().threads.CreateThread(&Listening::Run, nullptr, "listening", nullptr);
  RunFor(1s);
  Do(R"({"do": "power", "mains": false, "batteryPercent": 20})");
  SYSTEM_POWER_STATUS status;
  ASSERT_EQ(Os().power.GetSystemPowerStatus(&status), TRUE);
  EXPECT_EQ(status.ACLineStatus, 0);
  EXPECT_EQ(status.BatteryLifePercent, 20);
  Do(R"({"do": "suspend"})");
  Do(R"({"do": "session", "loggedOn": false})");
  RunFor(1s);
  EXPECT_EQ(ConnectedBssid(), "error 5023");
  EXPECT_NE(Scan(), ERROR_SUCCESS);
  Do(R"({"do": "resume"})");
  RunFor(15s);
  EXPECT_EQ(Listening::heard, "10 4 18 7 ") << "it has not asked for sessions";
  EXPECT_EQ(ConnectedBssid(), kApOne) << "the system has connected it again";

  WindowApi& os = Os().windows;
  EXPECT_EQ(os.SendMessageW(Listening::window, WM_COMMAND, 40, 2), 42);
  ASSERT_EQ(os.UnregisterSuspendResumeNotification(Listening::registration), TRUE);
  EXPECT_EQ(os.UnregisterSuspendResumeNotification(Listening::registration), FALSE);
  Do(R"({"do": "suspend"})");
  EXPECT_EQ(os.PostMessageA(Listening::window, WM_CLOSE, 0, 0), TRUE);
  RunFor(1s);
  EXPECT_EQ(Listening::heard, "10 4 18 7 end ");
  EXPECT_EQ(os.PostMessageA(Listening::window, WM_CLOSE, 0, 0), FALSE);
  EXPECT_EQ(os.SendMessageW(Listening::window, WM_COMMAND, 40, 2), 0);
  EXPECT_EQ(os.CreateWindowExW(0, u"Unknown", u"", WS_POPUP, nullptr), nullptr);
  Os().threads.CloseHandle(thread);
}

TEST_F(SimTablesTest, BluetoothRadiosAreCountedByLinkAndDirection) {
  World world = OfficeWithLan();
  world.bluetooth = {{u"Radio (R) 5", true, {{{5'000, 10'000}, BluetoothLink::kSco, 64.0, 8.0}}},
                     {u"Dongle", false, {{{}, BluetoothLink::kClassic, 800.0, 0.0}}}};
  Start(world);
  const std::u16string key =
      u"SYSTEM\\CurrentControlSet\\Control\\Class\\{e0cbf06c-cd8b-4647-bb8a-263b43f0f974}\\";
  EXPECT_EQ(Pc().Registry().GetText(key + u"0000", u"DriverDesc"), u"Radio (R) 5");
  EXPECT_EQ(Pc().Registry().GetText(key + u"0001", u"DriverDesc"), u"Bluetooth Device");
  PerfCounterApi& pdh = Os().perfCounters;
  PDH_HQUERY query = nullptr;
  ASSERT_EQ(pdh.PdhOpenQueryW(nullptr, 0, &query), 0);
  const auto add = [&](const char16_t* path) {
    PDH_HCOUNTER counter = nullptr;
    EXPECT_EQ(pdh.PdhAddCounterW(query, path, 0, &counter), 0);
    return counter;
  };
  const PDH_HCOUNTER counters[] = {add(u"\\Bluetooth Radio(Radio (R) 5)\\SCO bytes read/sec"),
                                   add(u"\\Bluetooth Radio(Radio (R) 5)\\SCO bytes written/sec"),
                                   add(u"\\Bluetooth Radio(Radio (R) 5)\\LE ACL bytes read/sec"),
                                   add(u"\\Bluetooth Radio(Dongle)\\Classic ACL bytes read/sec")};
  PDH_HCOUNTER none = nullptr;
  EXPECT_NE(pdh.PdhAddCounterW(query, u"\\Bluetooth Radio(Dongle)\\Luck", 0, &none), 0);
  const auto rates = [&] {
    std::vector<double> values;
    EXPECT_EQ(pdh.PdhCollectQueryData(query), 0);
    for (const PDH_HCOUNTER counter : counters) {
      PDH_FMT_COUNTERVALUE formatted;
      const bool read =
          pdh.PdhGetFormattedCounterValue(counter, PDH_FMT_DOUBLE, nullptr, &formatted) == 0;
      values.push_back(read ? formatted.doubleValue : -1.0);
    }
    return values;
  };
  using Rates = std::vector<double>;
  EXPECT_EQ(rates(), (Rates{-1, -1, -1, -1})) << "a rate needs two collections";
  RunFor(5s);
  EXPECT_EQ(rates(), (Rates{0, 0, 0, -1})) << "a radio that is off has no counters";
  RunFor(10s);
  EXPECT_EQ(rates(), (Rates{4'000, 500, 0, -1}));
  Do(R"({"do": "bluetooth", "radio": "Dongle", "on": true})");
  Do(R"({"do": "bluetoothTraffic", "radio": "Radio (R) 5", "for": "1s", "link": "le", "readKbps": 80
})");
  EXPECT_EQ(Pc().Registry().GetText(key + u"0001", u"DriverDesc"), u"Dongle");
  rates();
  RunFor(10s);
  EXPECT_EQ(rates(), (Rates{0, 0, 1'000, 100'000}));
  EXPECT_EQ(pdh.PdhCloseQuery(query), 0);
}

TEST_F(SimTablesTest, TheTimelineWritesTheRegistry) {
  World world = OfficeWithLan();
  RegistryWrite before;
  before.key = kHomeKey;
  before.name = u"Before";
  before.number = 7;
  world.registry = {before};
  world.adapters[0].connectionName = u"Wi-Fi 2";
  Start(world);
  EXPECT_EQ(Pc().Registry().GetDword(kHomeKey, u"Before"), 7u);
  EXPECT_EQ(Pc().Registry().GetText(u"SYSTEM\\CurrentControlSet\\Control\\Network\\"
                                    u"{4D36E972-E325-11CE-BFC1-08002BE10318}\\"
                                    u"{000000A1-0000-0000-0102-030405060708}\\Connection",
                                    u"Name"),
            u"Wi-Fi 2");
  Do(R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 0})");
  EXPECT_EQ(Pc().Registry().GetDword(
                std::u16string(kHomeKey) + u"\\{000000A1-0000-0000-0102-030405060708}",
                u"PassiveSuggestMode"),
            0u);
}

TEST_F(SimTablesTest, TheSessionFollowsTheWorld) {
  World world = OfficeWithLan();
  world.session.sessionId = 3;
  world.session.processes = {u"NudgeDialog.exe"};
  Start(world);
  EXPECT_EQ(Os().session.WTSGetActiveConsoleSessionId(), 3u);
  EXPECT_EQ(Pc().Kernel().Session().CountRunning(u"NudgeDialog.exe"), 1u);
  Do(R"({"do": "process", "name": "nudgedialog.exe", "on": false})");
  EXPECT_EQ(Pc().Kernel().Session().CountRunning(u"NudgeDialog.exe"), 0u);
}

TEST_F(SimTablesTest, ALinkHasTheStreamsOfItsAdapter) {
  World world = TwoNetworks();
  world.adapters[0].connectedTo = Mac{2, 0, 0, 0, 1, 1};
  world.adapters[0].streams = 1;
  Start(world);
  WLAN_CONNECTION_ATTRIBUTES attributes;
  ASSERT_EQ(Query(wlan_intf_opcode_current_connection, &attributes), ERROR_SUCCESS);
  EXPECT_EQ(attributes.wlanAssociationAttributes.ulTxRate, 433'333u) << "the other side has two";
}

TEST(SimLinkRate, GrowsWithWidthAndFallsWithTheSignal) {
  const auto vht80 = Beacon(u8"x").Channel(36).Vht80(2).Bytes();
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_vht, vht80, -40), 866'666u);
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_ht, vht80, -40), 300'000u) << "HT uses 40 MHz at most";
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_ofdm, vht80, -40), 54'000u);
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_vht, vht80, -84), 65'000u);
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_vht, vht80, -40, 1), 433'333u) << "the adapter has one";
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_vht, vht80, -40, 4), 866'666u) << "the other side has two";
  const auto wide = Beacon(u8"x").Channel6GHz(37).He160(2).Bytes();
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_he, wide, -30), 2'401'960u);
  const auto narrow = Beacon(u8"x").Channel6GHz(37).He20(2).Bytes();
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_he, narrow, -30), 286'764u) << "6 GHz is not always wide";
  EXPECT_EQ(LinkRateKbps(dot11_phy_type_he, Beacon(u8"x").Channel(36).He80(2).Bytes(), -40),
            1'200'980u);
  EXPECT_EQ(CommonPhy({dot11_phy_type_ofdm, dot11_phy_type_ht}, dot11_phy_type_he),
            dot11_phy_type_ht);
}

}  // namespace corvane::test
