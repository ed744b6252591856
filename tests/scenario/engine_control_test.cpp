// The load-balance engine in the running service, over the simulated driver: clients that switch
// it, the main loop that keeps it, drivers of every kind, and a stop from every state.

#include <algorithm>
#include <optional>
#include <vector>

#include "engine/engine.h"
#include "engine/engine_snapshot.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/sim_clock.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "scenario/service_fixture.h"
#include "support/source_dir.h"

namespace corvane::test {

using platform::sim::SimDevices;
using platform::sim::SimDriver;

class EngineControlScenario : public ServiceTest {
 protected:
  void TearDown() override {
    client.reset();
    for (const std::string& finding : Told().findings) ADD_FAILURE() << finding;
    ServiceTest::TearDown();
  }
  void OnBooted() override {
    if (enabledAtStart) WriteHome(u"LBEnabled", 1);
  }
  static WorldBuilder DriverWorld(double dbm = -75.0) {
    WorldBuilder world = OfficeWorld(dbm);
    world->driver.emplace();
    return world;
  }

  void StartWithClient(const WorldBuilder& world = DriverWorld()) {
    Start(world);
    RunUntil(10'000);
    auto& kernel = Pc().Kernel();
    m_Pid = kernel.Session().StartProcess(u"corvane-client");
    client = std::make_unique<platform::sim::SimPipeClient>(kernel.Pipes(), m_Pid);
    ASSERT_TRUE(client->Connect(u"TRLSPipe"));
    RunFor(1s);
  }
  // How long the echo takes; an hour without one.
  std::chrono::milliseconds Order(const std::string& name, int value) {
    const std::string token =
        "session," + std::to_string(m_Pid) + "," + std::to_string(++m_Nonce) + ",test";
    const std::uint64_t before = Now();
    client->Send(Utf8ToWide(R"({"art":")" + platform::sim::SimCrypto::EncryptToken(token) +
                            R"(","cmd":"LBCommand","name":")" + name + R"(","value":)" +
                            std::to_string(value) + "}"));
    std::optional<std::u16string> reply;
    RunUntilTrue([&] { return (reply = client->Receive()).has_value(); }, 60s);
    if (!reply || !reply->starts_with(u"{ \"status\":\"ok\"")) return 1h;
    return std::chrono::milliseconds(Now() - before);
  }
  // Changes these members of the driver.
  void Change(const std::string& members) { Do((R"({"do": "driver", )" + members + "}").c_str()); }
  SimDriver::Report Told() { return Pc().Devices().Driver().Tell(); }
  // The last order of steering, as "command/mode".
  std::string Steers() {
    const SimDriver::Report told = Told();
    return std::to_string(told.command) + "/" + std::to_string(told.mode);
  }
  static bool EngineRuns() {
    LBEngineSnapshot snapshot;
    return LB_SnapshotEngine(&snapshot);
  }

  bool enabledAtStart = false;
  std::unique_ptr<platform::sim::SimPipeClient> client;

 private:
  platform::DWORD m_Pid = 0;
  int m_Nonce = 0;
};

TEST_F(EngineControlScenario, AClientSwitchesItOnWeighsPausesAndSwitchesItOff) {
  StartWithClient();
  EXPECT_FALSE(EngineRuns());
  struct Row {
    const char* name;
    int value;
    const char16_t* stored;
    std::uint32_t as;
    const char* steers;
  };
  for (const Row& row :
       {Row{"EnableLBEngine", 1, u"LBEnabled", 1, "2/1"},
        Row{"SetLBPaused", 1, u"LBPaused", 1, "1/1"},
        Row{"SetLBWeightMode", 2, u"LBWeightMode", 2, "2/2"},
        Row{"SetLBPaused", 0, u"LBPaused", 0, "2/2"}, Row{"SetLBPaused", 1, u"LBPaused", 1, "1/2"},
        Row{"EnableLBEngine", 0, u"LBPaused", 0, "2/2"}}) {
    EXPECT_LE(Order(row.name, row.value), 200ms) << row.name;
    RunFor(1s);
    EXPECT_EQ(HomeNumber(row.stored), row.as) << row.name;
    EXPECT_EQ(Steers(), row.steers) << row.name << " " << row.value;
  }
  RunFor(30s);
  EXPECT_TRUE(EngineRuns() && Told().started);
  EXPECT_EQ(Told().handshakes, 1u) << "the main loop starts what runs";
  EXPECT_LE(Order("DisableLBEngine", 0), 200ms);
  RunFor(30s);
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 0u);
  EXPECT_EQ(Told().stops, 1u);
  EXPECT_FALSE(EngineRuns() || Told().handshaken);
}

// What brings a driver to its start once nothing is wrong with it any more.
enum class Remedy { kNone, kOrder, kStopAndOrder };

struct DriverStory {
  const char* name;
  const char* driver;  // what is special about it; null: there is none
  bool runs;           // the engine, once a client has enabled it
  bool starts;         // the driver, before it is mended
  const char* line;    // of the log
  Remedy remedy;
};

class EngineDriverScenario : public EngineControlScenario,
                             public testing::WithParamInterface<DriverStory> {
 protected:
  void OnBooted() override {
    if (GetParam().driver) Change(GetParam().driver);
  }
};

// Whatever the driver does, a client is answered at once, its wish is stored, and the service goes
// on.
TEST_P(EngineDriverScenario, IsEnabledByAClient) {
  const DriverStory& story = GetParam();
  WorldBuilder world = DriverWorld();
  if (!story.driver) world->driver.reset();
  ASSERT_NO_FATAL_FAILURE(StartWithClient(world));
  EXPECT_LE(Order("EnableLBEngine", 1), 200ms);
  RunFor(30s);
  EXPECT_EQ(EngineRuns(), story.runs);
  EXPECT_EQ(Told().started, story.starts);
  EXPECT_TRUE(Printed(story.line)) << story.line;
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u);
  EXPECT_EQ(Pc().Devices().CountOutstanding().heaps, story.runs ? 1u : 0u);
  EXPECT_GT(CountRounds(30s), 0);

  Change(R"("present": true, "answer": "ready", "fails": [], "delay": 0)");
  if (story.remedy != Remedy::kNone) {
    RunFor(30s);
    EXPECT_FALSE(Told().started) << "nobody has asked for it";
    if (story.remedy == Remedy::kStopAndOrder) {
      EXPECT_LE(Order("DisableLBEngine", 0), 200ms);
    }
    EXPECT_LE(Order("EnableLBEngine", 0), 4s);
  }
  EXPECT_TRUE(RunUntilTrue([this] { return Told().started; }, 60s));
  EXPECT_TRUE(EngineRuns());
  EXPECT_LE(Order("SetLBPaused", 1), 200ms);
  RunFor(1s);
  EXPECT_EQ(Steers(), "1/1");
}

constexpr char kSucceeds[] = "CLBConfig::DoInitLBEngine: LB_InitializeEngine() Succeeded";
constexpr char kNoDevice[] = "CLBConfig::DoConfigLBEngine: LoadBalanceConfig(2,1) FAILED! rc=321";

// Without a device the library's start passes for a success: only a stop makes the next order start
// it again.
INSTANTIATE_TEST_SUITE_P(
    EachDriver, EngineDriverScenario,
    testing::Values(
        DriverStory{"ThatIsThere", "\"starts\": true", true, true, kSucceeds, Remedy::kNone},
        DriverStory{"ThatItsServiceBrings", R"("present": false, "starts": true)", true, true,
                    kSucceeds, Remedy::kNone},
        DriverStory{"ThatIsLate", R"("answer": "notYet")", true, false, kSucceeds, Remedy::kNone},
        DriverStory{"ThatIsDeafToTheHandshake", R"("fails": ["handshake"])", true, false, kSucceeds,
                    Remedy::kNone},
        DriverStory{"ThatIsSlow", R"("delay": "500ms")", true, true, kSucceeds, Remedy::kNone},
        DriverStory{"ThatIsOfAnotherRevision", R"("answer": "otherRevision")", false, false,
                    "CLBConfig::DoInitLBEngine: LB_InitializeEngine() FAILED! rc = 1306",
                    Remedy::kOrder},
        DriverStory{"ThatRefusesTheRecord", R"("answer": "badRecord")", false, false,
                    "CLBConfig::DoInitLBEngine: LB_InitializeEngine() FAILED! rc = 87",
                    Remedy::kOrder},
        DriverStory{"ThatIsAbsent", R"("present": false)", false, false, kNoDevice,
                    Remedy::kStopAndOrder},
        DriverStory{"ThatIsNotInstalled", nullptr, false, false, kNoDevice, Remedy::kStopAndOrder}),
    [](const auto& story) { return story.param.name; });

// It has forgotten the tables, and hears of them again by the next start.
TEST_F(EngineControlScenario, ADriverThatWasGoneIsBackForTheNextStart) {
  StartWithClient();
  EXPECT_LE(Order("EnableLBEngine", 1), 200ms);
  RunFor(20s);
  ASSERT_TRUE(Told().started && !Told().heard.empty());
  Change("\"present\": false");
  RunFor(20s);
  EXPECT_LE(Order("SetLBPaused", 1), 200ms);
  EXPECT_TRUE(RunUntilTrue(
      [this] { return Printed("DoConfigLBEngine: LoadBalanceConfig(1,1) FAILED! rc=321"); }, 1s));
  EXPECT_TRUE(EngineRuns()) << "its own threads wait for the driver";
  Change("\"present\": true");
  RunFor(20s);
  EXPECT_LE(Order("SetLBPaused", 0), 200ms);
  RunFor(1s);
  EXPECT_EQ(Steers(), "2/1");
  EXPECT_FALSE(Told().handshaken);
  EXPECT_LE(Order("DisableLBEngine", 0), 200ms);
  EXPECT_LE(Order("EnableLBEngine", 1), 4s);
  EXPECT_TRUE(RunUntilTrue([this] { return Told().started; }, 5s));
}

// Ten seconds of the driver and three of the stop itself.
TEST_F(EngineControlScenario, AClientWaitsNoLongerThanTheCallInProgress) {
  StartWithClient();
  EXPECT_LE(Order("EnableLBEngine", 1), 200ms);
  RunFor(1s);
  Change("\"delay\": \"10s\"");
  EXPECT_LE(Order("DisableLBEngine", 0), 200ms) << "the command itself only queues";
  RunFor(1s);
  Change("\"delay\": 0");
  const auto waited = Order("EnableLBEngine", 2);
  EXPECT_GE(waited, 10s);
  EXPECT_LE(waited, 13s);
  RunFor(1s);
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(Steers(), "2/2");
  EXPECT_LE(Order("SetLBWeightMode", 1), 200ms);
}

TEST_F(EngineControlScenario, TheServicesSwitchStopsItForThePresent) {
  enabledAtStart = true;
  Start(DriverWorld());
  RunUntil(10'000);
  ASSERT_TRUE(EngineRuns());
  WriteHome(u"ServiceEnable", 0);
  EXPECT_TRUE(RunUntilTrue([] { return !EngineRuns(); }, 10s));
  EXPECT_TRUE(Printed("Main[Main loop]: SERVICE DISABLED: DISABLE LB-ENGINE ..."));
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u) << "the wish stays";
  RunFor(30s);
  EXPECT_EQ(Told().stops, 1u);
  WriteHome(u"ServiceEnable", 1);
  EXPECT_TRUE(RunUntilTrue([this] { return Told().started; }, 15s));
  EXPECT_EQ(Steers(), "2/2");
}

TEST_F(EngineControlScenario, ItOutlivesAPassOfTheAdapters) {
  enabledAtStart = true;
  WorldBuilder world = DriverWorld();
  world.Adapter().At(20'000, R"({"do": "adapter", "adapter": 1, "on": false})");
  Start(world);
  RunUntil(60'000);
  EXPECT_TRUE(Printed("adapter count changed! restarting..."));
  EXPECT_TRUE(EngineRuns());
  EXPECT_EQ(Told().handshakes, 1u);
}

TEST_F(EngineControlScenario, WithoutTheDriverTheServiceGoesOn) {
  enabledAtStart = true;
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
  Start(DriverWorld());
  RunUntil(10'000);
  setDate(kBetween);
  RunFor(5s);
  EXPECT_FALSE(EngineRuns()) << "there is no pilot";
  WriteHome(u"LBWeightMode", 1);
  WriteHome(u"EnablePilot", 1);
  EXPECT_TRUE(RunUntilTrue([] { return EngineRuns(); }, 5s));
  EXPECT_TRUE(Printed("Main[Main loop]: Pilot-2: *START* LB-ENGINE ..."));
  EXPECT_EQ(Steers(), "2/2");
  EXPECT_EQ(HomeNumber(u"LBEnabled"), 1u);

  setDate(kAfter);
  WriteHome(u"ServiceEnable", 0);
  EXPECT_TRUE(RunUntilTrue([] { return !EngineRuns(); }, 10s));
  RunFor(30s);
  EXPECT_FALSE(EngineRuns()) << "the pilot is over";
}

// The desk's cable gets another address and another gateway while the driver steers over it, and
// the link carries traffic.
TEST_F(EngineControlScenario, AnAddressThatChangesUnderLoadIsToldAsMoved) {
  constexpr platform::DWORD kCable = 1, kNewAndMoved = 5;
  const std::string path = SourceDir() + "/worlds/desk-with-cables.json";
  WorldBuilder world;
  *world.operator->() = platform::sim::ParseWorld(platform::ReadTextFile(path), path);
  Start(world.Traffic(30'000, 300'000, 40.0));
  RunUntil(125'000);
  const auto steered = [this] {
    const auto slots = Told().steered;
    return std::ranges::find(slots, int{kCable}) != slots.end();
  };
  ASSERT_TRUE(steered());
  const std::size_t before = Told().heard.size();
  RunUntil(140'000);
  const auto heard = Told().heard;
  ASSERT_EQ(heard.size(), before + 1);
  EXPECT_EQ(heard.back().device, kCable);
  EXPECT_EQ(heard.back().kind, 2u) << "it begins anew";
  EXPECT_EQ(heard.back().value, kNewAndMoved);
  EXPECT_TRUE(steered()) << "and is taken over again";
}

struct Step {
  const char* driver;  // what changes about it before; empty: nothing
  const char* order;
  int value;
  std::chrono::milliseconds then;  // time until the next step
};
struct StopStory {
  const char* name;
  std::vector<Step> steps;
  std::uint64_t stops;  // that the driver hears to the end
};

class EngineEndScenario : public EngineControlScenario,
                          public testing::WithParamInterface<StopStory> {};

// An orderly stop leaves no object, no handle and no memory behind, and does not stop the engine of
// its own accord.
TEST_P(EngineEndScenario, LeavesNothing) {
  const StopStory& story = GetParam();
  ASSERT_NO_FATAL_FAILURE(StartWithClient());
  for (const Step& step : story.steps) {
    if (*step.driver) Change(step.driver);
    if (*step.order) {
      EXPECT_LT(Order(step.order, step.value), 1s);
    }
    RunFor(step.then);
  }
  client.reset();
  ASSERT_TRUE(Stop());
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(Printed("EXIT - ERROR"));
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_EQ(Pc().Devices().CountOutstanding(), SimDevices::Outstanding{});
  EXPECT_EQ(Told().stops, story.stops);
}

constexpr char kHangs[] = "\"delay\": \"1h\"";
constexpr char kSlow[] = "\"delay\": \"8s\"";

INSTANTIATE_TEST_SUITE_P(
    EachState, EngineEndScenario,
    testing::Values(
        StopStory{"Down", {}, 0}, StopStory{"Up", {{"", "EnableLBEngine", 1, 1s}}, 0},
        StopStory{"Steering", {{"", "EnableLBEngine", 1, 30s}}, 0},
        StopStory{"Paused", {{"", "EnableLBEngine", 1, 1s}, {"", "SetLBPaused", 1, 1s}}, 0},
        StopStory{"InAStart", {{kSlow, "EnableLBEngine", 1, 2s}}, 0},
        StopStory{"InAPass", {{"", "EnableLBEngine", 1, 5s}, {kSlow, "", 0, 7s}}, 0},
        StopStory{"InAPassThatHangs", {{"", "EnableLBEngine", 1, 5s}, {kHangs, "", 0, 7s}}, 0},
        StopStory{"InAStop", {{"", "EnableLBEngine", 1, 1s}, {"", "DisableLBEngine", 0, 100ms}}, 1},
        StopStory{"InAStopThatHangs",
                  {{"", "EnableLBEngine", 1, 1s}, {kHangs, "DisableLBEngine", 0, 100ms}},
                  0}),
    [](const auto& story) { return story.param.name; });

}  // namespace corvane::test
