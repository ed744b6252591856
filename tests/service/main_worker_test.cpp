// The worker of one adapter beside a machine that goes to sleep and wakes.

#include "service/main_worker.h"

#include "monitors/network_list_manager.h"
#include "monitors/power_window.h"
#include "platform/icmp_api.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/world/world_text.h"
#include "platform/socket_api.h"
#include "score/backup_score.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {

class WorkerTest : public PcTest {
 protected:
  void Start(const WorldBuilder& world) {
    Boot(world.Build());
    CGlobalConfigContainer::GetInstance().Initialize(true);
    CWifiClientContainer::GetInstance().Initialize();
    m_pAdapter = CWifiClientContainer::GetInstance().GetInterface(0);
    m_pConfig = m_pAdapter->Config();
    m_pWorker = CQUAYMainWorker::CreateObject();
    m_pWorker->Bind(0, m_pAdapter.get());
    m_pWorker->BeginThread();
    CPowerWindow::GetInstance().Initialize(10, 10);
  }
  void TearDown() override {
    m_pWorker->Shutdown();
    CPowerWindow::GetInstance().Shutdown();
    m_pWorker.reset(), m_pConfig.reset(), m_pAdapter.reset();
    CGlobalConfigContainer::GetInstance().Shutdown(true);
    CWifiClientContainer::GetInstance().Shutdown();
    PcTest::TearDown();
  }

  CSmartPointer<CWlanInterface> m_pAdapter;
  CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  CSmartPointer<CQUAYMainWorker> m_pWorker;
};

// Each fact of a connection has its share in the score that stands in for its access point.
TEST_F(WorkerTest, BackupScoreCountsEveryFactOfTheConnection) {
  const auto beacon = Beacon(u8"Guest").Channel(36).He80(2).Rsn({AKM_PSK}).QbssLoad(1, 51);
  WorldBuilder world;
  world.Adapter().Ap(beacon, 1, -60.0).Profile("Guest").Network("Guest", 1).Connected(1);
  Start(world.AutoSwitch(300));
  CNetworkListManager::GetInstance().RefreshNetworkCategories();  // as the main thread does
  m_pConfig->SetString(value::kScoreCfgJson, u"{\"SQMax\": 40}");
  RunFor(60s);
  const auto link = m_pAdapter->GetConnAttrs().wlanAssociationAttributes;
  ASSERT_GT(link.ulRxRate + link.ulTxRate, 0u);
  ScoreWeights weights;
  weights.SQMax = 40;
  constexpr std::int32_t kHe = 10, kAverage = 8;
  const std::int32_t expected =
      ComputeBackupScore({link.wlanSignalQuality, weights, true, link.ulRxRate, link.ulTxRate, kHe,
                          kAverage, kAverage, true});
  EXPECT_EQ(m_pAdapter->Link().BackupScore(), expected);
  m_pConfig->m_AvgQBSSScore5 = -1;  // until the next scores; the last one is remembered
  RunFor(10s);
  EXPECT_EQ(m_pAdapter->Link().BackupScore(), expected);
}

// No scan is due, so that what is heard after waking was looked for.
TEST_F(WorkerTest, SleepAndWakingForgetWhatWasSeenAndLookAnew) {
  const auto office = [](int channel) {
    return Beacon(u8"Office").Channel(channel).Vht80(2).Rsn({AKM_PSK});
  };
  WorldBuilder world;
  world.Adapter().Connected(1)->adapters[0].autoConnect = false;
  world.Ap(office(36), 1, -60.0).Ap(office(52), 2, -70.0).Profile("Office").Network("Office", 1);
  Start(world.AutoSwitch(300)
            .At(20'000, R"({"do": "roam", "bssid": "02-50-00-00-00-02"})")
            .At(60'000, R"({"do": "suspend"})")
            .At(75'000, R"({"do": "resume"})"));
  auto& session = Pc().Kernel().Session();
  const auto suggest = [&] {
    m_pConfig->SetString(value::kSuggestedNetwork, u"Office [Channel 36]");
    session.StartProcess(u"NudgeDialog.exe");
  };
  const auto expectForgotten = [&] {
    WString suggestion;
    EXPECT_TRUE(m_pConfig->GetString(value::kSuggestedNetwork, &suggestion) && suggestion.empty());
    EXPECT_EQ(session.CountRunning(u"NudgeDialog.exe"), 0u);
    EXPECT_EQ(m_pConfig->GetRoamingInhibitTick(), 0u);
  };
  RunFor(59s);
  ASSERT_NE(m_pConfig->GetRoamingInhibitTick(), 0u);
  suggest();
  RunFor(14s);
  expectForgotten();
  EXPECT_TRUE(m_pAdapter->SnapshotEntries().empty());
  EXPECT_TRUE(IsZero(m_pAdapter->GetConnectedBssid()));

  suggest();
  m_pConfig->SetRoamingInhibit();
  m_pConfig->m_bForcePopupOverride = true;
  RunFor(15s);
  expectForgotten();
  EXPECT_FALSE(m_pConfig->m_bForcePopupOverride);
  EXPECT_EQ(m_pAdapter->SnapshotEntries().size(), 2u);
  RunFor(60s);
  EXPECT_EQ(m_pAdapter->GetConnectedBssid(), ApBssid(1)) << "it finds its way back";
  EXPECT_EQ(m_pConfig->GetRoamingInhibitTick(), 0u);
}

// A lack of memory in the ending of the dialog program cuts the round off there: what is done
// before it has then been done.
TEST_F(WorkerTest, ForgetsInItsOrder) {
  using platform::sim::FaultPlan;
  WorldBuilder world;
  world.Adapter().Connected(1).Ap(Beacon(u8"Office").Channel(36).Vht80(2), 1, -60.0);
  Start(world.Profile("Office").AutoSwitch(300));
  const auto cutOff = [&](auto&& cause) {
    RunFor(25s);
    ASSERT_EQ(m_pAdapter->GetConnectedBssid(), ApBssid(1));
    Pc().Faults().FailAlways("CreateToolhelp32Snapshot", FaultPlan::kNoMemory);
    cause();
    RunFor(12s);
    EXPECT_FALSE(m_pWorker->IsRunning());
    Pc().Faults().Clear();
  };
  for (const platform::WPARAM event : {4u, 18u}) {
    cutOff([&] { Pc().Devices().Windows().TellPower(event); });
    EXPECT_TRUE(IsZero(m_pAdapter->GetConnectedBssid())) << event;
    EXPECT_TRUE(m_pAdapter->SnapshotEntries().empty()) << event;
    m_pWorker->BeginThread();
  }
  cutOff([&] { Pc().Faults().FailAlways("WlanGetNetworkBssList", platform::ERROR_GEN_FAILURE); });
  EXPECT_FALSE(m_pAdapter->SnapshotEntries().empty()) << "the dialog goes before the networks";
}

TEST_F(WorkerTest, WakingEmptiesTheLastSsidAtOnceAndAStopEndsTheSubscription) {
  WorldBuilder world;
  world.Adapter().Connected(1).Ap(Beacon(u8"Office").Channel(36).Vht80(2), 1, -60.0);
  Start(world.Profile("Office").AutoSwitch(300));
  RunFor(25s);
  ASSERT_EQ(m_pAdapter->GetLastConnectedSsid(), u"Office");
  Pc().Devices().Windows().TellPower(4);
  Pc().Devices().Windows().TellPower(18);
  RunFor(1ms);
  EXPECT_EQ(m_pAdapter->GetLastConnectedSsid(), u"");
  RunFor(12s);
  EXPECT_EQ(m_pAdapter->GetLastConnectedSsid(), u"Office");
  EXPECT_GT(m_pWorker->GetRefCount(), 1u);
  m_pWorker->Shutdown();  // it gives the thread up, which sleeps
  RunFor(1s);
  EXPECT_EQ(m_pWorker->GetRefCount(), 1u);
}

TEST_F(WorkerTest, AStopDuringTheSleepIsFollowedByNoProbe) {
  WorldBuilder world;
  world.Adapter().Connected(1).Ap(Beacon(u8"Office").Channel(36).Vht80(2), 1, -60.0);
  world.Profile("Office").Network("Office", 1).AutoSwitch(300);
  platform::sim::IpSettings& ip = world->networks[0].ip;
  ASSERT_TRUE(platform::sim::ReadIpAddress("10.3.0.20", &ip.unicast.emplace_back()));
  ASSERT_TRUE(platform::sim::ReadIpAddress("10.3.0.1", &ip.gateways.emplace_back()));
  platform::sim::RegistryWrite detector;
  detector.key = platform::sim::kHomeKey;
  detector.name = u"IDET";
  detector.number = 1;
  world->registry.push_back(detector);
  Start(world);
  ASSERT_EQ(Os().sockets.WSAStartup(0x0202), 0);
  const auto probes = [&](auto&& during) {
    Pc().Faults().FailAlways("IcmpSendEcho", platform::IP_REQ_TIMED_OUT);
    const auto before = Pc().Faults().Injected();
    during();
    return Pc().Faults().Injected() - before;
  };
  RunFor(25s);
  EXPECT_GT(probes([&] { RunFor(5s); }), 0u);
  EXPECT_EQ(probes([&] { m_pWorker->Shutdown(); }), 0u);
  Os().sockets.WSACleanup();
}

}  // namespace corvane::test
