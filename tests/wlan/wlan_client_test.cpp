#include "wlan/wlan_client.h"

#include "history/global_ap_gateway_map_memo.h"
#include "store/registry.h"
#include "wlan/adapter_fixture.h"

namespace corvane::test {
namespace {

using namespace platform;

class WlanClientTest : public AdapterTest {
 protected:
  CWifiClientContainer& Container() { return CWifiClientContainer::GetInstance(); }
  std::uint32_t AdapterEnabled(std::uint8_t number) {
    std::uint32_t enabled = 9;
    const WString key = WString(kHomeKeyPath) + u"\\" + GuidText(AdapterGuid(number));
    CRegistry::CreateObject(key)->GetRegistryDWORDValue(u"AdapterEnabled", &enabled);
    return enabled;
  }
  std::uint32_t PublishedCount() {
    std::uint32_t count = 99;
    CGlobalConfigContainer::GetInstance().GetRegistry()->GetRegistryDWORDValue(u"NumWifiAdapters",
                                                                               &count);
    return count;
  }
};

TEST_F(WlanClientTest, IndicesGoByConnectionNamePositionsByGuid) {
  Have({{1, u"Wi-Fi 2"}, {2, u"Wi-Fi"}, {3, u""}});
  Start();
  ASSERT_EQ(Container().GetCount(), 3);
  EXPECT_EQ(Container().GetInterface(0)->GetConfigIdx(), 2);
  EXPECT_EQ(Container().GetInterface(1)->GetConfigIdx(), 1);
  EXPECT_EQ(Container().GetInterface(2)->GetConfigIdx(), 0) << "without a name it sorts first";
  EXPECT_FALSE(Container().GetInterface(3));
  EXPECT_EQ(Value(u"0"), GuidText(AdapterGuid(3)));
  EXPECT_EQ(Value(u"2"), GuidText(AdapterGuid(1)));
  EXPECT_EQ(PublishedCount(), 3u);
}

TEST_F(WlanClientTest, RemovedAdapterIsRetiredAndStaysIntactForItsHolders) {
  Have({{1, u"A"}, {2, u"B"}});
  Start();
  const auto gone = Container().GetInterface(1);
  EXPECT_FALSE(Container().AdapterCountChanged());
  wlan.adapters.pop_back();
  EXPECT_TRUE(Container().AdapterCountChanged());
  Container().Initialize();
  EXPECT_EQ(Container().GetCount(), 1);
  EXPECT_EQ(AdapterEnabled(2), 0u);
  EXPECT_EQ(AdapterEnabled(1), 1u);
  EXPECT_EQ(Value(u"1"), u"");
  EXPECT_EQ(PublishedCount(), 1u);
  EXPECT_EQ(gone->GetConnectionName(), u"B");
  const DWORD reason = 0;
  wlan.Notify(WLAN_NOTIFICATION_SOURCE_ACM, 7, &reason, 4, 2);
  EXPECT_EQ(gone->Config()->GetInhibitRemainingMs(), 0u) << "its notifications are not delivered";

  wlan.adapters.push_back(AdapterGuid(2));
  Container().Initialize();
  EXPECT_NE(Container().GetInterface(1).get(), gone.get()) << "it comes back as a new object";
  wlan.adapters = {AdapterGuid(2)};
  Container().Initialize();
  EXPECT_EQ(AdapterEnabled(1), 0u) << "and the first one may go, too";
}

TEST_F(WlanClientTest, ServiceThatFailsGivesNoAdaptersAndRecovers) {
  for (const char* operation :
       {"WlanOpenHandle", "WlanRegisterNotification", "WlanEnumInterfaces"}) {
    for (const DWORD code : {ERROR_SERVICE_NOT_ACTIVE, FakeWlan::kFault}) {
      wlan.codes[operation] = code;
      EXPECT_FALSE(Start()) << operation;
      EXPECT_EQ(Container().GetCount(), 0) << operation;
      EXPECT_FALSE(Container().AdapterCountChanged());
    }
    wlan.codes.clear();
    EXPECT_TRUE(Start()) << "after " << operation;
    adapter.reset();
    Container().Shutdown();
    CGlobalConfigContainer::GetInstance().Shutdown(false);
    EXPECT_FALSE(wlan.IsRegistered());
  }
}

TEST_F(WlanClientTest, FailureOfTheCountReadsAsNoChange) {
  Start();
  wlan.codes["WlanEnumInterfaces"] = ERROR_GEN_FAILURE;
  EXPECT_FALSE(Container().AdapterCountChanged());
}

TEST_F(WlanClientTest, ImpossibleCountOfAdaptersIsAFailedCall) {
  wlan.claims["WlanEnumInterfaces"] = 0x10000000;
  EXPECT_FALSE(Start());
  wlan.claims["WlanEnumInterfaces"] = 0;
  EXPECT_FALSE(Start());
  EXPECT_EQ(PublishedCount(), 0u);
}

TEST_F(WlanClientTest, ShutdownUnregistersEvenWhenThePlatformRefuses) {
  Start();
  wlan.codes["WlanCloseHandle"] = ERROR_GEN_FAILURE;
  wlan.codes["WlanRegisterNotification"] = ERROR_GEN_FAILURE;
  Container().Shutdown();
  EXPECT_EQ(wlan.calls.back(), "WlanCloseHandle");
  // The old registration still stands: what comes now finds no adapter.
  wlan.codes.clear();
  wlan.codes["WlanOpenHandle"] = 1;
}

TEST_F(WlanClientTest, IdentityIsPublishedInTheAdaptersKey) {
  Have({{1, u"Wi-Fi", "Vantor/AX 200"},
        {2, u"Wi-Fi 2", "Vantor/AX 200"},
        {3, u"Wi-Fi 3", "Vendor AX"}});
  Start();
  EXPECT_EQ(AdapterValue(u"AdapterGuid"), GuidText(AdapterGuid(1)));
  EXPECT_EQ(AdapterValue(u"AdapterName"), u"Wi-Fi");
  EXPECT_EQ(AdapterValue(u"AdapterMac"), u"00-00-00-00-00-01");
  EXPECT_EQ(AdapterValue(u"AdapterDescription"), u"Vantor_AX 200");
  EXPECT_EQ(AdapterNumber(u"Wifi6"), 1u);
  EXPECT_TRUE(adapter->IsHECapable());
  EXPECT_EQ(Container().GetInterface(1)->GetDescription(), u"Vantor_AX 200#1");
  EXPECT_FALSE(Container().GetInterface(2)->IsHECapable()) << "neither maker's word";
}

TEST_F(WlanClientTest, AdapterThatTheInterfaceTableLacksHasNoCounters) {
  Have({});
  ipHelper.adapters = {{9}};
  wlan.adapters = {AdapterGuid(1)};
  Start();
  EXPECT_EQ(adapter->GetOsIfIndex(), 0xFFFFFFFFu);
  EXPECT_FALSE(adapter->Pdh());
  EXPECT_EQ(adapter->GetTrafficMbps(), 0.0);
  EXPECT_FALSE(adapter->IsHECapable());
}

TEST_F(WlanClientTest, GatewaysOfAnAccessPointOutsideTheModelAreRemembered) {
  Have({{1, u"A"}});
  wlan.networks = {"Office"};
  wlan.entries = {{"Office", Bssid(1)}};
  StartConnected("Office", Bssid(1));
  ASSERT_EQ(Discover(), 0);
  const MacList gateways{Bssid(77)};
  EXPECT_TRUE(adapter->AssignGatewayMacsToBssEntry(u"Office", Bssid(1), gateways, {}));
  EXPECT_FALSE(adapter->AssignGatewayMacsToBssEntry(u"Office", Bssid(2), gateways, {}));
  EXPECT_FALSE(adapter->AssignGatewayMacsToBssEntry(u"Cafe", Bssid(3), gateways, {}));
  const auto remembered = [](std::uint8_t last) {
    return CGlobalAPGatewayMapMemo::GetInstance().LookUp(MacText(Bssid(last))).ip4;
  };
  EXPECT_EQ(remembered(1), gateways);
  EXPECT_EQ(remembered(2), gateways);
  EXPECT_EQ(remembered(3), MacList{}) << "the network is unknown as well";
}

TEST_F(WlanClientTest, OtherAdaptersConnectionAndReservationAreAvoided) {
  Have({{1, u"A"}, {2, u"B"}});
  wlan.networks = {"Office"};
  wlan.entries = {{"Office", Bssid(1)}, {"Office", Bssid(2)}};
  StartConnected("Office", Bssid(1));
  ASSERT_EQ(Discover(), 0);
  const auto other = Container().GetInterface(1);
  const auto avoids = [&](std::uint8_t last, CWlanInterface* mine) {
    return Container().AvoidThisCandidateOnMyIF(Entry(u"Office", last).get(), mine);
  };
  EXPECT_TRUE(avoids(1, other.get()));
  EXPECT_FALSE(avoids(1, adapter.get())) << "its own connection is no hindrance";
  EXPECT_FALSE(avoids(2, other.get()));
  adapter->Claim().ClaimSuggested(Bssid(2), 0);
  EXPECT_TRUE(avoids(2, other.get()));
  adapter->Claim().GiveUp(Bssid(1));
  EXPECT_TRUE(avoids(2, other.get())) << "another BSSID's release";
  adapter->Claim().GiveUp(Bssid(2));
  EXPECT_FALSE(avoids(2, other.get()));
  adapter->ClearConnectedBssid();
  EXPECT_TRUE(avoids(1, other.get())) << "its next round has yet to see the connect";
  adapter->ClearConnected();
  EXPECT_FALSE(avoids(1, other.get()));
  EXPECT_THROW(Container().AvoidThisCandidateOnMyIF(nullptr, other.get()), Exception);
}

}  // namespace
}  // namespace corvane::test
