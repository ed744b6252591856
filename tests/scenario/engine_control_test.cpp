// The load-balance engine in the running service: clients that switch it, the main loop that keeps
// it, and a stop from every state.

#include <optional>
#include <utility>
#include <vector>

#include "lb/engine_parts.h"
#include "lb/lb_config.h"
#include "platform/sim/kernel/sim_clock.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "platform/sim/kernel/sim_registry.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class EngineControlScenario : public ServiceTest {
 protected:
  void TearDown() override {
    client.reset();
    ServiceTest::TearDown();
    EXPECT_EQ(parts.Open(), 0);
  }
  void OnBooted() override {
    const platform::Platform& pc = Os();
    m_pPlatform.reset(new platform::Platform{
        pc.threads,     pc.clock,       pc.console,      pc.crypto, pc.eventTrace, pc.files,
        pc.ipHelper,    pc.networkList, pc.perfCounters, pc.power,  pc.registry,   pc.session,
        pc.wlan,        parts.driver,   parts.heap,      pc.http,   pc.icmp,       pc.pipes,
        parts.services, pc.sockets,     pc.windows});
    platform::SetPlatform(nullptr);
    platform::SetPlatform(m_pPlatform.get());
    if (enabledAtStart) WriteHome(u"LBEnabled", 1);
  }

  void StartWithClient(const WorldBuilder& world = OfficeWorld()) {
    Start(world);
    RunUntil(10'000);
    auto& kernel = Pc().Kernel();
    m_Pid = kernel.Session().StartProcess(u"corvane-client");
    client = std::make_unique<platform::sim::SimPipeClient>(kernel.Pipes(), m_Pid);
    ASSERT_TRUE(client->Connect(u"TRLSPipe"));
    RunFor(1s);
  }
  void Send(const std::string& name, int value) {
    const std::string token =
        "session," + std::to_string(m_Pid) + "," + std::to_string(++m_Nonce) + ",test";
    client->Send(Utf8ToWide(R"({"art":")" + platform::sim::SimCrypto::EncryptToken(token) +
                            R"(","cmd":"LBCommand","name":")" + name + R"(","value":)" +
                            std::to_string(value) + "}"));
  }
  // How long the echo takes; an hour without one.
  std::chrono::milliseconds Order(const std::string& name, int value) {
    const std::uint64_t before = Now();
    Send(name, value);
    std::optional<std::u16string> reply;
    RunUntilTrue([&] { return (reply = client->Receive()).has_value(); }, 60s);
    if (!reply || !reply->starts_with(u"{ \"status\":\"ok\"")) return 1h;
    return std::chrono::milliseconds(Now() - before);
  }
  void Hold(std::uint32_t code, platform::DWORD ms) {
    parts.driver.onControl = [=](std::uint32_t called) {
      if (called == code) Os().threads.Sleep(ms);
    };
  }

  bool enabledAtStart = false;
  EngineParts parts;
  std::unique_ptr<platform::sim::SimPipeClient> client;

 private:
  std::unique_ptr<platform::Platform> m_pPlatform;
  platform::DWORD m_Pid = 0;
  int m_Nonce = 0;
};

TEST_F(EngineControlScenario, AClientSwitchesItOnWeighsPausesAndSwitchesItOff) {
  StartWithClient();
  EXPECT_FALSE(EngineRuns());
  EXPECT_LE(Order("EnableLBEngine", 1), 200ms);
  EXPECT_TRUE(RunUntilTrue(&EngineRuns, 1s));
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u);
  EXPECT_LE(Order("SetLBPaused", 1), 200ms);
  EXPECT_EQ(HomeNumber(u"LBPaused"), 1u);
  EXPECT_LE(Order("SetLBPaused", 0), 200ms);
  EXPECT_LE(Order("SetLBWeightMode", 2), 200ms);
  RunFor(1s);
  EXPECT_EQ(HomeNumber(u"LBWeightMode"), 2u);
  EXPECT_EQ(parts.Steered(), "2/1 1/1 2/1 2/2");
  RunFor(30s);
  EXPECT_EQ(parts.Starts(), 1) << "the main loop starts what runs";
  EXPECT_LE(Order("DisableLBEngine", 0), 200ms);
  RunFor(30s);
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 0u);
  EXPECT_EQ(parts.Stops(), 1);
  EXPECT_FALSE(EngineRuns());
}

// Ten seconds of the driver and three of the stop itself.
TEST_F(EngineControlScenario, AClientWaitsNoLongerThanTheCallInProgress) {
  StartWithClient();
  EXPECT_LE(Order("EnableLBEngine", 1), 200ms);
  RunFor(1s);
  Hold(control::kStop, 10'000);
  EXPECT_LE(Order("DisableLBEngine", 0), 200ms) << "the command itself only queues";
  RunFor(1s);
  const auto waited = Order("EnableLBEngine", 2);
  EXPECT_GE(waited, 10s);
  EXPECT_LE(waited, 13s);
  RunFor(1s);
  EXPECT_TRUE(EngineRuns());
  EXPECT_LE(Order("SetLBWeightMode", 1), 200ms);
}

TEST_F(EngineControlScenario, TheServicesSwitchStopsItForThePresent) {
  enabledAtStart = true;
  Start(OfficeWorld());
  RunUntil(10'000);
  ASSERT_TRUE(EngineRuns());
  WriteHome(u"ServiceEnable", 0);
  EXPECT_TRUE(RunUntilTrue([] { return !EngineRuns(); }, 10s));
  EXPECT_TRUE(Printed("Main[Main loop]: SERVICE DISABLED: DISABLE LB-ENGINE ..."));
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u) << "the wish stays";
  RunFor(30s);
  EXPECT_EQ(parts.Stops(), 1);
  WriteHome(u"ServiceEnable", 1);
  EXPECT_TRUE(RunUntilTrue(&EngineRuns, 15s));
  EXPECT_EQ(parts.Steered(), "2/2 2/2");
}

TEST_F(EngineControlScenario, ItOutlivesAPassOfTheAdapters) {
  enabledAtStart = true;
  WorldBuilder world = OfficeWorld();
  world.Adapter().At(20'000, R"({"do": "adapter", "adapter": 1, "on": false})");
  Start(world);
  RunUntil(60'000);
  EXPECT_TRUE(Printed("adapter count changed! restarting..."));
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(parts.Starts(), 1);
}

TEST_F(EngineControlScenario, WithoutTheDriverTheServiceGoesOn) {
  enabledAtStart = true;
  parts.driver.present = false;
  Start(OfficeWorld(-80.0).Ap(OfficeBeacon(149), 2, -50.0));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s));
  EXPECT_TRUE(Printed("CLBConfig::DoConfigLBEngine: LoadBalanceConfig(2,2) FAILED! rc=321"));
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u);
  EXPECT_FALSE(EngineRuns());
}

// The pilot's dates lie in 2019.
TEST_F(EngineControlScenario, ThePilotStartsItBetweenItsDates) {
  constexpr std::int64_t kBetween = 1'571'572'800, kAfter = 1'572'609'600;  // seconds since 1970
  const auto setDate = [&](std::int64_t date) {
    const auto start = static_cast<std::int64_t>(platform::sim::kDefaultStartTime);
    Pc().Clock().SetWallOffset((date - start) * 1000);
  };
  Start(OfficeWorld());
  RunUntil(10'000);
  setDate(kBetween);
  RunFor(5s);
  EXPECT_FALSE(EngineRuns()) << "there is no pilot";
  WriteHome(u"LBWeightMode", 1);
  WriteHome(u"EnablePilot", 1);
  EXPECT_TRUE(RunUntilTrue(&EngineRuns, 5s));
  EXPECT_TRUE(Printed("Main[Main loop]: Pilot-2: *START* LB-ENGINE ..."));
  EXPECT_EQ(parts.Steered(), "2/2");
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u);

  setDate(kAfter);
  WriteHome(u"ServiceEnable", 0);
  EXPECT_TRUE(RunUntilTrue([] { return !EngineRuns(); }, 10s));
  RunFor(30s);
  EXPECT_FALSE(EngineRuns()) << "the pilot is over";
}

struct StopStory {
  const char* name;
  std::uint32_t heldCode;  // the call that the driver keeps for a while; 0 for none
  platform::DWORD heldMs;
  std::vector<std::pair<const char*, int>> orders;
  int stops;  // that the driver hears to the end
};

class EngineEndScenario : public EngineControlScenario,
                          public testing::WithParamInterface<StopStory> {};

// An orderly stop leaves no object, no handle and no memory behind, and does not stop the engine of
// its own accord.
TEST_P(EngineEndScenario, LeavesNothing) {
  const StopStory& story = GetParam();
  ASSERT_NO_FATAL_FAILURE(StartWithClient());
  int held = 0;
  parts.driver.onControl = [&](std::uint32_t code) {
    if (code != story.heldCode) return;
    ++held;
    Os().threads.Sleep(story.heldMs);
  };
  for (const auto& [name, value] : story.orders) EXPECT_LT(Order(name, value), 1s);
  if (story.heldCode != 0) {
    ASSERT_TRUE(RunUntilTrue([&] { return held > 0; }, 30s));
  }
  client.reset();
  ASSERT_TRUE(Stop());
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(Printed("EXIT - ERROR"));
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_EQ(parts.Open(), 0);
  EXPECT_EQ(parts.Stops(), story.stops);
}

INSTANTIATE_TEST_SUITE_P(
    EachState, EngineEndScenario,
    testing::Values(StopStory{"Down", 0, 0, {}, 0},
                    StopStory{"Up", 0, 0, {{"EnableLBEngine", 1}}, 0},
                    StopStory{"Paused", 0, 0, {{"EnableLBEngine", 1}, {"SetLBPaused", 1}}, 0},
                    StopStory{"InAStart", control::kHandshake, 8'000, {{"EnableLBEngine", 1}}, 0},
                    StopStory{"InAPass", control::kNotify, 8'000, {{"EnableLBEngine", 1}}, 0},
                    StopStory{"InAStop", 0, 0, {{"EnableLBEngine", 1}, {"DisableLBEngine", 0}}, 1},
                    StopStory{"InAStopThatHangs",
                              control::kStop,
                              3'600'000,
                              {{"EnableLBEngine", 1}, {"DisableLBEngine", 0}},
                              0}),
    [](const auto& story) { return story.param.name; });

}  // namespace corvane::test
