#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

class WlanQueriesTest : public AdapterTest {};

TEST_F(WlanQueriesTest, FailuresCarryThePlatformsCode) {
  Start();
  struct Case {
    const char* operation;
    DWORD code;
    std::function<void()> query;
    const char* text;
  };
  WLAN_RADIO_STATE radio;
  WLAN_CONNECTION_ATTRIBUTES attributes;
  const Case cases[] = {
      {"WlanGetInterfaceCapability", ERROR_NOT_FOUND,
       [&] { adapter->DetermineInterfaceCapability(); },
       "WlanGetInterfaceCapability() failed: 1168"},
      {"WlanQueryInterface", 31, [&] { adapter->QueryChannel(); },
       "WlanQueryInterface(8) failed: 31"},
      {"WlanQueryInterface", 31, [&] { adapter->GetInterfaceState(); },
       "WlanQueryInterface(6) failed: 31"},
      {"WlanQueryInterface", 31, [&] { adapter->QueryRadioState(&radio); },
       "WlanQueryInterface(4) failed: 31"},
      {"WlanQueryInterface", ERROR_INVALID_STATE, [&] { adapter->CurrentConnection(&attributes); },
       "WlanQueryInterface(...wlan_intf_opcode_current_connection...) failed: 5023"},
      {"WlanQueryInterface", FakeWlan::kFault, [&] { adapter->CurrentConnection(&attributes); },
       "WlanQueryInterface(opcode=7) - EXCEPTION: -1073741819"},
  };
  for (const Case& one : cases) {
    wlan.codes = {{one.operation, one.code}};
    EXPECT_EQ(ThrownBy(one.query), one.text);
  }
  wlan.codes = {{"WlanQueryInterface", ERROR_INVALID_STATE}};
  try {
    adapter->QueryCurrentConnection(&attributes, true);
    FAIL();
  } catch (const Exception& e) {
    EXPECT_EQ(e.GetCode(), ERROR_INVALID_STATE);
  }
}

TEST_F(WlanQueriesTest, ShortAnswersAreRefused) {
  StartConnected("Office", Bssid(1));
  WLAN_RADIO_STATE radio;
  WLAN_CONNECTION_ATTRIBUTES attributes;
  wlan.querySize = 3;
  EXPECT_EQ(ThrownBy([&] { adapter->QueryChannel(); }), "WlanQueryInterface(8) dwDataSize < 4");
  wlan.querySize = 771;
  EXPECT_EQ(ThrownBy([&] { adapter->QueryRadioState(&radio); }),
            "WlanQueryInterface(4) dwDataSize < 772");
  wlan.querySize = 603;
  EXPECT_EQ(ThrownBy([&] { adapter->CurrentConnection(&attributes); }),
            "WlanQueryInterface(7) dwDataSize < 604");
}

TEST_F(WlanQueriesTest, FailedLookLeavesTheConnectedFlagAndThePeak) {
  StartConnected("Office", Bssid(1));
  ConnectionFacts facts;
  wlan.Connect("Office", Bssid(1), 80);
  ASSERT_TRUE(adapter->GetConnectedSSID(&facts));
  wlan.Connect("Office", Bssid(1), 50);
  ASSERT_TRUE(adapter->GetConnectedSSID(&facts));
  EXPECT_EQ(facts.ssid, u"Office");
  EXPECT_EQ(facts.bssid, Bssid(1));
  EXPECT_EQ(facts.quality, 50u);
  EXPECT_EQ(adapter->Link().MaxSignalQuality(), 80u);
  EXPECT_EQ(adapter->GetConnAttrs().wlanAssociationAttributes.wlanSignalQuality, 60u)
      << "no copy kept";
  wlan.Disconnect();
  EXPECT_FALSE(adapter->GetConnectedSSID(&facts));
  EXPECT_TRUE(facts.ssid.empty());
  EXPECT_EQ(kernel.Console().Text().find("5023"), std::string::npos) << "no failure to log";
  EXPECT_TRUE(adapter->IsConnected());
  WLAN_CONNECTION_ATTRIBUTES attributes;
  EXPECT_NE(ThrownBy([&] { adapter->QueryCurrentConnection(&attributes, true); }), "");
  EXPECT_FALSE(adapter->IsConnected()) << "the round's own query decides";
  EXPECT_EQ(adapter->Link().MaxSignalQuality(), 0u);
}

TEST_F(WlanQueriesTest, RadioIsOffWhenTheHtOrTheVhtPhyIs) {
  Start();
  adapter->DetermineInterfaceCapability();
  const auto phyIs = [&](DWORD index, LONG software) {
    const WLAN_PHY_RADIO_STATE state{index, software, dot11_radio_state_on};
    wlan.Notify(WLAN_NOTIFICATION_SOURCE_MSM, 7, &state, sizeof(state));
  };
  EXPECT_FALSE(adapter->IsRadioOff()) << "nothing known yet";
  phyIs(5, dot11_radio_state_off);
  EXPECT_FALSE(adapter->IsRadioOff()) << "some other PHY";
  phyIs(1, dot11_radio_state_off);
  EXPECT_TRUE(adapter->IsRadioOff());
  phyIs(1, dot11_radio_state_on);
  EXPECT_FALSE(adapter->IsRadioOff());
  WLAN_RADIO_STATE state;
  state.dwNumberOfPhys = 0xFFFFFFFF;
  state.PhyRadioState[0] = {0, dot11_radio_state_off, dot11_radio_state_on};
  adapter->StoreRadioState(state);
  EXPECT_TRUE(adapter->IsRadioOff());
}

TEST_F(WlanQueriesTest, ScoreLookUpsFallBackOnlyWhileConnected) {
  wlan.networks = {"Office"};
  wlan.entries = {{"Office", Bssid(1)}};
  Start();
  Discover();
  adapter->Link().SetBackupScore(55);
  EXPECT_GE(adapter->GetScoreFromBssEntry(u"Office", Bssid(1), false), 0);
  EXPECT_EQ(adapter->GetScoreFromBssEntry(u"Office", Bssid(2), true), -1);
  WLAN_CONNECTION_ATTRIBUTES attributes;
  wlan.Connect("Office", Bssid(2));
  adapter->QueryCurrentConnection(&attributes, true);
  EXPECT_EQ(adapter->GetScoreFromBssEntry(u"Office", Bssid(2), true), 55);
  EXPECT_EQ(adapter->GetScoreFromBssEntry(u"Office", Bssid(2), false), -1);
  EXPECT_EQ(adapter->GetScoreFromBssEntry(u"", Bssid(2), true), -1);
  std::string log;
  EXPECT_EQ(adapter->GetScoreFromBssEntry(&log, u"Office", Bssid(2)), 55);
  WString phy;
  std::int32_t rssi = 0;
  EXPECT_EQ(adapter->GetScoreFromBssEntry(u"Office", Bssid(2), &phy, &rssi), 55);
  EXPECT_EQ(phy, u"802.11");
}

TEST_F(WlanQueriesTest, DetachedAdapterFailsItsCalls) {
  Start();
  CWifiClientContainer::GetInstance().Shutdown();
  wlan.codes["WlanQueryInterface"] = ERROR_INVALID_HANDLE;
  EXPECT_EQ(ThrownBy([&] { adapter->QueryChannel(); }), "WlanQueryInterface(8) failed: 6");
  adapter->ScanSynchronous(nullptr);
  adapter->ConnectToNetwork(u"Office");
  adapter->DisconnectSynchronous(u"");
  EXPECT_TRUE(wlan.scans.empty());
  EXPECT_TRUE(wlan.connects.empty());
}

}  // namespace
}  // namespace corvane::test
