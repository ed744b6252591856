// The worker of one adapter beside a machine that goes to sleep and wakes.

#include "service/main_worker.h"

#include "monitors/power_window.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "settings/global_config_container.h"
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
    m_pConfig->SetSuggestedNetwork(u"Office [Channel 36]");
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

}  // namespace corvane::test
