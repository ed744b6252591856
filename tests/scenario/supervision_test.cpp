// The main thread: adapters that come and go, workers that die, the start and the stop.

#include "foundation/smart_obj.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_registry.h"
#include "scenario/service_fixture.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {

class SupervisionScenario : public ServiceTest {};

TEST_F(SupervisionScenario, StartsAnewWhenAnAdapterIsUnpluggedAndPluggedIn) {
  WorldBuilder world = OfficeWorld();
  world.Adapter()
      .At(60'000, R"({"do": "adapter", "adapter": 1, "on": false})")
      .At(120'000, R"({"do": "adapter", "adapter": 1, "on": true})");
  Start(world);
  RunUntil(50'000);
  ASSERT_EQ(CWifiClientContainer::GetInstance().GetCount(), 2);
  ASSERT_GE(Count(AirEvent::kScanStarted, 0, Cause::kProgram, 1), 1u);
  EXPECT_GE(Events(AirEvent::kScanStarted, 0, Cause::kProgram, 1).front().ms, 3'000u)
      << "the second worker starts three seconds after the first";
  RunUntil(80'000);
  EXPECT_EQ(CWifiClientContainer::GetInstance().GetCount(), 1);
  EXPECT_TRUE(IsOn(1));
  EXPECT_GE(Count(AirEvent::kScanStarted, 60'000), 1u) << "the adapter that stayed does not go on";
  EXPECT_GE(CountRounds(14s), 1) << "clients read nothing new of the adapter that stayed";
  Write(value::kEnabled, 0u);
  RunFor(11s);
  EXPECT_EQ(CountRounds(14s), 0) << "its settings are not read";
  Write(value::kEnabled, 1u);
  // The system scans and connects the new adapter by itself, and the end of that scan holds the
  // program back for 15 s.
  RunUntil(145'000);
  EXPECT_EQ(CWifiClientContainer::GetInstance().GetCount(), 2);
  EXPECT_GE(Count(AirEvent::kScanStarted, 120'000, Cause::kProgram, 1), 1u);
  EXPECT_NE(HomeText(u"0"), HomeText(u"1")) << "two adapters under one index";
  EXPECT_EQ(HomeNumber(u"BootCounter"), 1u) << "a restart counted as a boot";
}

TEST_F(SupervisionScenario, AMissingNetworkListDisturbsNoAdapter) {
  Start(OfficeWorld(-80.0).Ap(OfficeBeacon(149), 2, -50.0));
  Pc().Faults().FailDuring("CoCreateInstance", 0, 100'000, 0x80040154);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s)) << "nothing is decided without the list";
  EXPECT_FALSE(Printed("Main[INNER-0]")) << "everything starts anew";
  RunUntil(120'000);
  EXPECT_NE(Text(value::kCandidatesCSV).find(u"Private"), WString::npos)
      << "a list that came late is not used";
}

TEST_F(SupervisionScenario, WaitsForTheWlanServiceWithNoAdapter) {
  Start(OfficeWorld());
  Pc().Faults().FailDuring("WlanOpenHandle", 0, 25'000, platform::ERROR_SERVICE_NOT_ACTIVE);
  RunUntil(24'000);
  EXPECT_EQ(CWifiClientContainer::GetInstance().GetCount(), 0);
  EXPECT_EQ(Count(AirEvent::kScanStarted), 0u);
  RunUntil(50'000);
  EXPECT_TRUE(IsOn(1));
  EXPECT_EQ(HomeNumber(u"BootCounter"), 1u);
}

TEST_F(SupervisionScenario, ReadsAStoppedWlanServiceAsDisconnectedUntilItRunsAgain) {
  Start(OfficeWorld()
            .At(60'000, R"({"do": "wlanService", "on": false})")
            .At(100'000, R"({"do": "wlanService", "on": true})"));
  RunUntil(95'000);
  EXPECT_EQ(Text(value::kConnectedNetwork), u"");
  RunUntil(200'000);
  EXPECT_TRUE(IsOn(1));
}

// A restore that is refused, too, is an exception that leaves the round.
TEST_F(SupervisionScenario, BringsBackAWorkerThatAnExceptionEnded) {
  Start(OfficeWorld(-80.0)
            .Ap(OfficeBeacon(149), 2, -95.0)
            .Signal({{0, -95.0}, {30'000, -95.0}, {31'000, -45.0}})
            .At(5'000, R"({"do": "refuse", "bssid": "02-50-00-00-00-01", "reason": 229377})")
            .At(5'000, R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 229377})"));
  ASSERT_TRUE(
      RunUntilTrue([&] { return Printed("CQUAYMainWorker::RunThreadLoop: Exception"); }, 180s));
  const std::uint64_t died = Now();
  Do(R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 0})");
  // The disconnect of the failed switch holds the worker back for 5 s, and the system's own
  // connect, which begins meanwhile, for another 10 s.
  RunFor(15s);
  EXPECT_GE(Count(AirEvent::kScanStarted, died), 1u) << "the worker did not come back with a scan";
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 60s));
}

TEST_F(SupervisionScenario, StopsInOrderAndLeavesNothing) {
  WorldBuilder world = OfficeWorld();
  world.Adapter().Ap(OfficeBeacon(149), 2, -50.0);
  Start(world);
  RunUntil(100'000);
  EXPECT_EQ(HomeNumber(u"FreshDone"), 1u);
  EXPECT_NE(Text(value::kCandidatesCSV), u"");
  ASSERT_TRUE(Stop());
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(Printed("EXIT - ERROR"));
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_EQ(Text(value::kCandidatesCSV), u"");
  EXPECT_EQ(Text(value::kProfiledNetworksInRangeJson), u"[]");
}

TEST_F(SupervisionScenario, StopsWhileThereIsNoAdapter) {
  WorldBuilder world;
  world.Adapter();
  world->adapters[0].present = false;
  Start(world);
  RunFor(15s);
  ASSERT_TRUE(Stop());
  EXPECT_FALSE(Printed("EXIT - ERROR"));
  EXPECT_EQ(LiveObjectCount(), 0u);
}

}  // namespace corvane::test
