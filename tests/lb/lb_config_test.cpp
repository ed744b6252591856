// The engine's command worker over the engine itself and a driver by hand.

#include "lb/lb_config.h"

#include "engine/engine.h"
#include "lb/engine_parts.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_console.h"
#include "platform/sim/kernel/sim_registry.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

class LBConfigTest : public KernelTest {
 protected:
  LBConfigTest() {
    Use(parts.driver);
    Use(parts.heap);
    Use(parts.services);
  }
  void TearDown() override {
    kernel.Faults().Clear();
    engine.Stop(2000);
    LB_ReleaseEngine();
    KernelTest::TearDown();
    EXPECT_EQ(parts.Open(), 0);
  }

  // As the service does at its start.
  bool Open() {
    bool created = false;
    return engine.Initialize(&created, true, false);
  }
  void RunThread() {
    ASSERT_EQ(engine.BeginThread(), 0);
    RunFor(10ms);
  }
  void OpenAndRunThread() {
    ASSERT_TRUE(Open());
    RunThread();
  }
  void Store(const char16_t* name, std::uint32_t number) {
    kernel.Registry().SetDword(kHomeKeyPath, name, number);
  }
  std::optional<platform::DWORD> Stored(const char16_t* name) {
    return kernel.Registry().GetDword(kHomeKeyPath, name);
  }
  void FailWrites(const char* operation = "RegSetValueExW") {
    kernel.Faults().FailAlways(operation, platform::ERROR_ACCESS_DENIED);
  }
  // In the log since the last call.
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text, m_LogRead) != std::string::npos;
  }
  void ForgetLog() { m_LogRead = kernel.Console().Text().size(); }
  // How long it takes.
  template <class Act>
  std::chrono::milliseconds Time(Act&& act) {
    const auto before = kernel.Now();
    act();
    return kernel.Now() - before;
  }
  // A call of this kind takes so long in the driver from now on.
  void Hold(std::uint32_t code, platform::DWORD ms) {
    parts.driver.onControl = [=](std::uint32_t called) {
      if (called == code) Os().threads.Sleep(ms);
    };
  }

  EngineParts parts;
  CLBConfig& engine = CLBConfig::GetInstance();

 private:
  std::size_t m_LogRead = 0;
};

TEST_F(LBConfigTest, StartsWithWhatIsStored) {
  bool created = false;
  EXPECT_TRUE(engine.Initialize(&created, true, false)) << "nothing is stored";
  EXPECT_TRUE(created);
  EXPECT_FALSE(engine.IsRunning());
  EXPECT_EQ(engine.GetWeightMode(), 2u);
  EXPECT_EQ(Stored(u"LBPaused"), 0u);
  EXPECT_FALSE(EngineRuns());

  Store(u"LBPaused", 1);
  Store(u"LBWeightMode", 1);
  Store(u"LBEnabled", 1);
  EXPECT_TRUE(Open());
  EXPECT_TRUE(engine.IsRunning() && EngineRuns()) << "the caller waits for the engine";
  EXPECT_EQ(parts.Steered(), "2/1");
  EXPECT_EQ(Stored(u"LBPaused"), 0u) << "a pause outlives no start";

  Store(u"LBWeightMode", 7);
  EXPECT_TRUE(Open());
  EXPECT_EQ(engine.GetWeightMode(), 1u) << "a mode out of range is refused";
}

TEST_F(LBConfigTest, WithoutTheDriverTheStartFailsAndTheWishStays) {
  parts.driver.present = false;
  Store(u"LBEnabled", 1);
  EXPECT_FALSE(Open());
  EXPECT_TRUE(HasLog("CLBConfig::DoInitLBEngine: LB_InitializeEngine() Succeeded"));
  EXPECT_TRUE(HasLog("CLBConfig::DoConfigLBEngine: LoadBalanceConfig(2,2) FAILED! rc=321"));
  EXPECT_TRUE(engine.IsRunning());
  EXPECT_FALSE(EngineRuns());
  EXPECT_TRUE(engine.DisableLBEngine(false, false));
  EXPECT_EQ(Stored(u"LBEnabled"), 1u);

  parts.driver.present = true;
  parts.driver.answer = 3;
  EXPECT_FALSE(engine.EnableLBEngine(1, false));
  EXPECT_TRUE(HasLog("CLBConfig::DoInitLBEngine: LB_InitializeEngine() FAILED! rc = 1306"));
  parts.driver.answer = 1;
  EXPECT_TRUE(engine.EnableLBEngine(1, false)) << "the driver is of the right revision now";
  EXPECT_EQ(parts.Steered(), "2/1");
}

TEST_F(LBConfigTest, EnableTakesAModeOrKeepsTheOneInForce) {
  struct Row {
    std::uint32_t inForce, asked, result;
  };
  const Row rows[] = {{1, 7, 1}, {1, kLBWeightModeNotSet, 1}, {2, 1, 1},
                      {1, 2, 2}, {kLBWeightModeNotSet, 7, 2}, {kLBWeightModeNotSet, 1, 1}};
  for (const Row& row : rows) {
    Store(u"LBWeightMode", row.inForce);
    ASSERT_TRUE(Open());
    EXPECT_EQ(engine.GetWeightMode(), row.inForce);
    EXPECT_TRUE(engine.EnableLBEngine(row.asked, true));
    EXPECT_EQ(engine.GetWeightMode(), row.result) << row.inForce << " " << row.asked;
    EXPECT_EQ(Stored(u"LBWeightMode"), row.result) << row.inForce << " " << row.asked;
    EXPECT_EQ(Stored(u"LBEnabled"), 1u);
    Store(u"LBEnabled", 0);
  }
}

TEST_F(LBConfigTest, CarriesOutAClientsCommandsInTheirOrder) {
  ASSERT_TRUE(Open());
  EXPECT_TRUE(engine.SetLBWeightMode(1));
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  EXPECT_TRUE(engine.SetLBWeightMode(2));
  EXPECT_TRUE(engine.SetLBWeightMode(1));
  EXPECT_TRUE(engine.Pause());
  EXPECT_EQ(Stored(u"LBPaused"), 1u);
  EXPECT_TRUE(engine.Pause()) << "and nothing is queued";
  EXPECT_FALSE(EngineRuns());
  EXPECT_TRUE(engine.SetLBWeightMode(2));
  // One wake-up for all. The start takes the mode of now, the others that of when they were asked.
  RunThread();
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(parts.Steered(), "2/2 2/2 2/1 1/1 2/2") << "the first one came before the start";
}

TEST_F(LBConfigTest, PauseAndResumeAreToldOnce) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.EnableLBEngine(2, true));
  EXPECT_TRUE(engine.Resume()) << "it is not paused";
  EXPECT_TRUE(engine.Pause());
  EXPECT_TRUE(engine.Pause());
  RunFor(10ms);
  EXPECT_EQ(parts.Steered(), "2/2 1/2");
  EXPECT_TRUE(engine.Resume());
  EXPECT_TRUE(engine.Resume());
  RunFor(10ms);
  EXPECT_EQ(Stored(u"LBPaused"), 0u);
  EXPECT_EQ(parts.Steered(), "2/2 1/2 2/2");

  EXPECT_TRUE(engine.Pause());
  EXPECT_TRUE(engine.DisableLBEngine(true, true));
  EXPECT_EQ(Stored(u"LBPaused"), 0u) << "disable ends a pause";
  EXPECT_EQ(Stored(u"LBEnabled"), 0u);
  RunFor(5s);
  EXPECT_EQ(parts.Steered(), "2/2 1/2 2/2 1/2");
  EXPECT_EQ(parts.Stops(), 1);
  EXPECT_FALSE(EngineRuns());
}

TEST_F(LBConfigTest, AWeightModeIsStoredWhileDisabledAndNotTold) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.SetLBWeightMode(1));
  EXPECT_FALSE(engine.SetLBWeightMode(3));
  EXPECT_FALSE(engine.SetLBWeightMode(0));
  RunFor(10ms);
  EXPECT_EQ(engine.GetWeightMode(), 1u);
  EXPECT_EQ(Stored(u"LBWeightMode"), 1u);
  EXPECT_EQ(parts.Steered(), "");
  EXPECT_FALSE(HasLog("LBCMD_SET_WEIGHT_MODE")) << "an engine that is down is no failure";
  EXPECT_TRUE(engine.Pause());
  RunFor(10ms);
  EXPECT_TRUE(HasLog("CLBConfig::WorkThreadProc: [LBCMD_PAUSE] DoConfigLBEngine(1, 1) ) failed!"));
}

TEST_F(LBConfigTest, WhatCannotBeWrittenIsNotDone) {
  OpenAndRunThread();
  FailWrites();
  EXPECT_FALSE(engine.EnableLBEngine(1, true));
  EXPECT_TRUE(HasLog("EnableLBEngine: SetRegistry_LB_WeightMode() FAILED! m_WeightMode = 1"));
  EXPECT_TRUE(HasLog("CLBConfig::EnableLBEngine: SetRegistry_LB_Enabled(1) FAILED!"));
  EXPECT_FALSE(engine.SetLBWeightMode(2));
  EXPECT_FALSE(engine.Pause());
  EXPECT_TRUE(HasLog("CLBConfig::SetPausedState: SetRegistry_LB_Paused(1) FAILED!"));
  EXPECT_FALSE(engine.IsRunning());
  EXPECT_EQ(engine.GetWeightMode(), 1u);
  kernel.Faults().Clear();
  RunFor(10ms);
  EXPECT_FALSE(EngineRuns());

  // The mode alone may stay unwritten.
  kernel.Faults().FailCall("RegSetValueExW", 1, platform::ERROR_ACCESS_DENIED);
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  EXPECT_TRUE(EngineRuns());
  FailWrites();
  EXPECT_FALSE(engine.DisableLBEngine(true, true));
  EXPECT_TRUE(HasLog("CLBConfig::DisableLBEngine: SetRegistry_LB_Enabled(0) FAILED!"));
  EXPECT_TRUE(engine.IsRunning());
  kernel.Faults().Clear();
  FailWrites("RegCreateKeyExW");
  EXPECT_FALSE(engine.DisableLBEngine(false, true)) << "the home key cannot be opened";
  EXPECT_TRUE(HasLog(
      "CLBConfig::Initialize: CRegistryHelperBase::Initialize(SOFTWARE\\OstrelNetworks\\Corvane"));
}

TEST_F(LBConfigTest, ACommandThatFailsIsLoggedAndNotTriedAgain) {
  OpenAndRunThread();
  kernel.Faults().FailAlways("CreateThread", platform::sim::FaultPlan::kFault);
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  EXPECT_TRUE(HasLog("CLBConfig::DoInitLBEngine: LB_InitializeEngine() FAILED! rc = 6"));
  EXPECT_TRUE(HasLog("[LBCMD_INIT_START] DoInitAndConfigLBEngine() [m_WeightMode= 1] failed!"));
  EXPECT_FALSE(EngineRuns());
  EXPECT_EQ(parts.Open(), 0);
  kernel.Faults().Clear();
  parts.driver.failCode = control::kSteer;
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  EXPECT_TRUE(EngineRuns());
  EXPECT_TRUE(HasLog("CLBConfig::DoConfigLBEngine: LoadBalanceConfig(2,1) FAILED! rc=31"));
  EXPECT_EQ(parts.Steered(), "");
  parts.driver.failCode = 0;
  EXPECT_TRUE(engine.Pause());
  RunFor(10ms);
  EXPECT_EQ(parts.Steered(), "1/1");
  EXPECT_EQ(parts.Starts(), 1);
}

TEST_F(LBConfigTest, AFaultInTheDriverFailsTheCommandAlone) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  const auto fault = [this](std::uint32_t code) {
    parts.driver.onControl = [code](std::uint32_t called) {
      if (called == code) throw platform::PlatformFault{0xC0000005};
    };
  };
  fault(control::kSteer);
  EXPECT_TRUE(engine.Pause());
  RunFor(10ms);
  EXPECT_TRUE(HasLog(">>>>>>>>>>>>>>>>>>>>[[ CLBConfig::filterException 0xc0000005"));
  EXPECT_TRUE(
      HasLog("CLBConfig::LoadBalanceConfig(1, 1) __EXCEPTION__ - s_LastExceptionCode=0xc0000005"));
  EXPECT_TRUE(HasLog("[LBCMD_PAUSE] DoConfigLBEngine(1, 1) ) failed!"));
  EXPECT_TRUE(EngineRuns());

  fault(control::kStop);
  EXPECT_TRUE(engine.DisableLBEngine(true, true));
  RunFor(3s);
  EXPECT_TRUE(HasLog("CLBConfig::DoStopLBEngine: __EXCEPTION__ - s_LastExceptionCode=0xc0000005"));
  EXPECT_TRUE(HasLog("CLBConfig::DoStopLBEngine(0) LB_StopEngine() FAILED!"));
  EXPECT_TRUE(HasLog("[LBCMD_STOP] DoStopLBEngine() failed!"));
  EXPECT_FALSE(EngineRuns());
  EXPECT_EQ(parts.Open(), 0);
  parts.driver.onControl = nullptr;
  EXPECT_TRUE(engine.EnableLBEngine(2, true));
  RunFor(10ms);
  EXPECT_TRUE(EngineRuns()) << "it counted as one that is up";
}

TEST_F(LBConfigTest, TheLogTellsHowOldACommandWas) {
  ASSERT_TRUE(Open());
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(500ms);
  Hold(control::kSteer, 250);
  ASSERT_EQ(engine.BeginThread(), 0);
  RunFor(1s);
  EXPECT_TRUE(
      HasLog("[LBCMD_INIT_START] DoInitAndConfigLBEngine() [m_WeightMode= 1] succeeded, "
             "delta1=500, delta2=750"));
}

TEST_F(LBConfigTest, AClientDoesNotWaitForWhatHasPiledUp) {
  ASSERT_TRUE(Open());
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  EXPECT_TRUE(engine.SetLBWeightMode(2));
  EXPECT_TRUE(engine.SetLBWeightMode(1));
  Hold(control::kSteer, 5'000);
  RunThread();
  const auto waited = Time([&] { EXPECT_TRUE(engine.SetLBWeightMode(2)); });
  EXPECT_GE(waited, 4900ms);
  EXPECT_LE(waited, 5s);
  RunFor(20s);
  EXPECT_EQ(parts.Steered(), "2/1 2/2 2/1 2/2");
}

TEST_F(LBConfigTest, TheEngineCountsAsUpUntilItsStopHasEnded) {
  ASSERT_TRUE(Open());
  EXPECT_TRUE(engine.EnableLBEngine(1, false));
  EXPECT_TRUE(engine.Pause());
  parts.driver.onControl = [this](std::uint32_t called) {
    if (called == control::kStop) RunThread();
  };
  EXPECT_TRUE(engine.DisableLBEngine(false, false));
  EXPECT_EQ(parts.Steered(), "2/1 1/1") << "a pause beside the stop is not told";
  EXPECT_TRUE(engine.Pause());
  RunFor(10ms);
  EXPECT_TRUE(HasLog("[LBCMD_PAUSE] DoConfigLBEngine(1, 1) ) failed!")) << "it is down now";
}

TEST_F(LBConfigTest, TheMainThreadsStartWaitsForAStopInTheQueue) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  EXPECT_TRUE(engine.DisableLBEngine(true, true));
  RunFor(1s);
  EXPECT_TRUE(engine.EnableLBEngine(1, false));
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(parts.Stops(), 1);
  EXPECT_EQ(parts.Starts(), 2);
  EXPECT_TRUE(engine.DisableLBEngine(true, true));
  RunFor(4s);
  EXPECT_FALSE(EngineRuns()) << "what the main thread has started, a client can stop";
}

TEST_F(LBConfigTest, TheMainThreadsStopBesideAStartLeavesNoFalseNote) {
  OpenAndRunThread();
  Hold(control::kStart, 5'000);
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(1s);
  EXPECT_TRUE(engine.DisableLBEngine(false, false));
  EXPECT_FALSE(EngineRuns());
  EXPECT_TRUE(engine.EnableLBEngine(2, false));
  EXPECT_TRUE(EngineRuns()) << "the engine passed for one that is up";
}

TEST_F(LBConfigTest, StopEndsTheThreadAtOnceAndLeavesTheEngine) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  EXPECT_LT(Time([&] { engine.Stop(2000); }), 10ms);
  EXPECT_FALSE(engine.CThreadBase::IsRunning());
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(parts.Stops(), 0);
  EXPECT_FALSE(engine.Pause()) << "nobody is there to carry it out";
}

TEST_F(LBConfigTest, StopGivesUpAThreadThatIsStuckInTheDriver) {
  OpenAndRunThread();
  EXPECT_TRUE(engine.EnableLBEngine(1, true));
  RunFor(10ms);
  Hold(control::kStop, 3'600'000);
  EXPECT_TRUE(engine.DisableLBEngine(true, true));
  EXPECT_TRUE(engine.Pause());
  RunFor(1s);
  const auto waited = Time([&] { engine.Stop(2000); });
  EXPECT_GE(waited, 2s);
  EXPECT_LT(waited, 2500ms);
  EXPECT_TRUE(Os().threads.AwaitAbandoned(10'000));
  EXPECT_EQ(parts.Steered(), "2/1") << "what was queued behind it is not carried out";
  EXPECT_EQ(parts.Open(), 0);
}

}  // namespace
}  // namespace corvane::test
