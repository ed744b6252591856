// Passes over the machine's adapters: slots, addresses, gateways, counts and what is told.

#include "engine/pass_fixture.h"

namespace corvane::engine_test {
namespace {

// The table's bytes, as somebody reads them who knows the offsets alone.
class EngineDumpTest : public EnginePassTest {
 protected:
  void SetUp() override {
    Adapters() = {Wired(5)};
    Adapters()[0].addresses = {"192.168.1.5/24", "192.168.1.6/16", "fe80::1234:1",
                               "2001:db8::1",    "2001:db8::2",    "fd00::3"};
    Adapters()[0].gateways = {"192.168.1.1", "fe80::1"};
    machine->networkList.connections = {{0, 0x140, 0, true}};
    machine->driver.acknowledges = false;
    Router("192.168.1.1", 0x44);
    Pass();
    std::memcpy(dump.data(), state->Table(), dump.size());
  }
  int at8(std::size_t at) const { return dump[at]; }
  int at16(std::size_t at) const { return dump[at] | dump[at + 1] << 8; }
  std::uint32_t at32(std::size_t at) const {
    return static_cast<std::uint32_t>(at16(at)) | static_cast<std::uint32_t>(at16(at + 2)) << 16;
  }
  Bytes bytes(std::size_t at, std::size_t count) const {
    const auto from = dump.begin() + static_cast<std::ptrdiff_t>(at);
    return Bytes(from, from + static_cast<std::ptrdiff_t>(count));
  }

  Bytes dump = Bytes(112704);
};

TEST_F(EngineDumpTest, HoldsHeadAndSlot) {
  EXPECT_EQ(at32(0), 0x0A050203u);
  EXPECT_EQ(at32(4), 1u);
  EXPECT_EQ(at32(8), 0u);
  EXPECT_EQ(at32(12), 1u);
  EXPECT_EQ(at32(16), 9u);  // public, Internet
  EXPECT_EQ(at32(20), 0u);
  EXPECT_EQ(bytes(28, 8), (Bytes{0, 1, 0, 0, 0, 1, 0x40, 0x10}));
  EXPECT_EQ(at32(36), 0x4001u);
  EXPECT_EQ(at32(40), 1u);
  EXPECT_EQ(at32(76), 0x4001u);
  EXPECT_EQ(at16(88), 1500);
  EXPECT_EQ(at16(90), 2);
  EXPECT_EQ(at16(92), 6);
  EXPECT_EQ(bytes(94, 8), (Bytes{2, 0, 0, 0, 0, 5, 0, 0}));
  EXPECT_EQ(bytes(102, 8), (Bytes{2, 0, 0, 0, 0, 5, 0, 0}));
  EXPECT_EQ(at32(112), 1000u);
  EXPECT_EQ(at32(116), 1000u);
  EXPECT_EQ(bytes(120, 8), (Bytes{'R', 0, 'e', 0, 'a', 0, 'l', 0}));
  EXPECT_EQ(bytes(396, 16),
            (Bytes{192, 168, 1, 5, 255, 255, 255, 0, 192, 168, 1, 6, 255, 255, 0, 0}));
  EXPECT_EQ(at32(412), 0u);
  EXPECT_EQ(bytes(420, 4), (Bytes{0x20, 0x01, 0x0D, 0xB8}));
  EXPECT_EQ(at8(435), 1);
  EXPECT_EQ(at8(451), 2);  // the further ones
  EXPECT_EQ(at8(452), 0xFD);
  EXPECT_EQ(at8(756), 0xFE);
  EXPECT_EQ(at8(772), 0xFD);
  EXPECT_EQ(at32(788), 2u);
  EXPECT_EQ(at32(792), 2u);
  EXPECT_EQ(at32(796), 0u);
  EXPECT_EQ(bytes(800, 32), Bytes(32));
}

TEST_F(EngineDumpTest, HoldsFreeSlotsGatewaysAndFlows) {
  for (std::size_t slot = 1; slot < 16; ++slot) {
    EXPECT_EQ(bytes(slot * 832, 28), Bytes(28));
    EXPECT_EQ(bytes(slot * 832 + 28, 3), (Bytes{255, 2, 255})) << slot;
  }
  const std::size_t gateway = 13328;
  EXPECT_EQ(at16(gateway), 2);
  EXPECT_EQ(at16(gateway + 2), 1);
  EXPECT_EQ(bytes(gateway + 4, 8), (Bytes{0xA, 0, 0, 0, 0, 0x44, 0, 0}));
  EXPECT_EQ(bytes(gateway + 12, 8), (Bytes{192, 168, 1, 1, 0, 0, 0, 0}));
  EXPECT_EQ(at8(gateway + 20), 0xFE);
  EXPECT_EQ(at8(gateway + 35), 1);
  EXPECT_EQ(at32(gateway + 52), 187500000u);
  EXPECT_EQ(at32(gateway + 56), 187500000u);
  for (std::size_t group = 0; group < 6; ++group) {
    EXPECT_EQ(bytes(gateway + 60 + group * 4, 4), (Bytes{100, 100, 0, 0}));
  }
  EXPECT_EQ(at32(gateway + 84), 1u);
  EXPECT_EQ(at32(gateway + 88), 1u);
  EXPECT_EQ(at16(gateway + 92), 1);
  for (const std::size_t flow : {14064ul, 14064ul + 2047 * 48}) {
    EXPECT_EQ(bytes(flow, 38), Bytes(38));
    EXPECT_EQ(bytes(flow + 38, 6), (Bytes{0xFF, 0xFF, 100, 100, 4, 0}));
  }
  EXPECT_EQ(bytes(112368, 336), Bytes(336));
}

TEST_F(EnginePassTest, TakesTheCatchAllByItsSetting) {
  Build();
  EXPECT_EQ(Gateway(7).state, 2);
  EXPECT_EQ(Bytes(Gateway(7).address, Gateway(7).address + 8),
            (Bytes{0xDE, 0xAD, 0xBE, 0xEF, 0xBA, 0xD0, 0, 0}));
  EXPECT_EQ(Gateway(7).ip4[0], 0x0100000Au);
  EXPECT_EQ(Gateway(7).ip4Count, 1u);
  EXPECT_EQ(Gateway(7).ip6Count, 0u);
  machine->registry.Set(kEngineSettings, u"SupportOemDevice", 2);
  machine->registry.Set(kEngineSettings, u"DeviceDiscoveryTO", 500);
  machine->registry.Set(kEngineSettings, u"Enable11AD", u"no number");
  Build();
  EXPECT_EQ(Gateway(7).state, 1);
  EXPECT_EQ(state->Settings().discoveryIntervalMs, 500u);
  EXPECT_TRUE(state->Settings().Has11ad());
}

TEST_F(EnginePassTest, TellsEachThingOnce) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5)};
  machine->networkList.connections = {{0, 0x40, 1, true}, {1, 0x40, 0, false}};
  EXPECT_EQ(Pass(), "all:1:0");  // the first report
  EXPECT_EQ(Pass(), "");
  Adapters().push_back(Wired(6));
  EXPECT_EQ(Pass(), "1:2:257 all:4:0");  // a new one without Internet, public
  EXPECT_EQ(Slot(1).attention, 256u);
  EXPECT_EQ(Pass(), "");
  machine->networkList.connections[1].internet = true;
  EXPECT_EQ(Pass(), "1:1:256");
  EXPECT_EQ(Slot(1).attention, 0u);
  Adapters()[1].bitsPerSecond = 100'000'000;
  EXPECT_EQ(Pass(), "1:1:8");
  EXPECT_EQ(Slot(1).transmitMbps, 100u);
  EXPECT_EQ(Pass(), "");
}

TEST_F(EnginePassTest, TellsUntilTheDriverAnswers) {
  machine->driver.acknowledges = false;
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5), Wired(6)};
  Adapters()[1].up = false;
  Pass();
  EXPECT_EQ(Pass(), "0:1:1 1:1:2");
  EXPECT_EQ(Pass(), "0:1:1 1:1:2");
  machine->driver.Acknowledge();
  EXPECT_EQ(Pass(), "");
}

TEST_F(EnginePassTest, ACableIsPulledAndPutBack) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5)};
  machine->networkList.connections = {{0, 0x40, 1, true}};
  Settle();
  EXPECT_EQ(Slot(0).gateway, 0);
  Adapters()[0].up = false;
  EXPECT_EQ(Pass(), "0:1:2");
  EXPECT_EQ(Slot(0).state, slot_state::kDown);
  EXPECT_EQ(Slot(0).runBits, 2u);
  EXPECT_EQ(Slot(0).gateway, kNoIndex);
  EXPECT_EQ(Slot(0).ip4 + Slot(0).ip4Count + Slot(0).networkFlags + Slot(0).transmitMbps, 0u);
  EXPECT_EQ(Slot(0).upWord, 0);
  EXPECT_EQ(Gateway(0).state, 1);
  EXPECT_EQ(Counts(), "0/0/0");
  EXPECT_EQ(Pass(), "");
  Adapters()[0].up = true;
  EXPECT_EQ(Pass(), "0:2:257");  // new again, with its network
  EXPECT_EQ(Slot(0).state, slot_state::kUp);
  EXPECT_EQ(Slot(0).runBits, 1u);
  EXPECT_EQ(Slot(0).gateway, 0);
  EXPECT_EQ(Counts(), "1/0/1");
}

TEST_F(EnginePassTest, AdaptersBehindOneRouterShareItsSlot) {
  Router("192.168.1.1", 1);
  Router("192.168.7.1", 2);
  Adapters() = {Wired(5), Wired(6), Wired(7)};
  Adapters()[2].gateways = {"192.168.7.1"};
  Settle();
  EXPECT_EQ(Gateway(0).adapters, 2);
  EXPECT_EQ(Gateway(1).adapters, 1);
  EXPECT_EQ(Slot(0).gateway, Slot(1).gateway);
  EXPECT_EQ(Counts(), "3/0/3");
  Adapters()[2].gateways = {"192.168.1.1"};
  EXPECT_EQ(Pass(), "2:2:5 all:4:0");  // it moves while the driver uses it, and so begins anew
  EXPECT_EQ(Gateway(0).adapters, 3);
  EXPECT_EQ(Gateway(1).state, 1);
}

TEST_F(EnginePassTest, RoutersOfOneAddressAreToldApartByTheInterface) {
  machine->ipHelper.neighbours = {{"192.168.1.1", {0xA, 0, 0, 0, 0, 1}, 5},
                                  {"192.168.1.1", {0xA, 0, 0, 0, 0, 2}, 6}};
  Adapters() = {Wired(5), Wired(6)};
  Pass();
  EXPECT_NE(Slot(0).gateway, Slot(1).gateway);
}

TEST_F(EnginePassTest, AThirdAddressOfAGatewayReplacesTheSecond) {
  for (const char* address : {"192.168.1.1", "192.168.1.2", "192.168.1.3"}) Router(address, 1);
  Adapters() = {Wired(5), Wired(6), Wired(7)};
  Adapters()[1].gateways = {"192.168.1.2"};
  Adapters()[2].gateways = {"192.168.1.2", "192.168.1.3"};  // the last counts
  Pass();
  EXPECT_EQ(Gateway(0).ip4[1], Ip4Word("192.168.1.3"));
  EXPECT_EQ(Gateway(0).ip4Count, 2u);
  EXPECT_EQ(Slot(1).gatewayIp4, 1);
  EXPECT_EQ(Slot(2).gatewayIp4, 1);
}

TEST_F(EnginePassTest, AnUnknownGatewayFallsOnTheCatchAllOrNowhere) {
  Adapters() = {Wired(5)};
  Settle();
  EXPECT_EQ(Slot(0).gateway, 7);
  EXPECT_EQ(Slot(0).gatewayIp4, kNoIndex);
  EXPECT_EQ(Gateway(7).adapters, 1);
  Router("192.168.1.1", 1);
  EXPECT_EQ(Pass(), "0:2:5 all:4:0");
  EXPECT_EQ(Slot(0).gateway, 0);
  EXPECT_EQ(Gateway(7).state, 1);
  Adapters()[0].gateways = {"192.168.9.9"};
  Pass();
  EXPECT_EQ(Gateway(7).state, 2);  // taken again, with its own address
  EXPECT_EQ(Gateway(7).ip4Count, 1u);

  machine->registry.Set(kEngineSettings, u"SupportOemDevice", 0u);
  Build();
  Settle();
  EXPECT_EQ(Slot(0).gateway, kNoIndex);
}

// The catch-all is for gateways that nobody knows, not for one gateway too many.
TEST_F(EnginePassTest, AnEighthGatewayHasNoPlace) {
  for (std::uint8_t n = 1; n <= 8; ++n) {
    const std::string router = "192.168." + std::to_string(n) + ".1";
    Router(router, n);
    Adapters().push_back(Wired(n));
    Adapters().back().gateways = {router};
  }
  Settle();
  EXPECT_EQ(Slot(6).gateway, 6);
  EXPECT_EQ(Slot(7).gateway, kNoIndex);
  EXPECT_EQ(Gateway(7).state, 1);
}

TEST_F(EnginePassTest, AnIp6GatewayIsResolvedWhereItsRowIsEmpty) {
  Adapters() = {Wired(5)};
  Adapters()[0].addresses = {"fe80::5", "2001:db8::5"};
  Adapters()[0].gateways = {"fe80::1", "2001:db8::1"};  // link-local ones alone
  machine->ipHelper.neighbours = {{"fe80::1", {}, 5, {0xA, 0, 0, 0, 0, 9}}};
  Pass();
  EXPECT_EQ(Slot(0).gateway, 0);
  EXPECT_EQ(Slot(0).gatewayIp4, kNoIndex);
  EXPECT_EQ(Slot(0).gatewayIp6, 0);
  EXPECT_EQ(Gateway(0).address[5], 9);
  EXPECT_EQ(Gateway(0).ip6[0][15], 1);
}

TEST_F(EnginePassTest, AnAddressThatChangesUnderLoadBeginsAnew) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5)};
  Settle();
  machine->driver.acknowledges = false;
  Adapters()[0].addresses = {"192.168.1.77/24"};
  EXPECT_EQ(Pass(), "0:2:5 all:4:0");
  EXPECT_EQ(Slot(0).status, 0u);
  machine->driver.Acknowledge();
  EXPECT_EQ(Pass(), "");
  Adapters()[0].gateways = {};
  EXPECT_EQ(Pass(), "0:1:4");
  EXPECT_EQ(Slot(0).gateway, kNoIndex);
  EXPECT_EQ(Pass(), "");
}

TEST_F(EnginePassTest, LinkLocalCountsAsAnAddress) {
  Adapters() = {Wired(5)};
  Adapters()[0].addresses = {"169.254.9.9/16"};
  Adapters()[0].gateways = {};
  Settle();
  EXPECT_EQ(Slot(0).ip4, Ip4Word("169.254.9.9"));
  EXPECT_EQ(Slot(0).linkLocalIp4, Slot(0).ip4);
  EXPECT_EQ(Slot(0).ip4Count, 1u);
  EXPECT_EQ(Slot(0).gateway, kNoIndex);
}

TEST_F(EnginePassTest, SpeedsAreTheLow32Bits) {
  Adapters() = {Wired(5)};
  Adapters()[0].bitsPerSecond = 10'000'000'000;
  Pass();
  EXPECT_EQ(Slot(0).transmitMbps, 1410u);
}

TEST_F(EnginePassTest, GoneAdaptersAreRetiredAndComeBack) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5), Wired(6)};
  Settle();
  const FakeAdapter gone = Adapters()[0];
  Adapters().erase(Adapters().begin());
  EXPECT_EQ(Pass(), "all:1:0");
  EXPECT_EQ(Slot(0).index, kNoIndex);
  EXPECT_EQ(Slot(1).index, 1);
  EXPECT_EQ(Counts(), "1/0/1");
  EXPECT_EQ(Pass(), "");
  Adapters().push_back(gone);
  EXPECT_EQ(Pass(), "0:2:1 all:4:0");  // in its old slot
  EXPECT_EQ(Slot(0).index, 0);
  EXPECT_EQ(Slot(0).classFlags, 0x4001u);
}

TEST_F(EnginePassTest, ATakenSlotHoldsNothingOfTheAdapterBefore) {
  Adapters() = {Wired(5)};
  machine->networkList.connections = {{0, 0x10, 0, false}};
  Pass();
  EXPECT_EQ(Slot(0).attention, 256u);
  machine->networkList.connections.clear();
  Adapters() = {};
  Pass();
  Adapters() = {Wired(8)};
  Adapters()[0].up = false;
  Pass();
  EXPECT_EQ(Slot(0).keyAddress[5], 8);
  EXPECT_EQ(Slot(0).attention, 0u);
  EXPECT_EQ(Slot(0).category, 0);
}

TEST_F(EnginePassTest, ADroppedPassLeavesEverything) {
  Adapters() = {Wired(5)};
  Settle();
  machine->ipHelper.listResult = ERROR_BUFFER_OVERFLOW;
  EXPECT_EQ(Pass(), "");
  EXPECT_EQ(result, ERROR_BUFFER_OVERFLOW);
  EXPECT_EQ(Slot(0).index, 0);
  machine->ipHelper.listResult = ERROR_NO_DATA;  // no adapters at all
  EXPECT_EQ(Pass(), "all:1:0");
  EXPECT_EQ(Slot(0).index, kNoIndex);
}

TEST_F(EnginePassTest, APassDoesNotRunInsideAnother) {
  Adapters() = {Wired(5)};
  Build();
  DWORD inner = 0;
  machine->ipHelper.onList = [&] {
    machine->ipHelper.onList = nullptr;
    inner = discovery->LBDiscoverAdapters(true);
  };
  Pass();
  EXPECT_EQ(inner, ERROR_SERVICE_ALREADY_RUNNING);
  EXPECT_EQ(result, 0u);
  Pass();
  EXPECT_EQ(result, 0u);  // the flag has come down
}

TEST_F(EnginePassTest, TheSeventeenthAdapterHasNoPlace) {
  Router("192.168.1.1", 1);
  for (std::uint8_t i = 1; i <= 17; ++i) {
    Adapters().push_back(Wired(i));
    Adapters().back().addresses = {};
  }
  Settle();
  EXPECT_EQ(Slot(15).keyAddress[5], 16);
  EXPECT_EQ(Counts(), "16/0/16");
  Adapters().erase(Adapters().begin());
  Pass();
  Pass();
  EXPECT_EQ(Slot(0).keyAddress[5], 17);
}

TEST_F(EnginePassTest, APassStopsAtThirtyAdapters) {
  for (int i = 0; i < 21; ++i) Adapters().push_back({u"", {}, 24, true, 1, {}, {}, 0, false});
  Adapters().insert(Adapters().begin(), 8, {u"Software Loopback 1", {}, 24});
  for (std::uint8_t i = 1; i <= 2; ++i) {
    Adapters().push_back(Wired(i));
    Adapters().back().description = u"x";
    Adapters().back().addresses = Adapters().back().gateways = {};
  }
  ASSERT_EQ(Adapters().size(), 31u);
  machine->ipHelper.roomy = true;
  Pass();
  EXPECT_EQ(result, 0u);
  EXPECT_EQ(Slot(0).keyAddress[5], 1);
  EXPECT_EQ(Slot(1).index, kNoIndex);
}

TEST_F(EnginePassTest, ATunnelLeavesOneSteerableAdapter) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5), Wired(6)};
  Settle();
  FakeAdapter vpn{u"Acme VPN", {8, 0, 0, 0, 0, 1}};
  vpn.addresses = {"10.8.0.2/24"};
  Adapters().push_back(vpn);
  EXPECT_EQ(Pass(), "all:8:1");
  EXPECT_EQ(Slot(2).state, 17);
  EXPECT_EQ(Slot(2).runBits, 17u);
  EXPECT_EQ(Slot(2).classFlags, 0x2009u);
  EXPECT_EQ(Counts(), "2/0/1");
  EXPECT_EQ(state->m_TunnelWord, 1u);
  EXPECT_EQ(Pass(), "");
  Adapters()[2].up = false;
  EXPECT_EQ(Pass(), "all:8:2");
  EXPECT_EQ(Slot(2).state, 18);
  EXPECT_EQ(Counts(), "2/0/2");
}

TEST_F(EnginePassTest, PppLinksShareOneSlotBehindTheCatchAll) {
  FakeAdapter ppp{u"WAN link", {}, 23};
  ppp.addresses = {"10.8.0.2/32"};
  Adapters() = {ppp, ppp};
  EXPECT_EQ(Pass(), "all:1:0 all:8:1");
  EXPECT_EQ(Slot(0).state, 21);
  EXPECT_EQ(Bytes(Slot(0).keyAddress, Slot(0).keyAddress + 6),
            (Bytes{0x0A, 0xFA, 0x7E, 0x0A, 0x0D, 0x0D}));
  EXPECT_EQ(Slot(0).platformAddress[0], 0x0A);
  EXPECT_EQ(Slot(0).gateway, 7);
  EXPECT_EQ(Slot(0).gatewayIp4, 0);
  EXPECT_EQ(Slot(1).index, kNoIndex);
}

TEST_F(EnginePassTest, AnUnmanagedAdapterIsShownWithoutAGateway) {
  Router("192.168.1.1", 1);
  Adapters() = {Wired(5)};
  Adapters()[0].description = u"ASIX AX88179";
  EXPECT_EQ(Pass(), "");
  EXPECT_EQ(Slot(0).state, 17);
  EXPECT_EQ(Slot(0).ip4, Ip4Word("192.168.1.5"));
  EXPECT_EQ(Slot(0).gateway, kNoIndex);
  EXPECT_EQ(Slot(0).transmitMbps, 1000u);
  EXPECT_EQ(Counts(), "0/0/0");
  Adapters()[0].up = false;
  EXPECT_EQ(Pass(), "");
  EXPECT_EQ(Slot(0).state, 18);
  EXPECT_EQ(Slot(0).runBits, 16u);
  EXPECT_EQ(Slot(0).ip4 + Slot(0).transmitMbps, 0u);
}

TEST_F(EnginePassTest, AWifiDirectAdapterHasASlotBesideItsRadio) {
  const Bytes mac = {2, 0, 0, 0, 0, 1};
  Adapters() = {{u"Intel(R) Wi-Fi 6 AX200", mac, 71},
                {u"Microsoft Wi-Fi Direct Virtual Adapter", mac, 71}};
  Pass();
  EXPECT_EQ(Slot(0).addressLength, 6);
  EXPECT_EQ(Slot(1).addressLength, 7);
  EXPECT_EQ(Slot(1).keyAddress[6], 1);
  EXPECT_EQ(Slot(1).platformAddress[6], 0);
  EXPECT_EQ(Counts(), "1/0/1");
}

TEST_F(EnginePassTest, AnOldWirelessDriverIsNotSteeredNow) {
  const std::u16string key =
      u"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e972-e325-11ce-bfc1-08002be10318}\\";
  machine->registry.Set(key + u"0000", u"Provider", u"Realtek");
  machine->registry.Set(key + u"0001", u"Provider", u"Intel Corporation");
  machine->registry.Set(key + u"0001", u"NetType", u"WLAN,5");
  machine->registry.Set(key + u"0001", u"DriverVersion", u"20.79.255.9");
  Adapters() = {{u"Intel(R) Wireless-AC 9560", {2, 0, 0, 0, 0, 1}, 71}};
  Pass();
  EXPECT_EQ(Slot(0).classFlags, 0x4004402u);
  EXPECT_EQ(Counts(), "1/0/0");
  machine->registry.Set(key + u"0001", u"DriverVersion", u"20.80.0.0");
  Build();
  Pass();
  EXPECT_EQ(Slot(0).classFlags, 0x4402u);
}

}  // namespace
}  // namespace corvane::engine_test
