// What keeps an adapter where it is, what makes it look around, and what makes it leave.

#include "scenario/service_fixture.h"
#include "settings/global_config_container.h"

namespace corvane::test {

class HoldingScenario : public ServiceTest {
 protected:
  // Not connected, with a cable that is in.
  static WorldBuilder CabledWorld() {
    WorldBuilder world;
    world.Adapter()->adapters[0].autoConnect = false;
    platform::sim::OtherAdapter& cable = world->otherAdapters.emplace_back();
    cable.description = cable.friendlyName = u"Cable";
    cable.ifIndex = 110;
    cable.up = true;
    return world;
  }
  std::size_t ScansBetween(std::uint64_t fromMs, std::uint64_t toMs) const {
    return Count(AirEvent::kScanStarted, fromMs) - Count(AirEvent::kScanStarted, toMs);
  }
};

TEST_F(HoldingScenario, ADeniedAccessPointIsLeftAndNotTakenAgain) {
  Start(OfficeWorld(-50.0).Ap(OfficeBeacon(149), 2, -60.0));
  RunUntil(60'000);
  ASSERT_TRUE(IsOn(1));
  Write(value::kDenylistJson, u"[[\"Office\", \"02-50-00-00-00-01\"]]");
  ASSERT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kDisconnected) > 0; }, 15s));
  const std::uint64_t left = Events(AirEvent::kDisconnected).front().ms;
  RunUntil(left + 9'900);
  EXPECT_EQ(Text(value::kDisconnectedNetwork), u"Office [Channel 36]");
  EXPECT_EQ(Wlan()->Policy().m_consec_disconnects, 0u)
      << "the time until a new connect begins too early";

  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s));
  EXPECT_EQ(Text(value::kConnectStatus), u"connected");
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"NewConnection"), 1u);
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"ExternalDisconnect"), 0u) << "its own doing";

  Write(value::kDenylistJson,
        u"[[\"Office\", \"02-50-00-00-00-01\"], [\"Office\", \"02-50-00-00-00-02\"]]");
  RunFor(180s);
  EXPECT_EQ(ConnectedBssid(), "");
  EXPECT_EQ(Text(value::kConnectStatus), u"disconnected");
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 1u)
      << "a denied access point was taken for want of another";
  EXPECT_EQ(HistoryRows(",disconnected,").size(), 2u);
  EXPECT_EQ(HistoryRows(",connected,Office," + ApText(2)).size(), 1u);
}

TEST_F(HoldingScenario, AWeakConnectionScansInABurstOnceUntilItRecovers) {
  Start(OfficeWorld()
            .Signal({{0, -50.0},
                     {90'000, -50.0},
                     {90'001, -85.0},
                     {240'000, -85.0},
                     {240'001, -50.0},
                     {300'000, -50.0},
                     {300'001, -85.0}})
            .AutoSwitch(3600));
  RunUntil(450'000);
  EXPECT_EQ(ScansBetween(40'000, 90'000), 0u);
  EXPECT_EQ(ScansBetween(90'000, 240'000), 3u);
  EXPECT_EQ(ScansBetween(240'000, 300'000), 0u);
  EXPECT_EQ(ScansBetween(300'000, 450'000), 3u) << "the next bad spell is another one";
}

TEST_F(HoldingScenario, VanishingSurroundingsAreLookedForInABurst) {
  WorldBuilder world = CabledWorld();
  world.Ap(OfficeBeacon(36), 1, -60.0)
      .Signal({{0, -60.0}, {400'000, -60.0}, {400'001, -95.0}})
      .Profile("Office");
  world.Ap(LabBeacon(36), 2, -60.0).Profile("Lab");
  world.Signal({{0, -60.0},
                {100'000, -60.0},
                {100'001, -95.0},
                {250'000, -95.0},
                {250'001, -60.0},
                {400'000, -60.0},
                {400'001, -95.0}});
  Start(world.AutoSwitch(60));
  RunUntil(700'000);

  std::size_t soon = 0;
  const auto scans = Events(AirEvent::kScanStarted, 60'000);
  for (std::size_t i = 1; i < scans.size(); ++i) {
    if (scans[i].ms - scans[i - 1].ms > 20'000) continue;
    EXPECT_GT(scans[i].ms, 400'000u) << "one network less is no reason";
    ++soon;
  }
  EXPECT_EQ(soon, 3u);
}

TEST_F(HoldingScenario, ACableKeepsTheAdapterQuietUntilItIsPulled) {
  WorldBuilder world = CabledWorld();
  Start(world.Ap(OfficeBeacon(36), 1, -50.0).Profile("Office").Network("Office", 1).AutoSwitch());
  RunUntil(120'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  EXPECT_GT(ScansBetween(60'000, 120'000), 2u) << "it should go on looking";
  Do(R"({"do": "interface", "interface": "Cable", "on": false})");
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 20s))
      << "the rounds with the cable in count for nothing";
}

// The scan interval is long: what the burst of scans finds once the link is free is found soon.
TEST_F(HoldingScenario, RealTimeAudioAndThenTrafficHoldASwitchBack) {
  WorldBuilder world = OfficeWorld(-70.0).AutoSwitch(60).Traffic(210'000, 270'000, 20.0);
  Start(world.Ap(OfficeBeacon(149), 2, -95.0).Signal(HeardFrom(100'000, -45.0)));
  RunUntil(20'000);
  CGlobalConfigContainer::GetInstance().m_rt_audio = true;
  RunUntil(220'000);
  EXPECT_LE(ScansBetween(100'000, 220'000), 2u) << "scans disturb the audio";
  CSmartPointer<CWlanBssEntry> better;
  ASSERT_TRUE(Wlan()->FindBssEntry(u"Office", ApBssid(2), &better));
  EXPECT_EQ(better->m_candidate_counter, 0) << "a busy link gains candidates";

  CGlobalConfigContainer::GetInstance().m_rt_audio = false;
  RunUntil(268'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  RunUntil(270'000);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 60s));
}

// Something in the background sends a little all the time: more than passes for an idle link at
// first.
TEST_F(HoldingScenario, SteadyTrickleIsLearnedAndNoLongerHoldsTheAdapter) {
  WorldBuilder world = OfficeWorld(-80.0).Traffic(0, 600'000, 0.065);
  Start(world.Ap(OfficeBeacon(149), 2, -95.0).Signal(HeardFrom(70'000, -45.0)));
  const auto gates = [this] {
    return std::pair(Config()->m_rate_gate_low.load(), Config()->m_rate_gate_high.load());
  };
  const std::pair atFirst(kRateGateLowStart, kRateGateHighStart), learned(0.07, 0.08);
  RunUntil(33'000);
  EXPECT_EQ(gates(), atFirst);
  EXPECT_EQ(ScansBetween(15'000, 33'000), 0u);
  RunUntil(69'000);
  EXPECT_EQ(gates(), learned);
  ASSERT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kConnected) > 0; }, 60s));
  EXPECT_EQ(gates(), atFirst) << "the new connection has to show its own";
  EXPECT_TRUE(RunUntilTrue([&] { return gates() == learned; }, 85s));
  EXPECT_TRUE(IsOn(2));
}

}  // namespace corvane::test
