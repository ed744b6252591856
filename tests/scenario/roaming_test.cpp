// Moves between the access points of one installation: the service's own, and those of somebody
// else.

#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_registry.h"
#include "platform/sim/world/world_text.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class RoamingScenario : public ServiceTest {
 protected:
  static constexpr char kEventMode[] =
      R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 1})";
  // The access points that were suggested.
  std::vector<std::string> Suggested() const {
    std::vector<std::string> bssids;
    for (const Traced& event : TraceEvents("TRELLIS_N_SUGGEST_AP"))
      bssids.push_back(event.Text("bssid"));
    return bssids;
  }
};

TEST_F(RoamingScenario, InsideOneNetworkItMovesByItselfUnlessTheUserHasBeenAsked) {
  WorldBuilder world = OfficeWorld(-82.0);
  world.Ap(OfficeBeacon(149), 2, -95.0)
      .Signal(HeardFrom(60'000, -58.0))
      .Ap(OfficeBeacon(52), 3, -95.0);
  Start(world.At(9'000, kEventMode));
  RunUntil(5'000);
  WriteHome(u"RoamingEnabled", 0);
  const std::vector<std::string> once{ApText(2)};
  ASSERT_TRUE(RunUntilTrue([&] { return Suggested() == once; }, 120s));
  EXPECT_EQ(Text(value::kSuggestedNetworkBSSID), Utf8ToWide(ApText(2)));

  WriteHome(u"RoamingEnabled", 1);
  RunFor(120s);
  EXPECT_TRUE(IsOn(1)) << "the user was asked, and not waited for";

  Do(R"({"do": "signal", "bssid": "02-50-00-00-00-03", "dbm": -45})");
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 60s));
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"Autoswitch"), 1u);
  EXPECT_EQ(Suggested(), once) << "a roam is no question, and one question is not asked twice";
  RunFor(30s);
  EXPECT_EQ(TraceEvents("TRELLIS_N_BEST_AP").back().Text("bssid"), ApText(3))
      << "the question is still open";
}

// --- Another network of the same installation, as its gateways show.

struct Installation {
  const char* name;
  const char* officeGateway;
  const char* labGateway;
  bool globalOn, adapterOn;
  bool remembered;  // the lab's gateway is known of an earlier run
  bool isOne;
};

class GatewayRoaming : public RoamingScenario, public testing::WithParamInterface<Installation> {};

void AddGateway(WorldBuilder& world, std::size_t network, const char* address, const char* mac) {
  platform::sim::Neighbour row;
  platform::sim::ReadIpAddress(address, &row.address);
  platform::sim::ReadMac(mac, &row.mac);
  world->networks[network].ip.gateways = {row.address};
  world->networks[network].neighbours = {row};
}

// It is taught the lab's gateway by a stay there, and leaves by itself. Then the lab is better
// again.
TEST_P(GatewayRoaming, MovesInsideOneInstallationAndAsksElsewhere) {
  const Installation& place = GetParam();
  WorldBuilder world = OfficeWorld();
  world.Signal({{0, -50.0}, {60'000, -50.0}, {60'001, -82.0}});
  world.Ap(LabBeacon(149), 2, -82.0).Signal({{0, -82.0}, {60'000, -82.0}, {60'001, -50.0}});
  world.Profile("Lab").Network("Lab", 1);
  AddGateway(world, 0, "10.1.0.1/16", place.officeGateway);
  AddGateway(world, 1, "10.2.0.1/16", place.labGateway);
  if (place.remembered) {
    world->registry.push_back({.key = kHomeKeyPath,
                               .name = u"GatewayMacs",
                               .type = platform::REG_SZ,
                               .text = Utf8ToWide(ApText(2) + "\v" + place.labGateway)});
  } else {
    world.Connected(2);
  }
  Start(world.At(45'000, kEventMode));
  RunUntil(5'000);
  WriteHome(u"GatewayRoaming", place.globalOn);
  Write(value::kGatewayRoaming, place.adapterOn);
  RunUntil(58'000);
  ASSERT_TRUE(IsOn(1));

  RunUntil(150'000);
  EXPECT_EQ(IsOn(2), place.isOne);
  EXPECT_EQ(Suggested().size(), place.isOne ? 0u : 1u);
  const WString learned = Utf8ToWide(ApText(1) + "\v" + place.officeGateway);
  EXPECT_EQ(HomeText(u"GatewayMacs").find(learned) != WString::npos, place.adapterOn);
}

constexpr char kRouter[] = "02-60-00-00-01-01", kOtherRouter[] = "02-60-00-00-02-01";
INSTANTIATE_TEST_SUITE_P(
    Places, GatewayRoaming,
    testing::Values(Installation{"SameGateway", kRouter, kRouter, true, true, false, true},
                    Installation{"SameGatewayAsEarlier", kRouter, kRouter, true, true, true, true},
                    Installation{"OtherGateway", kRouter, kOtherRouter, true, true, false, false},
                    Installation{"ChainedBehindTheTarget", "02-50-00-00-00-02", kOtherRouter, true,
                                 true, false, true},
                    Installation{"SwitchedOff", kRouter, kRouter, false, true, false, false},
                    Installation{"SwitchedOffOnTheAdapter", kRouter, kRouter, true, false, false,
                                 false}),
    [](const auto& info) { return info.param.name; });

// --- Somebody else has roamed, and the service keeps still until something ends it.

class OutsideRoam;
struct EndOfStillness {
  const char* name;
  void (*happens)(OutsideRoam&);
  bool ends;
  bool goesOn;  // to the best access point, by itself
};

class OutsideRoam : public RoamingScenario, public testing::WithParamInterface<EndOfStillness> {
 public:
  using ServiceTest::Do, ServiceTest::OrderConnect, ServiceTest::Write, PcTest::Pc, PcTest::RunFor;
  bool IsStill() const { return Config()->GetRoamingInhibitTick() != 0; }
};

TEST_P(OutsideRoam, KeepsTheServiceStillUntil) {
  WorldBuilder world = OfficeWorld(-70.0);
  world.Ap(OfficeBeacon(52), 2, -70.0)
      .Ap(OfficeBeacon(149), 3, -95.0)
      .Signal(HeardFrom(80'000, -45.0));
  world.Ap(LabBeacon(100), 4, -75.0).Profile("Lab").Network("Lab", 1);
  world->adapters[0].autoConnect = false;
  Start(world.At(60'000, R"({"do": "roam", "bssid": "02-50-00-00-00-02"})"));
  RunUntil(130'000);
  ASSERT_TRUE(IsStill());
  ASSERT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusExternalRoaming));
  ASSERT_TRUE(IsOn(2));

  GetParam().happens(*this);
  EXPECT_EQ(RunUntilTrue([&] { return !IsStill(); }, 40s), GetParam().ends);
  EXPECT_EQ(Text(value::kStatusMessage) == LookUpStatusText(kStatusExternalRoaming),
            !GetParam().ends);
  EXPECT_EQ(RunUntilTrue([&] { return IsOn(3); }, 120s), GetParam().goesOn);
}

void StayDisconnected(OutsideRoam& test) {
  test.Do(R"({"do": "disconnect"})");
  test.RunFor(30s);
  EXPECT_TRUE(test.IsStill()) << "given up before its time";
}
void LetAClientConnect(OutsideRoam& test) { test.OrderConnect(1, u"Office"); }
void DenyIt(OutsideRoam& test) {
  test.Write(value::kDenylistJson, u"[[\"Office\", \"02-50-00-00-00-02\"]]");
}
void ConnectElsewhere(OutsideRoam& test) { test.Do(R"({"do": "connect", "ssid": "Lab"})"); }
void ConnectAgain(OutsideRoam& test) {
  test.Do(R"({"do": "connect", "ssid": "Office", "bssid": "02-50-00-00-00-01"})");
}
void LoseTheList(OutsideRoam& test) {
  test.Pc().Faults().FailCall("WlanGetNetworkBssList", 1, platform::ERROR_GEN_FAILURE);
}
// After somebody else's connect a move is left to the user.
INSTANTIATE_TEST_SUITE_P(
    Ends, OutsideRoam,
    testing::Values(EndOfStillness{"ItStaysDisconnected", StayDisconnected, true, true},
                    EndOfStillness{"AClientConnects", LetAClientConnect, true, true},
                    EndOfStillness{"ItLeavesADeniedAccessPoint", DenyIt, true, true},
                    EndOfStillness{"SomebodyConnectsElsewhere", ConnectElsewhere, true, false},
                    EndOfStillness{"NotTheSameNetworkAgain", ConnectAgain, false, false},
                    EndOfStillness{"TheListCannotBeRead", LoseTheList, true, true}),
    [](const auto& info) { return info.param.name; });

// --- What counts as a roam of somebody else, and from when on.

class RoamDetection : public RoamingScenario {
 protected:
  void Roam(const char* action) {
    Do(action);
    RunFor(25s);
  }
  static constexpr char kTo1[] = R"({"do": "roam", "bssid": "02-50-00-00-00-01"})";
  static constexpr char kTo2[] = R"({"do": "roam", "bssid": "02-50-00-00-00-02"})";
  std::uint64_t StillSince() const { return Config()->GetRoamingInhibitTick(); }
};

TEST_F(RoamDetection, AnotherRoamDoesNotBeginTheStillnessAnew) {
  Start(OfficeWorld(-70.0).Ap(OfficeBeacon(52), 2, -70.0));
  RunUntil(60'000);
  Roam(kTo2);
  const std::uint64_t since = StillSince();
  ASSERT_NE(since, 0u);
  Roam(kTo1);
  ASSERT_TRUE(IsOn(1));
  EXPECT_EQ(StillSince(), since);
}

TEST_F(RoamDetection, LeavesOutAnAccessPointThatNoScanHasHeard) {
  Start(OfficeWorld(-70.0)
            .Ap(OfficeBeacon(52), 2, -95.0)
            .Signal(HeardFrom(100'000, -70.0))
            .At(100'100, kTo2));
  RunUntil(125'000);
  ASSERT_TRUE(IsOn(2));
  EXPECT_EQ(StillSince(), 0u) << "one name is no proof of one network";
  Roam(kTo1);
  ASSERT_TRUE(IsOn(1));
  EXPECT_NE(StillSince(), 0u) << "both are known by now";
}

TEST_F(RoamDetection, AnOlderDisconnectionDoesNotEndTheStillness) {
  Start(OfficeWorld(-70.0).Ap(OfficeBeacon(52), 2, -70.0));
  RunUntil(60'000);
  Do(R"({"do": "disconnect"})");
  ASSERT_TRUE(RunUntilTrue([&] { return !IsOn(1); }, 30s));
  OrderConnect(1, u"Office");
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 30s));
  RunFor(60s);
  Roam(kTo2);
  ASSERT_TRUE(IsOn(2));
  EXPECT_NE(StillSince(), 0u);
}

TEST_F(RoamDetection, ThirtySecondsWithoutAConnectionDoNotYetEndTheStillness) {
  WorldBuilder world = OfficeWorld(-70.0);
  world.Ap(OfficeBeacon(52), 2, -70.0);
  world->adapters[0].autoConnect = false;
  Start(world);
  RunUntil(60'000);
  Roam(kTo2);
  ASSERT_NE(StillSince(), 0u);
  Write(u"ScanInterval", 300u);  // no scan is to hold a round up
  Do(R"({"do": "disconnect"})");
  const auto age = [&] { return Wlan()->Link().DisconnectedAgeMs(); };
  ASSERT_TRUE(RunUntilTrue([&] { return age() != 0; }, 30s));
  RunFor(std::chrono::milliseconds(30'000 - age()));
  Config()->SignalMainLoopSemaphore();  // a round at this very tick
  RunFor(1ms);
  EXPECT_NE(StillSince(), 0u);
  Config()->SignalMainLoopSemaphore();
  EXPECT_TRUE(RunUntilTrue([&] { return StillSince() == 0; }, 1s));
}

}  // namespace corvane::test
