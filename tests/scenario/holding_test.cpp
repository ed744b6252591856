// What keeps an adapter where it is, what makes it look around, and what makes it leave.

#include "config/settings/global_config_container.h"
#include "platform/sim/sim_registry.h"
#include "platform/sim/world_text.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class HoldingScenario : public ServiceTest {
 protected:
  static void SetScanInterval(WorldBuilder& world, int secs) {
    world.At(9'000, R"({"do": "registry", "adapter": 0, "name": "ScanInterval", "dword": )" + std::to_string(secs) + "}");
  }
  static void TurnAccessPoint(WorldBuilder& world, std::uint64_t ms, int number, bool on) {
    world.At(ms, R"({"do": "accessPoint", "bssid": ")" + ApText(number) + R"(", "on": )" + (on ? "true}" : "false}"));
  }
  // Not connected, with a cable that is in.
  static WorldBuilder CabledWorld() {
    WorldBuilder world;
    world.Adapter();
    world->adapters[0].autoConnect = false;
    platform::sim::OtherAdapter lan;
    lan.guid = platform::GUID{0xCAB1E000, 0, 0x4000, {0x80}};
    lan.description = u"Vantor Gigabit Ethernet";
    lan.friendlyName = u"Cable";
    lan.ifIndex = 110;
    lan.mac = {0x02, 0xCA, 0xB1, 0, 0, 1};
    lan.up = true;
    platform::sim::ReadIpAddress("10.9.0.57/16", &lan.ip.unicast.emplace_back());
    platform::sim::ReadIpAddress("10.9.0.1/16", &lan.ip.gateways.emplace_back());
    world->otherAdapters.push_back(lan);
    return world;
  }
  // Access point 2 of Office, far better from `ms` on.
  static void AddBetter(WorldBuilder& world, std::uint64_t ms) {
    world.Ap(OfficeBeacon(149), 2, -95.0).Signal({{0, -95.0}, {ms, -95.0}, {ms + 1, -45.0}});
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
  RunFor(3s);
  EXPECT_EQ(Text(value::kDisconnectedNetwork), u"Office [Channel 36]");

  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s));
  EXPECT_GE(Events(AirEvent::kConnectStarted).front().ms, left + 10'000);
  EXPECT_EQ(Text(value::kConnectStatus), u"connected");
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"NewConnection"), 1u);
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"ExternalDisconnect"), 0u) << "its own doing";

  Write(value::kDenylistJson, u"[[\"Office\", \"02-50-00-00-00-01\"], [\"Office\", \"02-50-00-00-00-02\"]]");
  RunFor(180s);
  EXPECT_EQ(ConnectedBssid(), "");
  EXPECT_EQ(Text(value::kConnectStatus), u"disconnected");
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 1u) << "a denied access point was taken for want of another";
}

TEST_F(HoldingScenario, AWeakConnectionScansInABurstOnceUntilItRecovers) {
  WorldBuilder world = OfficeWorld();
  world.Signal({{0, -50.0}, {90'000, -50.0}, {90'001, -85.0}, {240'000, -85.0}, {240'001, -50.0},
                {300'000, -50.0}, {300'001, -85.0}});
  SetScanInterval(world, 3600);
  Start(world);
  RunUntil(450'000);
  EXPECT_EQ(ScansBetween(40'000, 90'000), 0u);
  EXPECT_EQ(ScansBetween(90'000, 240'000), 3u);
  EXPECT_EQ(ScansBetween(240'000, 300'000), 0u);
  EXPECT_EQ(ScansBetween(300'000, 450'000), 3u) << "the next bad spell is another one";
}

TEST_F(HoldingScenario, VanishingSurroundingsAreLookedForInABurst) {
  WorldBuilder world = CabledWorld();
  for (const int number : {1, 2}) {
    const bool cafe = number == 1;
    world.Ap(Beacon(cafe ? u8"Cafe" : u8"Hotel").Channel(36).Vht80(2).Rsn({AKM_PSK}), number, -60.0);
    world.Profile(cafe ? "Cafe" : "Hotel");
  }
  world.AutoSwitch();
  SetScanInterval(world, 60);
  TurnAccessPoint(world, 100'000, 2, false);
  TurnAccessPoint(world, 250'000, 2, true);
  TurnAccessPoint(world, 400'000, 1, false);
  TurnAccessPoint(world, 400'000, 2, false);
  Start(world);
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
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 20s)) << "the rounds with the cable in count for nothing";
}

// The scan interval is long: what the burst of scans finds once the link is free is found soon.
TEST_F(HoldingScenario, RealTimeAudioAndThenTrafficHoldASwitchBack) {
  WorldBuilder world = OfficeWorld(-70.0);
  AddBetter(world, 100'000);
  SetScanInterval(world, 60);
  Start(world.Traffic(210'000, 270'000, 20.0));
  RunUntil(20'000);
  CGlobalConfigContainer::GetInstance().m_rt_audio = true;
  RunUntil(220'000);
  EXPECT_LE(ScansBetween(100'000, 220'000), 2u) << "scans disturb the audio";
  CSmartPointer<CWlanBssEntry> better;
  ASSERT_TRUE(Wlan()->FindBssEntry(u"Office", ApBssid(2), &better));
  EXPECT_EQ(better->m_candidate_counter, 0) << "a busy link gains candidates";
  better.reset();

  CGlobalConfigContainer::GetInstance().m_rt_audio = false;
  RunUntil(268'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  RunUntil(270'000);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 60s));
}

// Something in the background sends a little all the time: more than passes for an idle link at first.
TEST_F(HoldingScenario, SteadyTrickleIsLearnedAndNoLongerHoldsTheAdapter) {
  WorldBuilder world = OfficeWorld(-80.0);
  AddBetter(world, 70'000);
  Start(world.Traffic(0, 600'000, 0.065));
  const auto gates = [this] { return std::pair(Config()->m_rate_gate_low.load(), Config()->m_rate_gate_high.load()); };
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
