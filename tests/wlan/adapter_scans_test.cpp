#include "model/global_wireless_maps.h"
#include "support/beacon.h"
#include "wlan/adapter_fixture.h"
#include "wlan/fake_counters.h"

namespace corvane::test {
namespace {

using namespace platform;

constexpr char16_t kHiddenXml[] =
    u"<WLANProfile><name>Attic</name><SSIDConfig><nonBroadcast>true</nonBroadcast></SSIDConfig></"
    u"WLANProfile>";

class DiscoveryTest : public AdapterTest {
 protected:
  DiscoveryTest() {
    wlan.networks = {"Office", "Cafe"};
    wlan.entries = {
        {"Office", Bssid(1)}, {"Office", Bssid(2), 40}, {"Cafe", Bssid(3), 30, 2437000}};
    wlan.profiles[u"Office"] = u"<xml/>";
  }
  // Scans of a discovery that nobody forces, so much later.
  std::size_t ScansAfter(std::chrono::seconds time) {
    RunFor(time);
    const std::size_t before = wlan.scans.size();
    Discover(false);
    return wlan.scans.size() - before;
  }
  Counters& counters = Install<Counters>();
};

TEST_F(DiscoveryTest, ScansAndMergesBothLists) {
  Start();
  EXPECT_EQ(Discover(), 1);
  EXPECT_EQ(wlan.scans, std::vector<std::string>{""});
  EXPECT_TRUE(adapter->IsScanFresh());
  EXPECT_EQ(adapter->SnapshotEntries().size(), 3u);
  const auto office = Entry(u"Office", 1);
  ASSERT_TRUE(office);
  EXPECT_TRUE(office->m_bss_scanned);
  EXPECT_TRUE(office->HasUsableProfile());
  EXPECT_GE(office->GetScore(false, adapter->GetScoreContext()), 0);
  EXPECT_GE(office->m_ApCountOnChannel, 1u);
  EXPECT_FALSE(Entry(u"Cafe", 3)->HasUsableProfile());
}

TEST_F(DiscoveryTest, ProfileMarksTheEntriesOfItsNetwork) {
  wlan.profiles[u"Office"] =
      u"<WLANProfile><nonBroadcast>true</nonBroadcast><connectionMode>auto</connectionMode>";
  Start();
  Discover();
  EXPECT_TRUE(Entry(u"Office", 2)->m_AutoConnect);
  EXPECT_TRUE(Entry(u"Office", 2)->m_bNonBroadcast);
  EXPECT_FALSE(Entry(u"Cafe", 3)->m_AutoConnect);
  EXPECT_FALSE(Entry(u"Cafe", 3)->m_bNonBroadcast);
}

TEST_F(DiscoveryTest, EntriesAgeByScansNotByRounds) {
  StartConnected("Office", Bssid(1));
  Discover();
  wlan.entries.erase(wlan.entries.begin() + 1);
  CGlobalConfigContainer::GetInstance().m_bULScan = true;
  Discover(false);
  EXPECT_FALSE(adapter->IsScanFresh());
  EXPECT_FALSE(Entry(u"Office", 2)->m_bss_scanned);
  EXPECT_EQ(Entry(u"Office", 2)->m_unscanned_count, 0u);
  Discover();
  Discover();
  EXPECT_EQ(Entry(u"Office", 2)->m_unscanned_count, 2u);
  EXPECT_EQ(Entry(u"Office", 1)->m_unscanned_count, 0u);
}

TEST_F(DiscoveryTest, EveryListedProfileOfAnSsidCounts) {
  wlan.networks = {"Office", "Office", "", "Cafe"};
  wlan.entries.push_back({"", Bssid(9)});
  wlan.entries.push_back({"Unlisted", Bssid(8)});
  Start();
  EXPECT_EQ(Discover(), 2);
  EXPECT_EQ(adapter->Networks().size(), 2u);
  EXPECT_FALSE(Entry(u"Unlisted", 8));
}

TEST_F(DiscoveryTest, HiddenNetworksAreAskedForByNameExceptTheConnectedOne) {
  wlan.profiles[u"Attic"] = kHiddenXml;
  wlan.profiles[u"A name of more than thirty-two bytes"] = kHiddenXml;
  Start();
  Discover();
  EXPECT_EQ(wlan.scans, (std::vector<std::string>{"", "Attic"}));
  WLAN_CONNECTION_ATTRIBUTES attributes;
  wlan.Connect("Attic", Bssid(5));
  adapter->QueryCurrentConnection(&attributes, true);
  wlan.scans.clear();
  Discover();
  EXPECT_EQ(wlan.scans, std::vector<std::string>{""});
}

TEST_F(DiscoveryTest, FailedHiddenScanDoesNotCostTheRound) {
  wlan.profiles[u"Attic"] = kHiddenXml;
  wlan.onScan = [this](const DOT11_SSID* ssid) {
    if (ssid) throw PlatformFault{FakeWlan::kFault};
    wlan.Post(500, [this] { wlan.NotifyScan(wlan_notification_acm_scan_complete); });
  };
  Start();
  EXPECT_EQ(Discover(), 1);
  EXPECT_EQ(adapter->SnapshotEntries().size(), 3u);
  EXPECT_TRUE(adapter->IsScanFresh());
}

TEST_F(DiscoveryTest, ScanThatFailsOrNeverEndsLeavesTheLists) {
  Start();
  wlan.codes["WlanScan"] = ERROR_GEN_FAILURE;
  EXPECT_EQ(Discover(), 0);
  EXPECT_EQ(adapter->SnapshotEntries().size(), 0u);
  EXPECT_EQ(ThrownBy([&] { adapter->ScanSynchronous(nullptr); }), "WlanScan() failed: 31");
  wlan.codes["WlanScan"] = FakeWlan::kFault;
  EXPECT_EQ(ThrownBy([&] { adapter->ScanSynchronous(nullptr); }), "WlanScan() failed: 0xc0000005");
  wlan.codes.clear();

  wlan.onScan = [](const DOT11_SSID*) {};
  kernel.Faults().FailCall("WaitForMultipleObjects", 1, ERROR_GEN_FAILURE);
  EXPECT_NE(ThrownBy([&] { adapter->ScanSynchronous(nullptr); }), "");
  EXPECT_FALSE(adapter->IsScanInFlight()) << "a wait that fails ends the scan";
  const std::uint64_t before = Now();
  EXPECT_EQ(ThrownBy([&] { adapter->ScanSynchronous(nullptr); }),
            "ScanSynchronous() - Event Timeout!");
  EXPECT_EQ(Now() - before, 20000u);
  EXPECT_FALSE(adapter->IsScanInFlight());
  wlan.NotifyScan(wlan_notification_acm_scan_complete);
  EXPECT_STREQ(InhibitTag(), "out-scan") << "an end that comes too late is somebody else's";

  wlan.onScan = nullptr;
  EXPECT_EQ(Discover(), 1) << "and the next one is not ended by the late signal";
  EXPECT_TRUE(adapter->IsScanFresh());
  wlan.onScan = [](const DOT11_SSID*) {};
  counters.mbps = 2.0;
  Discover();
  EXPECT_FALSE(adapter->IsScanFresh()) << "what is there is of the round before";
  EXPECT_DOUBLE_EQ(adapter->GetTrafficMbps(), 2.0) << "the traffic is that of now";
}

TEST_F(DiscoveryTest, ThreeScansHeldBackByTrafficMakeTheNextQuietRoundScan) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  adapter->Config()->m_ScanInterval = 10;
  for (const int held : {2, 3}) {
    counters.mbps = 1.5;
    Discover();
    for (int i = 1; i <= held; ++i) {
      if (i == held) counters.mbps = 0.05;  // read at the end of the round
      EXPECT_EQ(ScansAfter(12s), 0u) << i;
    }
    EXPECT_EQ(ScansAfter(1s), held == 3 ? 1u : 0u);
  }
  EXPECT_EQ(ScansAfter(1s), 0u) << "the count starts anew";
}

TEST_F(DiscoveryTest, LongIntervalKeepsItsClockWhileTrafficHoldsTheScanBack) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  adapter->Config()->m_ScanInterval = 300;
  counters.mbps = 0.05;
  Discover();
  EXPECT_EQ(ScansAfter(319s), 0u) << "the scan itself took a second";
  EXPECT_EQ(ScansAfter(39s), 0u);
  EXPECT_EQ(ScansAfter(1s), 1u) << "a minute after it was due";
}

TEST_F(DiscoveryTest, FailedScanEndEndsTheWait) {
  wlan.onScan = [this](const DOT11_SSID*) {
    wlan.Post(700, [this] { wlan.NotifyScan(wlan_notification_acm_scan_fail); });
  };
  Start();
  const std::uint64_t before = Now();
  EXPECT_EQ(Discover(), 1);
  EXPECT_EQ(Now() - before, 700u);
  EXPECT_EQ(InhibitMs(), 0u);
}

TEST_F(DiscoveryTest, NetworkListThatFailsGivesZeroAndKeepsTheTree) {
  Start();
  Discover();
  for (const DWORD code : {ERROR_GEN_FAILURE, FakeWlan::kFault}) {
    wlan.codes["WlanGetAvailableNetworkList"] = code;
    EXPECT_EQ(Discover(), 0);
    EXPECT_EQ(auxError, 0);
    EXPECT_EQ(adapter->SnapshotEntries().size(), 3u);
    EXPECT_FALSE(Entry(u"Office", 1)->m_bss_scanned);
  }
  wlan.codes.clear();
  wlan.claims["WlanGetAvailableNetworkList"] = 0x01000000;
  EXPECT_EQ(Discover(), 0) << "an impossible count";
}

TEST_F(DiscoveryTest, BssListThatFailsIsToldByTheAuxiliaryError) {
  Start();
  Discover();
  wlan.codes["WlanGetNetworkBssList"] = ERROR_GEN_FAILURE;
  EXPECT_EQ(Discover(), 1);
  EXPECT_EQ(auxError, 100);
  EXPECT_EQ(Entry(u"Office", 1)->m_unscanned_count, 0u) << "no list, no ageing";
  wlan.codes.clear();
  wlan.claims["WlanGetNetworkBssList"] = 4;
  Discover();
  EXPECT_EQ(auxError, 100) << "more entries than its bytes hold";
  wlan.claims.clear();
  wlan.entries.clear();
  Discover();
  EXPECT_EQ(auxError, 0) << "an empty list is none";
  EXPECT_EQ(Entry(u"Office", 1)->m_unscanned_count, 1u);
}

TEST_F(DiscoveryTest, ElementsOutsideTheListAreNone) {
  const std::vector<std::uint8_t> elements = {3, 1, 36};
  for (const std::uint32_t away : {1u, 0x7FFFFFFFu, 0xFFFFFFFFu - 2000}) {
    wlan.entries = {{"Office", Bssid(1), 60, 5180000, elements, away}};
    if (!adapter) Start();
    EXPECT_EQ(Discover(), 1);
    ASSERT_TRUE(Entry(u"Office", 1));
    EXPECT_FALSE(Entry(u"Office", 1)->m_IEBlob);
  }
  wlan.entries = {{"Office", Bssid(1), 60, 5180000, elements, 0}};
  Discover();
  EXPECT_TRUE(Entry(u"Office", 1)->m_IEBlob);
}

TEST_F(DiscoveryTest, ConnectedEntryIsMarkedAndPegged) {
  StartConnected("Office", Bssid(2));
  wlan.Connect("Office", Bssid(2), 90);
  WLAN_CONNECTION_ATTRIBUTES attributes;
  adapter->QueryCurrentConnection(&attributes, true);
  Discover();
  EXPECT_TRUE(Entry(u"Office", 2)->m_bConnected);
  EXPECT_TRUE(Entry(u"Office", 2)->m_ever_connected);
  EXPECT_EQ(Entry(u"Office", 2)->m_PeggedLQ, 90u);
  EXPECT_FALSE(Entry(u"Office", 1)->m_bConnected);
  adapter->ClearConnected();
  Discover();
  EXPECT_FALSE(Entry(u"Office", 2)->m_bConnected);
  EXPECT_TRUE(Entry(u"Office", 2)->m_ever_connected);
  EXPECT_EQ(adapter->GetConnectedBssid(), MacAddress{});
}

TEST_F(DiscoveryTest, EachBandAveragesTheLoadThatItsEntriesTell) {
  const auto elements = [](int utilisation) {
    return Beacon(u8"Office").Channel(36).QbssLoad(3, utilisation).Bytes();
  };
  wlan.entries = {{"Office", Bssid(1), 60, 5180000, elements(0)},
                  {"Office", Bssid(2), 60, 5180000, elements(127)},
                  {"Office", Bssid(4)},
                  {"Cafe", Bssid(3), 30, 2437000}};
  Start();
  Discover();
  const auto& config = *adapter->Config();
  ASSERT_EQ(Entry(u"Office", 1)->m_QBSSPoints, 10);
  ASSERT_EQ(Entry(u"Office", 2)->m_QBSSPoints, 5);
  EXPECT_EQ(config.m_AvgQBSSScore5, 7);
  EXPECT_NEAR(config.m_AvgLoad5, 50 * 127 / 255.0, 0.01);
  EXPECT_EQ(config.m_AvgQBSSScore2, -1);
  EXPECT_EQ(config.m_AvgLoad2, -1.0);
}

TEST_F(DiscoveryTest, ForcedCountFallsByOneWithEachScan) {
  StartConnected("Office", Bssid(1));
  CGlobalConfigContainer::GetInstance().m_bULScan = false;
  Discover();
  adapter->Config()->m_force_scan_counter = 2;
  RunFor(10s);
  Discover(false);
  EXPECT_EQ(adapter->Config()->m_force_scan_counter, 1);
  Discover(false);
  EXPECT_EQ(wlan.scans.size(), 2u) << "not before the loop's sleep has passed";
  EXPECT_EQ(adapter->Config()->m_force_scan_counter, 1);
}

TEST_F(DiscoveryTest, SecondAdapterWaitsForTheBroadcastScanOfTheFirst) {
  Have({{1, u"A"}, {2, u"B"}});
  wlan.onScan = [this](const DOT11_SSID*) {
    const std::uint8_t number = wlan.scans.size() == 1 ? 2 : 1;
    wlan.Post(3000, [this, number] {
      const DWORD reason = 0;
      wlan.Notify(WLAN_NOTIFICATION_SOURCE_ACM, 7, &reason, 4, number);
    });
  };
  Start();
  const auto second = CWifiClientContainer::GetInstance().GetInterface(1);
  bool done = false;
  OnThread([&] {
    std::int32_t error = 0;
    second->DiscoverNetworksSynchronous(true, false, &error);
    done = true;
  });
  RunFor(1s);
  EXPECT_EQ(wlan.scans.size(), 1u);
  const std::uint64_t before = Now();
  EXPECT_EQ(Discover(), 1);
  EXPECT_EQ(Now() - before, 5000u) << "two seconds of the other scan, three of its own";
  EXPECT_TRUE(done);
}

TEST_F(DiscoveryTest, DetachEndsAScanThatWaits) {
  wlan.onScan = [](const DOT11_SSID*) {};
  Start();
  std::string thrown;
  OnThread([&] { thrown = ThrownBy([&] { adapter->ScanSynchronous(nullptr); }); });
  RunFor(2s);
  CWifiClientContainer::GetInstance().Shutdown();
  RunFor(100ms);
  EXPECT_EQ(thrown, "ScanSynchronous() - Got Exit Event!");
  EXPECT_FALSE(adapter->IsScanInFlight());
}

TEST_F(DiscoveryTest, FaultInTheWaitForAScanEndsThere) {
  Start();
  kernel.Faults().FailCall("WaitForMultipleObjects", 1, platform::sim::FaultPlan::kFault);
  Discover();
  EXPECT_FALSE(adapter->IsScanInFlight());
  EXPECT_FALSE(adapter->IsScanFresh());
  Discover();
  EXPECT_TRUE(adapter->IsScanFresh());
}

}  // namespace
}  // namespace corvane::test
