// What lets a round run, and what holds it back.

#include "platform/sim/kernel/sim_registry.h"
#include "platform/sim/kernel/sim_session.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class RoundsScenario : public ServiceTest {
 protected:
  static constexpr char16_t kRadioState[] =
      u"SYSTEM\\CurrentControlSet\\Control\\RadioManagement\\SystemRadioState";
  void SetAirplane(bool on) { Pc().Registry().SetDword(kRadioState, u"", on); }
};

TEST_F(RoundsScenario, ScansInTheFirstRoundThoughTheLinkIsBusy) {
  Start(OfficeWorld().Traffic(0, 600'000, 20.0));
  RunFor(5s);
  ASSERT_EQ(Count(AirEvent::kScanStarted), 1u);
  EXPECT_LT(Events(AirEvent::kScanStarted).front().ms, 2'000u);
  RunFor(60s);
  EXPECT_EQ(Count(AirEvent::kScanStarted), 1u) << "a scan of a later round cut into the traffic";
  EXPECT_TRUE(IsOn(1));
}

TEST_F(RoundsScenario, AirplaneModeBetweenDiscoveryAndPolicyEndsTheRound) {
  Start(OfficeWorld());
  RunFor(30s);
  ASSERT_TRUE(RunUntilTrue([&] { return Wlan()->IsScanInFlight(); }, 40s));
  Write(value::kCandidatesCSV, u"mark");
  SetAirplane(true);
  RunFor(30s);
  EXPECT_EQ(Text(value::kCandidatesCSV), u"mark") << "the policy ran in airplane mode";
  EXPECT_EQ(Number(value::kAirplaneInhibited), 1u);
  const std::size_t scans = Count(AirEvent::kScanStarted);
  SetAirplane(false);
  EXPECT_TRUE(RunUntilTrue([&] { return Text(value::kCandidatesCSV) != u"mark"; }, 20s));
  EXPECT_EQ(Number(value::kAirplaneInhibited), 0u);
  EXPECT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kScanStarted) > scans; }, 20s));
}

TEST_F(RoundsScenario, ConnectionIsPublishedEveryThirdSecondOfAnInhibit) {
  Start(OfficeWorld());
  RunFor(30s);
  Config()->Set_InhibitQUAY(60'000, "out-disc");
  RunFor(15s);  // the worker has seen it
  int published = 0;
  for (int second = 0; second < 12; ++second) {
    Write(value::kConnectedNetwork, u"mark");
    RunFor(1s);
    if (Text(value::kConnectedNetwork) != u"mark") ++published;
  }
  EXPECT_GE(published, 3);
  EXPECT_LE(published, 5);
}

TEST_F(RoundsScenario, AirplaneModeEndsARoamingInhibit) {
  Start(OfficeWorld());
  RunFor(30s);
  Config()->SetRoamingInhibit();
  SetAirplane(true);
  RunFor(20s);
  EXPECT_EQ(Config()->GetRoamingInhibitTick(), 0u);
}

TEST_F(RoundsScenario, WaitsForTheRadioAndScansWhenItIsBack) {
  Start(OfficeWorld()
            .At(60'000, R"({"do": "radio", "adapter": 0, "on": false})")
            .At(90'000, R"({"do": "radio", "adapter": 0, "on": true})"));
  RunUntil(80'000);
  EXPECT_EQ(Number(value::kRadioInhibited), 1u);
  EXPECT_EQ(Number(u"RadioEnabled"), 0u);
  EXPECT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusRadioDisabled));
  EXPECT_EQ(Count(AirEvent::kScanStarted, 65'000), 0u);
  RunUntil(100'000);
  EXPECT_EQ(Number(value::kRadioInhibited), 0u);
  EXPECT_EQ(Number(u"RadioEnabled"), 1u);
  EXPECT_EQ(Text(value::kStatusMessage), u"");
  EXPECT_GE(Count(AirEvent::kScanStarted, 90'000), 1u) << "the first round after it has no scan";
}

TEST_F(RoundsScenario, HoldsStillWhileAVpnIsUp) {
  WorldBuilder world = OfficeWorld().Ap(OfficeBeacon(52), 2, -77.0);
  platform::sim::OtherAdapter vpn;
  vpn.description = u"TAP-Windows Adapter V9";
  vpn.friendlyName = u"Work VPN";
  vpn.ifIndex = 110;
  vpn.ifType = 53;
  world->otherAdapters.push_back(vpn);
  world.At(60'000, R"({"do": "interface", "interface": "Work VPN", "on": true})")
      .At(70'000, R"({"do": "roam", "adapter": 0, "bssid": "02-50-00-00-00-02"})")
      .At(120'000, R"({"do": "interface", "interface": "Work VPN", "on": false})");
  Start(world);
  RunUntil(58'000);
  Write(value::kSuggestedNetwork, u"Office {02-50-00-00-00-02}");
  Pc().Kernel().Session().StartProcess(u"NudgeDialog.exe");
  RunUntil(80'000);
  EXPECT_EQ(HomeNumber(u"VPNFound"), 1u);
  EXPECT_EQ(Number(value::kVPNInhibited), 1u);
  EXPECT_TRUE(IsOn(2)) << "a client still reads of the connection before the tunnel";
  EXPECT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusVpn));
  EXPECT_EQ(Text(value::kSuggestedNetwork), u"");
  EXPECT_EQ(Pc().Kernel().Session().CountRunning(u"NudgeDialog.exe"), 0u);
  EXPECT_EQ(Count(AirEvent::kScanStarted, 70'000), 0u);

  WriteHome(u"IgnoreVPN", 1);
  RunUntil(100'000);
  EXPECT_EQ(HomeNumber(u"VPNFound"), 1u) << "the VPN is there all the same";
  EXPECT_EQ(Number(value::kVPNInhibited), 0u);
  EXPECT_GE(Count(AirEvent::kScanStarted, 80'000), 1u);
  RunUntil(135'000);
  EXPECT_EQ(HomeNumber(u"VPNFound"), 0u);
}

TEST_F(RoundsScenario, SleepsLongOnBatteryAndWakesForAClient) {
  WorldBuilder world = OfficeWorld();
  for (const auto& [name, number] :
       {std::pair<const char16_t*, unsigned>{u"FreshDone", 1}, {u"BatteryModeSleepSecs", 120}}) {
    platform::sim::RegistryWrite write;
    write.key = platform::sim::kHomeKey;
    write.name = name;
    write.number = number;
    world->registry.push_back(write);
  }
  world.At(60'000, R"({"do": "power", "mains": false, "batteryPercent": 60})");
  Start(world);
  RunUntil(20'000);
  EXPECT_GE(CountRounds(38s), 2) << "a round takes some ten seconds on mains";
  RunUntil(90'000);
  EXPECT_LE(CountRounds(120s), 1) << "on battery a round takes two minutes";
  RunUntilTrue([&] { return CountRounds(1s) == 1; }, 130s);
  RunFor(10s);
  Config()->SignalMainLoopSemaphore();
  EXPECT_GE(CountRounds(6s), 1) << "the client's wake was not heard";
}

TEST_F(RoundsScenario, RunsRoundsWithoutDelayInAWindowOnMainsOnly) {
  Start(OfficeWorld().At(20'000, R"({"do": "power", "mains": false, "batteryPercent": 60})"));
  RunUntil(40'000);
  Config()->OpenNoDelay(100'000);
  EXPECT_LE(CountRounds(40s), 5) << "the window is open on battery";
  EXPECT_TRUE(Config()->m_no_delay);
  Do(R"({"do": "power", "mains": true})");
  RunFor(12s);
  EXPECT_GE(CountRounds(28s), 8) << "rounds wait though the window is open";
  RunUntil(160'000);
  EXPECT_FALSE(Config()->m_no_delay) << "the window's end was missed";
  EXPECT_LE(CountRounds(20s), 3);
}

TEST_F(RoundsScenario, SleepsWhileDisabled) {
  Start(OfficeWorld());
  RunUntil(30'000);
  Write(value::kEnabled, 0u);
  RunFor(15s);
  EXPECT_EQ(CountRounds(40s), 0);
}

}  // namespace corvane::test
