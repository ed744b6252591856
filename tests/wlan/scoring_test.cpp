// What reaches the scores of an adapter: its settings, the system's lists, the network list, the
// air, and what was seen before.

#include "monitors/network_list_manager.h"
#include "settings/global_config_container.h"
#include "store/process_flags.h"
#include "store/value_names.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {
namespace {

class ScoringTest : public PcTest {
 protected:
  // On Office, which is private and has internet from 30 s on.
  void SetUp() override {
    WorldBuilder world;
    world.Adapter()
        .Ap(Beacon(u8"Office").Channel(36).He80(2).Rsn({AKM_PSK}).QbssLoad(1, 127), 1, -60)
        .Ap(Beacon(u8"Office").Channel(6).Ht20(1).Rsn({AKM_PSK}).QbssLoad(1, 51), 2, -60)
        .Profile("Office")
        .Network("Office", kCategoryPrivate, false)
        .Connected(1)
        .At(30'000, R"({"do": "network", "network": "Office", "internet": true})")
        .At(300'000, R"({"do": "network", "network": "Office", "category": "public"})");
    world->filters = {{platform::wlan_filter_list_type_user_permit, "Office"}};
    Boot(world.Build());
    auto& global = CGlobalConfigContainer::GetInstance();
    global.Initialize(true);
    CWifiClientContainer::GetInstance().Initialize();
    adapter = CWifiClientContainer::GetInstance().GetInterface(0);
    CNetworkListManager::GetInstance().RefreshNetworkCategories();
    platform::WLAN_CONNECTION_ATTRIBUTES attributes;
    adapter->QueryCurrentConnection(&attributes, true);
    adapter->SetConnectedBssid(ApBssid(1));

    adapter->Config()->SetString(value::kScoreCfgJson, u"{\"SQMax\": 40}");
    adapter->Config()->RefreshFromRegistry();
    adapter->RefreshNetworkAllowDenyFilters();
    global.m_AllowFilterScoreBonus = 7;
  }
  void TearDown() override {
    g_bVPNFound = false;
    adapter.reset();
    CGlobalConfigContainer::GetInstance().Shutdown(true);
    CWifiClientContainer::GetInstance().Shutdown();
    PcTest::TearDown();
  }

  CSmartPointer<CWlanBssEntry> Discovered(int number) {
    std::int32_t error = 0;
    adapter->DiscoverNetworksSynchronous(true, false, &error);
    CSmartPointer<CWlanBssEntry> entry;
    adapter->FindBssEntry(u"Office", ApBssid(number), &entry);
    return entry;
  }
  void ExpectTerms(int number, std::initializer_list<const char*> terms) {
    const std::string log = Discovered(number)->ScoreLog();
    for (const char* term : terms) EXPECT_NE(log.find(term), std::string::npos) << log;
  }

  CSmartPointer<CWlanInterface> adapter;
};

TEST_F(ScoringTest, SettingsListsAndAirReachTheTerms) {
  EXPECT_TRUE(adapter->IsConnectedToPrivateNetwork());
  ExpectTerms(1, {"/40),", ",PRIV(1)", "/1201)", ",NOISE(10)", ",ALLOW(7)", ",INTERNET(-20)"});
  EXPECT_EQ(Discovered(2)->m_ApCountOnChannel, 1u);
  const ScoreContext context = adapter->GetScoreContext();
  EXPECT_EQ(context.averageScore5, 5);
  EXPECT_EQ(context.averageScore2, 8);
  EXPECT_NEAR(context.averageLoad5, 49.8, 0.1);
  EXPECT_NEAR(context.averageLoad2, 20.0, 0.1);
  g_bVPNFound = true;
  ExpectTerms(1, {",INTERNET(0/VPN_MUTED)"});
  RunFor(5min);
  EXPECT_FALSE(adapter->IsConnectedToPrivateNetwork());
}

// The network list's own refresh is the main thread's; the adapter looks before it scores.
TEST_F(ScoringTest, ConnectivityIsThatOfThisMoment) {
  ExpectTerms(1, {",INTERNET(-20)"});
  RunFor(40s);
  ExpectTerms(1, {",INTERNET(0),"});
}

TEST_F(ScoringTest, MissingInternetIsRememberedOverALossOfTheTree) {
  Discovered(1);
  adapter->ClearConnected();
  adapter->ClearNetworks();
  CNetworkListManager::GetInstance().SetConnectivityForNetwork(u"Office", 0);
  ExpectTerms(1, {",INTERNET(-20/DISCON)"});
}

}  // namespace
}  // namespace corvane::test
