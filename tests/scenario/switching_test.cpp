// From a better access point to the switch.

#include <set>

#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_registry.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class SwitchingScenario : public ServiceTest {
 protected:
  // Access point 2 is out of reach, and from 60 s on far better than access point 1.
  static WorldBuilder BetterFromOneMinute() {
    return OfficeWorld(-80.0).Ap(OfficeBeacon(149), 2, -95.0).Signal(HeardFrom(60'000, -45.0));
  }
  // Scans that ended between the moment when it got better and the connect.
  std::size_t RoundsBeforeSwitch() {
    if (!RunUntilTrue([&] { return Count(AirEvent::kConnectStarted) > 0; }, 200s)) return 0;
    const std::uint64_t connect = Events(AirEvent::kConnectStarted).front().ms;
    std::size_t scans = 0;
    for (const AirEvent& scan : Events(AirEvent::kScanEnded, 60'001)) scans += scan.ms <= connect;
    return scans;
  }
};

TEST_F(SwitchingScenario, ACandidateRipensOverTwoRoundsWithOneAdapter) {
  Start(BetterFromOneMinute());
  EXPECT_EQ(RoundsBeforeSwitch(), 2u);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s));
  RunFor(2s);
  EXPECT_EQ(Config()->m_force_scan_counter, 0) << "the end of the old connection asks for a scan";
}

TEST_F(SwitchingScenario, AndOverThreeWithTwo) {
  WorldBuilder world = BetterFromOneMinute();
  world.Adapter()
      .Ap(Beacon(u8"Lab").Channel(1).Ht20(1).Rsn({AKM_PSK}), 9, -60.0)
      .Profile("Lab")
      .Connected(9);
  Start(world);
  EXPECT_EQ(RoundsBeforeSwitch(), 3u);
}

TEST_F(SwitchingScenario, TrafficHoldsASwitchBackUntilItEnds) {
  Start(BetterFromOneMinute().Traffic(40'000, 200'000, 20.0));
  RunUntil(200'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  EXPECT_TRUE(IsOn(1));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 120s));
}

// The better ones are of another network: a restore goes by the name of the network, and the radio
// takes the strongest access point of that name, which need not be the one before. The move is the
// service's own.
TEST_F(SwitchingScenario, AFailedConnectMovesToTheNextAndThenRestores) {
  Start(OfficeWorld(-80.0)
            .Ap(LabBeacon(149), 2, -95.0)
            .Signal(HeardFrom(60'000, -45.0))
            .Ap(LabBeacon(52), 3, -95.0)
            .Signal(HeardFrom(60'000, -55.0))
            .Ap(OfficeBeacon(100), 4, -76.0)
            .Profile("Lab")
            .Network("Lab", 1)
            .At(5'000, R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 229377})")
            .At(5'000, R"({"do": "refuse", "bssid": "02-50-00-00-00-03", "reason": 229377})"));
  ASSERT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kConnectFailed) >= 2; }, 200s));
  const auto failed = Events(AirEvent::kConnectFailed);
  EXPECT_NE(failed[0].bssid, failed[1].bssid) << "the next entry was not tried";

  ASSERT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kConnected, failed[1].ms) > 0; }, 30s));
  EXPECT_EQ(Events(AirEvent::kConnected, failed[1].ms).front().bssid, ApText(4))
      << "the old network was not restored";
  for (const int number : {2, 3}) {
    CSmartPointer<CWlanBssEntry> entry;
    ASSERT_TRUE(Wlan()->FindBssEntry(u"Lab", ApBssid(number), &entry));
    EXPECT_EQ(entry->m_last_reason_code, 229377u);
    EXPECT_EQ(entry->m_connect_failed, 1);
  }
  EXPECT_EQ(Text(value::kConnectStatus), u"error");
  EXPECT_FALSE(Wlan()->Claim().Held()) << "the other adapters are kept off for nothing";

  Do(R"({"do": "refuse", "bssid": "02-50-00-00-00-03", "reason": 0})");
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 120s))
      << "the next one is not reached past the one that refuses";
}

// The profile of the private network goes by another name than its SSID.
TEST_F(SwitchingScenario, APrivateNetworkLeadsTheListHoweverWeak) {
  WorldBuilder world = OfficeWorld(-45.0);
  world.Ap(LabBeacon(149), 2, -80.0).Profile("Lab").Network("Lab 2", 1);
  world->networks.front().category = 0;
  world->profiles.back().name = u"Lab 2";
  Start(world);
  const auto leads = [&](WStringView ssid) {
    return Text(value::kCandidatesCSV).starts_with(ssid);
  };
  Write(value::kPreferPrivateNetwork, 1u);
  EXPECT_TRUE(RunUntilTrue([&] { return leads(u"Lab\v"); }, 40s));
  Write(value::kPreferPrivateNetwork, 0u);
  EXPECT_TRUE(RunUntilTrue([&] { return leads(u"Office\v"); }, 40s));
}

TEST_F(SwitchingScenario, AHiddenNetworkIsFoundByItsDirectedScan) {
  WorldBuilder world = OfficeWorld();
  world.Ap(Beacon(u8"Secret").Channel(44).Vht80(2).Rsn({AKM_PSK}), 2, -50.0)
      .Hidden()
      .Profile("Secret", true, true);
  Start(world);
  EXPECT_TRUE(RunUntilTrue(
      [&] { return Text(value::kCandidatesCSV).find(u"Secret") != std::u16string::npos; }, 60s));
  bool directed = false;
  for (const AirEvent& scan : Events(AirEvent::kScanStarted)) directed |= scan.ssid == "Secret";
  EXPECT_TRUE(directed);
}

TEST_F(SwitchingScenario, AProfileOfTheUserIsToldOnce) {
  Start(OfficeWorld().At(60'000, R"({"do": "profile", "add": {"ssid": "Hotel"}})"));
  RunUntil(58'000);
  const std::size_t before = CountNotices(u"System", u"ProfiledNetworksJson");
  EXPECT_EQ(HomeText(value::kProfiledNetworksJson).find(u"Hotel"), std::u16string::npos);
  RunUntil(150'000);
  EXPECT_NE(HomeText(value::kProfiledNetworksJson).find(u"Hotel"), std::u16string::npos);
  EXPECT_EQ(CountNotices(u"System", u"ProfiledNetworksJson"), before + 1);
}

TEST_F(SwitchingScenario, ADroppedDenyListIsAbsorbedAndMoved) {
  Start(BetterFromOneMinute());
  Pc().Files().Write(u"/program/denylist_ap.json", R"([["Office", "02-50-00-00-00-02"]])");
  RunUntil(30'000);
  EXPECT_FALSE(Pc().Files().Read(u"/program/denylist_ap.json"));
  EXPECT_TRUE(Pc().Files().Read(u"/program/denylist_ap_backup.json"));
  EXPECT_NE(Text(value::kDenylistJson).find(u"02-50-00-00-00-02"), std::u16string::npos);
  RunUntil(240'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u) << "a denied access point was chosen";
}

TEST_F(SwitchingScenario, TwoAdaptersNeverWantTheSameAccessPoint) {
  WorldBuilder world = BetterFromOneMinute();
  world.Ap(OfficeBeacon(52), 3, -95.0).Signal(HeardFrom(60'000, -46.0));
  world.Ap(OfficeBeacon(100), 4, -81.0);
  world.Adapter().Connected(4).AutoSwitch(10, 1);
  Start(world);
  RunUntil(30'000);
  for (int step = 0; step < 2400; ++step) {
    RunFor(100ms);
    const auto first = Wlan(0)->Claim().Held(), second = Wlan(1)->Claim().Held();
    ASSERT_FALSE(first && first == second) << Now();
    const std::string a = ConnectedBssid(0), b = ConnectedBssid(1);
    ASSERT_FALSE(!a.empty() && a == b) << Now();
  }
  EXPECT_EQ((std::set{ConnectedBssid(0), ConnectedBssid(1)}), (std::set{ApText(2), ApText(3)}));
}

// Two access points take turns at being the better one.
TEST_F(SwitchingScenario, FlappingRaisesTheScoreThreshold) {
  std::vector<platform::sim::SignalPoint> up, down;
  for (std::uint64_t ms = 0; ms < 600'000; ms += 40'000) {
    const bool odd = ms / 40'000 % 2 != 0;
    for (const std::uint64_t at : {ms, ms + 39'999}) {
      up.push_back({at, odd ? -45.0 : -82.0});
      down.push_back({at, odd ? -82.0 : -45.0});
    }
  }
  WorldBuilder world;
  world.Adapter()
      .Ap(OfficeBeacon(36), 1, -60.0)
      .Signal(down)
      .Ap(OfficeBeacon(149), 2, -60.0)
      .Signal(up);
  world.Profile("Office").Network("Office", 1).Connected(1).AutoSwitch();
  Start(world);
  RunUntil(40'000);
  const std::uint32_t threshold = Number(value::kAPScoreThreshold);
  ASSERT_TRUE(RunUntilTrue([&] { return Number(value::kAPScoreThreshold) != threshold; }, 400s));
  EXPECT_EQ(Number(value::kAPScoreThreshold), threshold + 2);
}

}  // namespace corvane::test
