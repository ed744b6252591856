// What a pass reads of an adapter's network and of its wireless link.

#include "engine/network_reader.h"
#include "engine/pass_fixture.h"

namespace corvane::engine_test {
namespace {

TEST_F(EnginePassTest, NetworkFactsStayWithoutComOrDuringAStop) {
  Adapters() = {Wired(5)};
  machine->networkList.connections = {{0, 0x40, 1, true}};
  Settle();
  EXPECT_EQ(Slot(0).networkFlags, 10u);
  machine->networkList.connections[0].internet = false;
  EXPECT_EQ(Pass(false), "");
  EXPECT_EQ(Slot(0).networkFlags, 10u);
  for (const char* call : {"get_IsConnectedToInternet", "GetNetwork"}) {
    machine->networkList.failing = {call};
    EXPECT_EQ(Pass(), "") << call;
    EXPECT_EQ(Slot(0).networkFlags, 10u);
  }
  machine->networkList.failing = {"GetCategory", "GetConnectivity"};
  EXPECT_EQ(Pass(), "0:1:256");
  EXPECT_EQ(Slot(0).networkFlags, 2u);
  EXPECT_EQ(Slot(0).ip4Connectivity, 0x40);
  machine->networkList.failing = {};
  machine->networkList.connections[0].internet = true;
  state->RaiseStop();
  EXPECT_EQ(Pass(), "");
  EXPECT_EQ(Slot(0).networkFlags, 2u);
  LBAdapterEntry entry;
  LBAdapterSlot slot{};
  EXPECT_EQ(LBReadNetworkState(&entry, &slot, true, true), 31u);
}

class EngineRadioTest : public EnginePassTest {
 protected:
  EngineRadioTest() {
    machine->registry.Set(u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", u"CurrentVersion",
                          u"6.3");
    machine->wlan.interfaces = {u"Somebody's Radio", u"Vantor Breeze W2", u"Intel(R) Wi-Fi 6"};
    machine->wlan.ssid = "Home";
    machine->wlan.bssids = {{0, 0, 0, 0, 0, 0}, {6, 6, 6, 6, 6, 6}, {7, 7, 7, 7, 7, 7}};
    Router("192.168.1.1", 1);
  }
  void Radio(const std::u16string& description) {
    Adapters() = {Wired(5)};
    Adapters()[0].description = description;
    Adapters()[0].ifType = 71;
    Adapters()[0].bitsPerSecond = 866'000'000;
  }
};

TEST_F(EngineRadioTest, AGenericRadioIsReadByTheUsualQueries) {
  Radio(u"Intel(R) Wi-Fi 6");
  machine->wlan.rxKbps = 390'500;  // other than the platform's figure
  Settle();
  const LBWlanArea& area = Slot(0).wlan;
  EXPECT_EQ(std::string(area.ssid, area.ssid + area.ssidLength), "Home");
  EXPECT_EQ(area.quality, 80);
  EXPECT_EQ(area.bssidLength, 6);
  EXPECT_EQ(area.bssid[0], 6);
  EXPECT_EQ(area.linkKind, 1);
  EXPECT_EQ(Slot(0).receiveMbps, 390u);
  EXPECT_EQ(Slot(0).transmitMbps, 866u);
  machine->wlan.txKbps = 700'000;
  EXPECT_EQ(Pass(), "0:1:8");
  machine->wlan.quality = 60;
  EXPECT_EQ(Pass(), "0:1:8");
  EXPECT_EQ(Pass(), "");
  machine->wlan.ssid = "Work";
  EXPECT_EQ(Pass(), "0:2:5 all:4:0");
  machine->wlan.ssid = "";
  machine->wlan.connectionState = wlan_interface_state_disconnected;
  EXPECT_EQ(Pass(), "0:1:10");  // and the platform's figure of the speed again
  EXPECT_EQ(Slot(0).wlan.ssidLength, 0);
  EXPECT_TRUE(machine->wlan.privateCalls.empty());
}

TEST_F(EngineRadioTest, ThePrivateInterfaceIsAskedForItsWords) {
  Radio(u"Vantor Breeze W2");
  machine->wlan.privateAnswers[0xFF00001D] = Bytes(32, 0x21);
  machine->wlan.privateAnswers[0xFFF00016] = Bytes(34, 0x43);
  machine->wlan.privateAnswers[0xFF000013] = {0x34, 0x12, 0x78, 0x56, 0, 1, 0, 0};
  Settle();
  EXPECT_EQ(Bytes(Slot(0).firstAnswer, Slot(0).firstAnswer + 8), Bytes(8, 0x21));
  EXPECT_EQ(Bytes(Slot(0).secondAnswer, Slot(0).secondAnswer + 32), Bytes(32, 0x43));
  EXPECT_EQ(Slot(0).wlan.private1, 0x1234);
  EXPECT_EQ(Slot(0).wlan.private2, 0x5678);
  EXPECT_EQ(Slot(0).wlan.linkKind, 4);
  EXPECT_EQ(Slot(0).wlan.operation, 1);
  EXPECT_EQ(Slot(0).wlan.bssid[0], 2);
  const auto& calls = machine->wlan.privateCalls;
  ASSERT_GE(calls.size(), 3u);
  EXPECT_EQ(calls[0].size(), 56u);
  EXPECT_EQ(calls[0][12], 32);
  EXPECT_EQ(calls[1].size(), 58u);
  EXPECT_EQ(calls[1][12], 34);
  EXPECT_EQ(calls[2].size(), 32u);
  EXPECT_EQ(calls[2][12], 8);
  EXPECT_EQ(machine->wlan.privateAdapters[0], GuidOf(1));
  machine->wlan.mode = 1;
  machine->wlan.bssid = {3, 3, 3, 3, 3, 3};
  EXPECT_EQ(Pass(), "0:2:5 all:4:0");  // another access point
  EXPECT_EQ(Slot(0).wlan.operation, 2);
  machine->wlan.privateAnswers[0xFF000013][5] = 0;
  machine->wlan.connectionState = wlan_interface_state_disconnected;
  EXPECT_EQ(Pass(), "0:1:2");
  EXPECT_EQ(Slot(0).wlan.linkKind, 1);
}

TEST_F(EngineRadioTest, AnAdRadioKeepsItsLinkKindAndAMobileAdapterItsQuality) {
  Radio(u"Qualcomm Atheros Sparrow 11ad");
  machine->wlan.interfaces.push_back(u"Qualcomm Atheros Sparrow 11ad");
  Adapters().push_back(Wired(6));
  Adapters()[1].description = u"Mobile Broadband Adapter";
  Adapters()[1].ifType = 243;
  Pass();
  EXPECT_EQ(Slot(0).wlan.linkKind, 6);
  EXPECT_EQ(Slot(1).wlan.quality, 100);
}

TEST_F(EngineRadioTest, GivesNothingWithoutTheService) {
  Radio(u"Intel(R) Wi-Fi 6");
  machine->wlan.openResult = ERROR_CALL_NOT_IMPLEMENTED;
  Settle();
  EXPECT_EQ(machine->wlan.opens, 1);  // the library lacks it: nobody asks again
  EXPECT_EQ(Slot(0).wlan.ssidLength, 0);
  machine->wlan.openResult = ERROR_SERVICE_NOT_ACTIVE;
  Build();
  Pass();
  EXPECT_EQ(Slot(0).wlan.ssidLength, 0);
  machine->wlan.openResult = 0;  // the service is up at last
  Pass();
  EXPECT_EQ(Slot(0).wlan.ssidLength, 4);
}

TEST_F(EngineRadioTest, AsksNoServiceOfAnOldSystem) {
  machine->registry.Set(u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", u"CurrentVersion",
                        u"6.2");
  Radio(u"Intel(R) Wi-Fi 6");
  Settle();
  EXPECT_EQ(machine->wlan.opens, 0);
}

}  // namespace
}  // namespace corvane::engine_test
