// Places that end badly under the classic rules, under the balanced profile.

#include "scenario/service_fixture.h"
#include "store/value_names.h"

namespace corvane::test {

class BalancedScenario : public ServiceTest {
 protected:
  static constexpr std::uint64_t kSec = 1'000, kMin = 60 * kSec, kHour = 60 * kMin;

  void StartBalanced(WorldBuilder world) {
    platform::sim::RegistryWrite profile;
    profile.key = platform::sim::kHomeKey;
    profile.name = value::kPolicyProfile;
    profile.number = 1;
    world->registry.push_back(profile);
    Start(world);
  }

  static Beacon Fast(const char8_t* ssid, int channel) {
    return Beacon(ssid).Channel(channel).He80(2).Rsn({AKM_PSK});
  }
  static Beacon Slow(const char8_t* ssid, int channel) {
    return Beacon(ssid).Channel(channel).Ht20(1).Rsn({AKM_PSK});
  }
  // An adapter that acts by itself and is left alone by the system, in reach of access point 1 of
  // the network "Old", a slow one.
  static WorldBuilder OldWorld() {
    WorldBuilder world;
    world.Adapter().Ap(Slow(u8"Old", 1), 1, -63.0).Profile("Old").AutoSwitch(20);
    world->adapters.back().autoConnect = false;
    return world;
  }
  // From a minute on this one is far better. It refuses with this reason, 0 for not at all.
  static void AddBetter(WorldBuilder& world, const Beacon& beacon, int number,
                        platform::DWORD refuses = 0) {
    world.Ap(beacon, number, -95.0).Signal(HeardFrom(kMin, -50.0));
    world->accessPoints.back().refuseReason = refuses;
    const std::string ssid = world->accessPoints.back().ssid;
    if (ssid != "Old") world.Profile(ssid);
  }
  // In which the adapter has a link, of the time up to then.
  int SecondsConnected(std::uint64_t untilMs, int adapter = 0) {
    int seconds = 0;
    for (; Now() < untilMs; RunFor(1s)) seconds += ConnectedBssid(adapter).empty() ? 0 : 1;
    return seconds;
  }
  std::vector<std::string> Suggested() const {
    std::vector<std::string> bssids;
    for (const Traced& event : TraceEvents("TRELLIS_N_SUGGEST_AP"))
      bssids.push_back(event.Text("bssid"));
    return bssids;
  }

  void ExpectARefuserCostsLittle(const Beacon& refuser) {
    WorldBuilder world = OldWorld().Connected(1);
    AddBetter(world, refuser, 2, platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE);
    StartBalanced(world);
    EXPECT_GE(SecondsConnected(kHour), 3'560);
    EXPECT_LE(Count(AirEvent::kConnectFailed), 10u);
    EXPECT_GE(Count(AirEvent::kConnectFailed), 3u) << "it was given no other chance";
    EXPECT_TRUE(IsOn(1));
  }
  void ExpectTakenOnceItServes(WorldBuilder world) {
    AddBetter(world, Fast(u8"New", 149), 2, platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE);
    world.At(2 * kMin, R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 0})");
    StartBalanced(world);
    RunUntil(2 * kMin);
    EXPECT_GE(Count(AirEvent::kConnectFailed), 1u);
    EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 5min)) << "it is banned";
  }
};

TEST_F(BalancedScenario, WhatRefusedIsTriedAgainWithinMinutes) {
  ExpectTakenOnceItServes(OldWorld().Connected(1));
}
TEST_F(BalancedScenario, WhatRefusedAnAdapterWithoutALinkIsTriedAgainWithinMinutes) {
  WorldBuilder world;
  world.Adapter().AutoSwitch(20);
  world->adapters.back().autoConnect = false;
  ExpectTakenOnceItServes(world);
}
TEST_F(BalancedScenario, AnotherNetworkThatRefusesCostsLittle) {
  ExpectARefuserCostsLittle(Fast(u8"New", 149));
}
TEST_F(BalancedScenario, AnotherTransmitterThatRefusesCostsLittle) {
  ExpectARefuserCostsLittle(Fast(u8"Old", 149));
}

TEST_F(BalancedScenario, ThreeThatRefuseSlowlyHoldNobodyUp) {
  WorldBuilder world = OldWorld().Connected(1);
  world->adapters.back().connectMs = 14'000;
  AddBetter(world, Fast(u8"A", 149), 2, platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE);
  AddBetter(world, Fast(u8"B", 44), 3, platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE);
  AddBetter(world, Fast(u8"C", 157), 4, platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE);
  world.Ap(Slow(u8"Phone", 6), 5, -60.0).Profile("Phone");
  world.Adapter().Connected(5).AutoSwitch(20, 1);
  world->adapters.back().bands = {2};
  StartBalanced(world);
  RunUntil(kMin);
  EXPECT_GE(CountRounds(5min, 1), 20) << "the other adapter waits for the attempts of the first";
  EXPECT_GE(SecondsConnected(kHour), 3'200);
  EXPECT_LE(Count(AirEvent::kConnectFailed), 10u);
}

TEST_F(BalancedScenario, TheSystemsConnectAtBootIsNobodysWish) {
  WorldBuilder world = OldWorld();
  world->adapters.back().autoConnect = true;
  AddBetter(world, Fast(u8"Old", 149), 2);
  StartBalanced(world);
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 30s));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s));
  EXPECT_TRUE(TakeLaunches(u"NudgeDialog.exe").empty()) << "it asks";
}

TEST_F(BalancedScenario, ScansOfTheSystemDoNotDelayTheFirstDecision) {
  WorldBuilder world = OldWorld().Connected(1);
  for (const std::uint64_t at : {500u, 2'700u, 16'500u, 33'500u, 50'000u})
    world.At(at, R"({"do": "scan"})");
  StartBalanced(world);
  EXPECT_TRUE(RunUntilTrue([&] { return !Text(value::kCandidatesCSV).empty(); }, 6s))
      << "nothing was decided";
}

TEST_F(BalancedScenario, AQuestionKeepsNoOtherAdapterOffline) {
  WorldBuilder world;
  world.Adapter().Ap(Fast(u8"Office", 149), 1, -50.0).Profile("Office");
  world.Adapter().AutoSwitch(20, 1);
  for (auto& adapter : world->adapters) adapter.autoConnect = false;
  StartBalanced(world);  // the first adapter asks by a dialog, and nobody answers
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(1, 1); }, 60s)) << "the other one waits, too";
  const std::size_t before = Count(AirEvent::kScanEnded);
  RunFor(30min);
  EXPECT_TRUE(IsOn(1, 1));
  EXPECT_LE(Count(AirEvent::kScanEnded) - before, 90u) << "it looks as if nothing were asked";
}

TEST_F(BalancedScenario, WhoCannotMoveGivesUpItsClaim) {
  WorldBuilder world;
  world.Adapter().Ap(Fast(u8"Old", 36), 1, -74.0).Profile("Old").Connected(1).AutoSwitch(20);
  world.Ap(Fast(u8"Old", 149), 2, -95.0).Signal(HeardFrom(kMin, -70.0));
  world.Adapter().AutoSwitch(20, 1);
  world->adapters.back().radioOn = false;
  for (auto& adapter : world->adapters) adapter.autoConnect = false;
  StartBalanced(world);
  ASSERT_TRUE(RunUntilTrue([&] { return Wlan() && Wlan()->Claim().Held(); }, 3min));
  Do(R"({"do": "traffic", "adapter": 0, "for": "40m", "inMbps": 20})");
  Do(R"({"do": "radio", "adapter": 1, "on": true})");
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2, 1); }, 90s)) << "it waits for nothing";
  EXPECT_TRUE(IsOn(1)) << "the first adapter moved in traffic";
}

TEST_F(BalancedScenario, TwoAdaptersDoNotAskAboutOneAccessPoint) {
  WorldBuilder world;
  world.Adapter().Ap(Slow(u8"Old", 1), 1, -63.0).Profile("Old").Connected(1);
  AddBetter(world, Fast(u8"Office", 149), 2);
  world.Ap(Slow(u8"Guest", 6), 3, -63.0).Profile("Guest");
  world.Adapter().Connected(3);
  for (auto& adapter : world->adapters) adapter.autoConnect = false;
  StartBalanced(world);
  RunUntil(10 * kMin);
  EXPECT_EQ(TakeLaunches(u"NudgeDialog.exe").size(), 1u);
}

TEST_F(BalancedScenario, ASuggestionThatWasReplacedComesAgain) {
  WorldBuilder world = OldWorld().Connected(1);
  world.At(8'001, R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 1})");
  world.Ap(Fast(u8"Home", 149), 2, -95.0).Signal(HeardFrom(kMin, -56.0)).Profile("Home");
  world.Ap(Fast(u8"Lab", 44), 3, -95.0)
      .Signal({{0, -95.0}, {150'000, -95.0}, {150'001, -45.0}, {260'000, -45.0}, {260'001, -95.0}})
      .Profile("Lab");
  StartBalanced(world);
  RunUntil(10 * kMin);
  EXPECT_EQ(Suggested(), (std::vector<std::string>{ApText(2), ApText(3), ApText(2)}));
}

}  // namespace corvane::test
