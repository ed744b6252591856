// What an adapter does by itself, what it leaves alone, and what it does on a client's order.

#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/world/world_profile.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class ModesScenario : public ServiceTest {
 protected:
  static constexpr char16_t kDialog[] = u"NudgeDialog.exe", kPrompter[] = u"PassphraseDesk.exe";
  // The values that ConnectStatus takes in this time.
  std::vector<std::u16string> Statuses(std::chrono::milliseconds time) {
    std::vector<std::u16string> seen = {Text(value::kConnectStatus)};
    for (auto left = time; left.count() > 0; left -= 50ms) {
      RunFor(50ms);
      if (Text(value::kConnectStatus) != seen.back()) seen.push_back(Text(value::kConnectStatus));
    }
    return seen;
  }
};

using Words = std::vector<std::u16string>;

TEST_F(ModesScenario, AutoswitchMovesByItselfAndTellsOfIt) {
  WorldBuilder world = BetterLabWorld(0).Signal(HeardFrom(180'000, -45.0));
  Start(world.Ap(OfficeBeacon(52), 3, -95.0).Signal(HeardFrom(60'000, -64.0)));
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 100s));
  EXPECT_EQ(Text(value::kConnectStatus), u"connected");
  EXPECT_EQ(Text(value::kConnectedNetwork), u"Office [Channel 52]");
  EXPECT_NE(Number(value::kConnectedLinkRateTX), 0u);
  EXPECT_TRUE(HomeText(u"TelemetryMemo").ends_with(u"\t1\t0")) << "a move within one network";
  RunFor(20s);
  Notice moved = LastNotice(u"ConnectionChange", u"Autoswitch");
  EXPECT_NE(moved.data1.find(u", 02-50-00-00-00-03, SQ 72, Channel 52, Link rate Tx "),
            WString::npos);
  EXPECT_NE(moved.data2.find(u", 02-50-00-00-00-01, SQ 40, Channel 36, Link rate Tx "),
            WString::npos);
  EXPECT_TRUE(moved.data1.ends_with(u", \\u004F\\u0066\\u0066\\u0069\\u0063\\u0065"));
  EXPECT_EQ(HistoryRows(",connected,Office,02-50-00-00-00-03,").size(), 1u);

  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 200s));
  EXPECT_GE(Now(), 180'000u);
  EXPECT_TRUE(HomeText(u"TelemetryMemo").ends_with(u"\t1\t1")) << "a move between networks";
  RunFor(20s);
  EXPECT_TRUE(
      LastNotice(u"ConnectionChange", u"Autoswitch").data1.ends_with(u", \\u004C\\u0061\\u0062"));
  EXPECT_EQ(HistoryRows(",connected,Lab,02-50-00-00-00-02,").size(), 1u);
  ASSERT_FALSE(TraceEvents("TRELLIS_N_AP_CONNECTED_NIC1").empty());
  EXPECT_EQ(TraceEvents("TRELLIS_N_AP_CONNECTED_NIC1").back().Text("bssid"), ApText(2));

  RunFor(180s);
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"Autoswitch"), 2u);
  EXPECT_EQ(Number(value::kAPScoreThreshold), 3u) << "two moves are no flapping";
  EXPECT_TRUE(TraceEvents("TRELLIS_N_SUGGEST_AP").empty());
  EXPECT_TRUE(TakeLaunches(kDialog).empty());
}

TEST_F(ModesScenario, LatchedItStaysInItsPrivateNetwork) {
  WorldBuilder world =
      BetterLabWorld(0).Ap(OfficeBeacon(52), 3, -95.0).Signal(HeardFrom(180'000, -64.0));
  Start(
      world.At(8'000, R"({"do": "registry", "adapter": 0, "name": "LatchToPrivate", "dword": 1})"));
  RunUntil(180'000);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u) << "the latch did not hold";
  EXPECT_EQ(Text(value::kCandidatesCSV).find(u"Lab"), std::u16string::npos);
  EXPECT_NE(Text(value::kNONCandidatesCSV).find(u"Lab"), std::u16string::npos);
  EXPECT_EQ(Text(value::kStatusMessage), LookUpStatusText(kStatusRestrictedToPrivate));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 120s)) << "within its network it may move";
  RunFor(60s);
  ASSERT_TRUE(IsOn(3));
  Write(value::kLatchToPrivate, 0u);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 120s)) << "released, it stays all the same";
  EXPECT_EQ(Text(value::kStatusMessage), u"");
}

TEST_F(ModesScenario, MonitoringGoesThroughTheMotionsAndTouchesNothing) {
  WorldBuilder world = OfficeWorld(-50.0);
  world->accessPoints.front().track = {{0, -50.0}, {150'000, -50.0}, {150'001, -80.0}};
  world.Ap(LabBeacon(149), 2, -62.0).Profile("Lab").Network("Lab", 1);
  Start(world);
  Pc().Files().Write(u"/program/preferred_ap.json", R"([["Lab", "any", 60]])");
  RunUntil(10'000);
  WriteHome(u"DBWMEnable", 1);
  Write(value::kEnabled, 0u);
  const auto counter = [&] {
    for (const auto& entry : Wlan()->SnapshotEntries()) {
      if (entry->m_BSSIDText == u"02-50-00-00-00-02") return entry->m_candidate_counter;
    }
    return -1;
  };
  // A preferred access point that is not better climbs without ever getting ready.
  ASSERT_TRUE(RunUntilTrue([&] { return counter() == 3; }, 100s));
  for (RunFor(1s); Now() < 149'000; RunFor(1s)) ASSERT_EQ(counter(), 3) << Now();
  EXPECT_TRUE(Text(value::kCandidatesCSV).starts_with(u"Lab"));

  int climbs = 0;  // a ready one starts anew, as after a switch
  for (const std::uint32_t mode : {0u, 1u, 2u}) {
    Write(value::kPassiveSuggestMode, mode);
    AcceptSuggestion();
    OrderConnect(2, u"Lab");
    for (int before = counter(), i = 0; i < 600; ++i, before = counter()) {
      RunFor(100ms);
      climbs += counter() == 1 && before != 1;
      ASSERT_LE(counter(), 3) << Now();
    }
  }
  EXPECT_GE(climbs, 3);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  EXPECT_TRUE(TraceEvents("TRELLIS_N_SUGGEST_AP").empty());
  EXPECT_EQ(Text(value::kSuggestedNetworkSSID), u"");
  EXPECT_TRUE(TakeLaunches(kDialog).empty());
  Write(value::kPassiveSuggestMode, 0u);
  Write(value::kEnabled, 1u);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 60s)) << "enabled, it does what it had found";
}

TEST_F(ModesScenario, AClientConnectsByProfileOrThroughThePrompterOrNotAtAll) {
  WorldBuilder world = OfficeWorld(-50.0).Ap(LabBeacon(149), 2, -50.0).Profile("Lab");
  Start(world.Ap(Beacon(u8"Cafe").Channel(44).Vht80(2).Rsn({AKM_PSK}), 3, -50.0));
  RunUntil(40'000);
  OrderConnect(2, u"Lab");
  EXPECT_EQ(Statuses(30s), (Words{u"pending", u"connecting", u"connected"}));
  EXPECT_TRUE(IsOn(2));
  EXPECT_EQ(HistoryRows(",connected,Lab,").size(), 1u);

  OrderConnect(1, u"Office");
  ASSERT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"connecting"; }, 20s));
  OrderConnect(2, u"Lab");
  EXPECT_EQ(Statuses(30s), (Words{u"pending", u"connecting", u"connected"}));
  EXPECT_TRUE(IsOn(2)) << "an order that came during a round was lost";

  OrderConnect(99, u"Ghost");
  EXPECT_EQ(Statuses(30s), (Words{u"pending", u"error"}));
  EXPECT_TRUE(IsOn(2));

  OrderConnect(3, u"Cafe");
  ASSERT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"external"; }, 5s));
  for (int i = 0; i < 50; ++i, RunFor(100ms))
    ASSERT_TRUE(IsOn(2)) << "told of a connection that is not there";
  EXPECT_EQ(Text(value::kConnectStatus), u"external");
  const auto prompters = TakeLaunches(kPrompter);
  ASSERT_EQ(prompters.size(), 1u);
  EXPECT_EQ(prompters[0].commandLine, u"PassphraseDesk.exe 0 \"Cafe\" 02-50-00-00-00-03 7 7");
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 3u);

  platform::sim::Profile profile;  // the prompter's answer
  profile.ssid = "Cafe";
  profile.name = u"Cafe";
  profile.security = world->accessPoints[2].security;
  OrderConnect(3, u"Cafe", platform::sim::ProfileXml(profile));
  EXPECT_EQ(Statuses(30s), (Words{u"pending", u"connecting", u"connected"}));
  EXPECT_TRUE(IsOn(3));
  EXPECT_TRUE(TakeLaunches(kPrompter).empty());
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"SuggestionAccepted"), 0u);
}

}  // namespace corvane::test
