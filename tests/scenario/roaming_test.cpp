// Moves between the access points of one installation: the service's own, and those of somebody else.

#include <algorithm>

#include "platform/sim/fault_plan.h"
#include "platform/sim/sim_event_trace.h"
#include "platform/sim/sim_kernel.h"
#include "platform/sim/sim_registry.h"
#include "platform/sim/world_text.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class RoamingScenario : public ServiceTest {
 protected:
  static Beacon LabBeacon(int channel) { return Beacon(u8"Lab").Channel(channel).Vht80(2).Rsn({AKM_PSK}); }
  // Suggestions are events from `ms` on.
  static void SetEventMode(WorldBuilder& world, std::uint64_t ms) {
    world.At(ms, R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": 1})");
  }
  static std::vector<platform::sim::SignalPoint> Step(double before, std::uint64_t ms, double after) {
    return {{0, before}, {ms, before}, {ms + 1, after}};
  }
  std::size_t Suggestions(int accessPoint) {
    for (auto& event : Pc().Kernel().EventTrace().TakeEvents()) {
      if (event.name == "TRELLIS_N_SUGGEST_AP") m_Suggested.push_back(*event.Text("bssid"));
    }
    return static_cast<std::size_t>(std::ranges::count(m_Suggested, Utf8ToWide(ApText(accessPoint))));
  }

 private:
  std::vector<WString> m_Suggested;
};

TEST_F(RoamingScenario, InsideOneNetworkItMovesByItselfUnlessTheUserHasBeenAsked) {
  WorldBuilder world = OfficeWorld(-82.0);
  world.Ap(OfficeBeacon(149), 2, -95.0).Signal(Step(-95.0, 60'000, -58.0)).Ap(OfficeBeacon(52), 3, -95.0);
  SetEventMode(world, 9'000);
  Start(world);
  RunUntil(5'000);
  WriteHome(u"RoamingEnabled", 0);
  ASSERT_TRUE(RunUntilTrue([&] { return Suggestions(2) > 0; }, 120s));
  EXPECT_GT(Now(), 60'000u);
  EXPECT_EQ(Text(value::kSuggestedNetworkBSSID), Utf8ToWide(ApText(2)));

  WriteHome(u"RoamingEnabled", 1);
  RunFor(120s);
  EXPECT_TRUE(IsOn(1)) << "the user was asked, and not waited for";
  EXPECT_EQ(Suggestions(2), 1u) << "the user was asked twice";

  Do(R"({"do": "signal", "bssid": "02-50-00-00-00-03", "dbm": -45})");
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 60s));
  EXPECT_EQ(Suggestions(3), 0u) << "a roam is no question";
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"Autoswitch"), 1u);
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

class GatewayRoaming : public RoamingScenario, public testing::WithParamInterface<Installation> {
 protected:
  static void AddGateway(WorldBuilder& world, std::size_t network, const char* address, const char* mac) {
    platform::sim::Neighbour row;
    platform::sim::ReadIpAddress(address, &row.address);
    platform::sim::ReadMac(mac, &row.mac);
    world->networks[network].ip.gateways = {row.address};
    world->networks[network].neighbours = {row};
  }
};

// It is taught the lab's gateway by a stay there, and leaves by itself. Then the lab is better again.
TEST_P(GatewayRoaming, MovesInsideOneInstallationAndAsksElsewhere) {
  const Installation& place = GetParam();
  WorldBuilder world = OfficeWorld();
  world.Signal(Step(-50.0, 60'000, -82.0)).Ap(LabBeacon(149), 2, -82.0).Signal(Step(-82.0, 60'000, -50.0));
  world.Profile("Lab").Network("Lab", 1);
  AddGateway(world, 0, "10.1.0.1/16", place.officeGateway);
  AddGateway(world, 1, "10.2.0.1/16", place.labGateway);
  SetEventMode(world, 45'000);
  if (place.remembered) {
    world->registry.push_back({.key = kHomeKeyPath, .name = u"GatewayMacs", .type = platform::REG_SZ,
                               .text = Utf8ToWide(ApText(2) + "\v" + place.labGateway)});
  } else {
    world.Connected(2);
  }
  Start(world);
  RunUntil(5'000);
  WriteHome(u"GatewayRoaming", place.globalOn);
  Write(value::kGatewayRoaming, place.adapterOn);
  RunUntil(58'000);
  ASSERT_TRUE(IsOn(1));

  RunUntil(150'000);
  EXPECT_EQ(IsOn(2), place.isOne);
  EXPECT_EQ(Suggestions(2), place.isOne ? 0u : 1u);
  const WString learned = Utf8ToWide(ApText(1) + "\v" + place.officeGateway);
  EXPECT_EQ(HomeText(u"GatewayMacs").find(learned) != WString::npos, place.adapterOn);
}

constexpr char kRouter[] = "02-60-00-00-01-01", kOtherRouter[] = "02-60-00-00-02-01";
INSTANTIATE_TEST_SUITE_P(
    Places, GatewayRoaming,
    testing::Values(Installation{"SameGateway", kRouter, kRouter, true, true, false, true},
                    Installation{"SameGatewayAsEarlier", kRouter, kRouter, true, true, true, true},
                    Installation{"OtherGateway", kRouter, kOtherRouter, true, true, false, false},
                    Installation{"ChainedBehindTheTarget", "02-50-00-00-00-02", kOtherRouter, true, true, false, true},
                    Installation{"SwitchedOff", kRouter, kRouter, false, true, false, false},
                    Installation{"SwitchedOffOnTheAdapter", kRouter, kRouter, true, false, false, false}),
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
  bool IsStill() const { return Config()->GetRoamingInhibitTick() != 0; }

  static void StaysDisconnected(OutsideRoam& test) {
    test.Do(R"({"do": "disconnect"})");
    test.RunFor(30s);
    EXPECT_TRUE(test.IsStill()) << "given up before its time";
  }
  static void AirplaneMode(OutsideRoam& test) {
    constexpr char16_t kKey[] = u"SYSTEM\\CurrentControlSet\\Control\\RadioManagement\\SystemRadioState";
    test.Pc().Registry().SetDword(kKey, u"", 1);
    test.RunFor(15s);
    EXPECT_EQ(test.Number(value::kAirplaneInhibited), 1u);
    EXPECT_FALSE(test.IsStill());
    test.Pc().Registry().SetDword(kKey, u"", 0);
  }
  static void ClientConnects(OutsideRoam& test) {
    test.Config()->SetUIConnectRequest({u"Office", Utf8ToWide(ApText(1)), {}, false});
  }
  static void DeniedAccessPoint(OutsideRoam& test) {
    test.Write(value::kDenylistJson, u"[[\"Office\", \"02-50-00-00-00-02\"]]");
  }
  static void ConnectsElsewhere(OutsideRoam& test) { test.Do(R"({"do": "connect", "ssid": "Lab"})"); }
  static void ConnectsToTheSame(OutsideRoam& test) {
    test.Do(R"({"do": "connect", "ssid": "Office", "bssid": "02-50-00-00-00-01"})");
  }
  static void UnreadableList(OutsideRoam& test) {
    test.Pc().Faults().FailCall("WlanGetNetworkBssList", 1, platform::ERROR_GEN_FAILURE);
  }
};

TEST_P(OutsideRoam, KeepsTheServiceStillUntil) {
  WorldBuilder world = OfficeWorld(-70.0);
  world.Ap(OfficeBeacon(52), 2, -70.0).Ap(OfficeBeacon(149), 3, -95.0).Signal(Step(-95.0, 80'000, -45.0));
  world.Ap(LabBeacon(100), 4, -75.0).Profile("Lab").Network("Lab", 1);
  world->adapters[0].autoConnect = false;
  Start(world.At(60'000, R"({"do": "roam", "bssid": "02-50-00-00-00-02"})"));
  RunUntil(130'000);
  ASSERT_TRUE(IsStill());
  ASSERT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusExternalRoaming));
  ASSERT_TRUE(IsOn(2));

  GetParam().happens(*this);
  EXPECT_EQ(RunUntilTrue([&] { return !IsStill(); }, 40s), GetParam().ends);
  EXPECT_EQ(Text(value::kStatusMessage) == LookUpStatusText(kStatusExternalRoaming), !GetParam().ends);
  EXPECT_EQ(RunUntilTrue([&] { return IsOn(3); }, 120s), GetParam().goesOn);
}

// After somebody else's connect a move is left to the user.
INSTANTIATE_TEST_SUITE_P(
    Ends, OutsideRoam,
    testing::Values(EndOfStillness{"ItStaysDisconnected", OutsideRoam::StaysDisconnected, true, true},
                    EndOfStillness{"AirplaneMode", OutsideRoam::AirplaneMode, true, true},
                    EndOfStillness{"AClientConnects", OutsideRoam::ClientConnects, true, true},
                    EndOfStillness{"ItLeavesADeniedAccessPoint", OutsideRoam::DeniedAccessPoint, true, true},
                    EndOfStillness{"SomebodyConnectsElsewhere", OutsideRoam::ConnectsElsewhere, true, false},
                    EndOfStillness{"NotTheSameNetworkAgain", OutsideRoam::ConnectsToTheSame, false, false},
                    EndOfStillness{"TheListCannotBeRead", OutsideRoam::UnreadableList, true, true}),
    [](const auto& info) { return info.param.name; });

}  // namespace corvane::test
