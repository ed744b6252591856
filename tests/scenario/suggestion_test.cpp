// A suggestion, from the scan to its answer.

#include "foundation/format.h"
#include "scenario/service_fixture.h"

namespace corvane::test {

class SuggestionScenario : public ServiceTest {
 protected:
  static constexpr char kSuggest[] = "TRELLIS_N_SUGGEST_AP";
  static constexpr char kBest[] = "TRELLIS_N_BEST_AP";
  static constexpr char kRefuse[] =
      R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 229377})";

  bool WaitForSuggestion(std::uint32_t number) {
    return RunUntilTrue([&] { return Number(u"SuggestCount") == number; }, 200s);
  }
  auto TakeDialogs() const { return TakeLaunches(u"NudgeDialog.exe"); }
  void ExpectSuggested(const char16_t* ssid, int accessPoint, const char16_t* radio) {
    const std::u16string bssid = Utf8ToWide(ApText(accessPoint));
    EXPECT_EQ(Text(value::kSuggestedNetworkSSID), ssid);
    EXPECT_EQ(Text(value::kSuggestedNetworkBSSID), bssid);
    EXPECT_EQ(Text(value::kSuggestedNetwork), ssid + (u" [" + bssid) + u"] " + radio);
  }
};

TEST_F(SuggestionScenario, ByEventWaitsForItsYesAndIsClosedByTheBest) {
  Start(BetterLabWorld(1));
  ASSERT_TRUE(WaitForSuggestion(1));
  ASSERT_EQ(TraceEvents(kSuggest).size(), 1u);
  const Traced event = TraceEvents(kSuggest).front();
  EXPECT_EQ(event.event.provider, "TRBUILD_ETWProvider");
  EXPECT_EQ(event.Number("EventType"), 11);
  EXPECT_EQ(event.Number("EventCategory"), 3);
  EXPECT_EQ(event.Number("EventToClear"), 20);
  EXPECT_EQ(event.Text("ssid"), "Lab");
  EXPECT_EQ(event.Text("bssid"), ApText(2));
  EXPECT_EQ(event.Text("InterfaceGUID"), WideToUtf8(Config()->GetGuidText()));
  EXPECT_EQ(event.Number("SignalQuality"), 40) << "the quality of the connection";
  EXPECT_GE(event.Number("Percentage"), 20);
  ExpectSuggested(u"Lab", 2, u"[Channel 149] [5Ghz]");
  EXPECT_EQ(Text(value::kSuggestedNetworkReason),
            Format(u"%s%i%% %s", LookUpStatusText(kStatusBetterHead), event.Number("Percentage"),
                   LookUpStatusText(kStatusBetterTail)));

  RunFor(180s);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u) << "the service did not wait for the answer";
  EXPECT_EQ(TraceEvents(kSuggest).size(), 1u) << "an open suggestion was told again";
  EXPECT_TRUE(TraceEvents(kBest).empty());
  EXPECT_TRUE(TakeDialogs().empty());

  AcceptSuggestion();
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s));
  EXPECT_EQ(Text(value::kConnectStatus), u"connected");
  RunFor(60s);
  const Notice accepted = LastNotice(u"ConnectionChange", u"SuggestionAccepted");
  EXPECT_NE(accepted.data1.find(u"02-50-00-00-00-02"), WString::npos);
  EXPECT_NE(accepted.data2.find(u"02-50-00-00-00-01"), WString::npos);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 1u);
  EXPECT_EQ(HistoryRows(",connected,Lab,").size(), 1u);
  ASSERT_EQ(TraceEvents(kBest).size(), 1u) << "the suggestion stays open";
  EXPECT_EQ(TraceEvents(kBest).front().Number("EventType"), 20);
  EXPECT_EQ(TraceEvents(kBest).front().Text("bssid"), ApText(2));
  EXPECT_EQ(Number(u"BestCount"), 1u);
  EXPECT_TRUE(Config()->m_Etw.GetMemo().IsEmpty());

  // The user goes back by hand: from now on a dialog asks, until the service has connected by
  // itself.
  Do(R"({"do": "connect", "adapter": 0, "ssid": "Office"})");
  ASSERT_TRUE(WaitForSuggestion(1) && RunUntilTrue([&] { return IsOn(1); }, 60s));
  EXPECT_TRUE(RunUntilTrue([&] { return TakeDialogs().size() == 1; }, 120s));
  EXPECT_EQ(TraceEvents(kSuggest).size(), 1u);
  AcceptSuggestion();
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s));
  EXPECT_FALSE(Config()->m_bForcePopupOverride);
}

TEST_F(SuggestionScenario, AnAcceptedOneThatRefusesLeavesTheOldNetwork) {
  Start(BetterLabWorld(1).At(5'000, kRefuse));
  ASSERT_TRUE(WaitForSuggestion(1));
  AcceptSuggestion();
  ASSERT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kConnectFailed) >= 3; }, 60s))
      << "it is tried three times";
  RunFor(30s);
  ASSERT_EQ(Count(AirEvent::kConnected), 1u) << "the old network was not restored";
  EXPECT_EQ(Events(AirEvent::kConnected).front().bssid, ApText(1));
  EXPECT_TRUE(IsOn(1));
  EXPECT_EQ(Text(value::kConnectStatus), u"error");
  EXPECT_EQ(CountNotices(u"ConnectionChange", u"SuggestionAccepted"), 0u);

  Do(R"({"do": "refuse", "bssid": "02-50-00-00-00-02", "reason": 0})");
  RunFor(30s);
  EXPECT_EQ(Count(AirEvent::kConnectFailed), 3u) << "one yes is one order";
  AcceptSuggestion();
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s)) << "the suggestion is gone";
}

TEST_F(SuggestionScenario, OneThatLeavesTheAirIsWithdrawn) {
  Start(BetterLabWorld(1));
  ASSERT_TRUE(WaitForSuggestion(1));
  Do(R"({"do": "accessPoint", "bssid": "02-50-00-00-00-02", "on": false})");
  ASSERT_TRUE(RunUntilTrue([&] { return Text(value::kSuggestedNetworkBSSID).empty(); }, 600s));
  EXPECT_EQ(Text(value::kSuggestedNetwork), u"");
  RunFor(20s);
  ASSERT_EQ(TraceEvents(kBest).size(), 2u);
  EXPECT_EQ(TraceEvents(kBest).front().Text("bssid"), ApText(2)) << "nothing ends the event";
  EXPECT_EQ(TraceEvents(kBest).back().Text("bssid"), ApText(1));
  const std::uint64_t late = Now();
  AcceptSuggestion();
  RunFor(30s);
  EXPECT_EQ(Text(value::kConnectStatus), u"error");
  const auto connects = Events(AirEvent::kConnectStarted, late);
  ASSERT_EQ(connects.size(), 1u) << "the network in use is connected anew";
  EXPECT_EQ(connects.front().ssid, "Office");
  EXPECT_TRUE(IsOn(1));
}

TEST_F(SuggestionScenario, ByPopupAsksOnceADayAndHoldsStillMeanwhile) {
  WorldBuilder world = BetterLabWorld(2);
  world->adapters.front().connectedTo = {};
  world->adapters.front().autoConnect = false;
  Start(world);
  WriteHome(u"BatteryModeSleepSecs", 600);
  ASSERT_TRUE(WaitForSuggestion(1));  // nothing is connected: the best one in range
  const auto dialogs = TakeDialogs();
  ASSERT_EQ(dialogs.size(), 1u);
  EXPECT_EQ(dialogs[0].commandLine, u"NudgeDialog.exe 0");
  ExpectSuggested(u"Office", 1, u"[Channel 36] [5Ghz]");
  EXPECT_EQ(Text(value::kSuggestedNetworkReason), LookUpStatusText(kStatusBestNetwork));
  EXPECT_TRUE(TraceEvents(kSuggest).empty());
  const auto reserved = Wlan()->Claim().Held();
  ASSERT_TRUE(reserved);
  EXPECT_EQ(MacTextA(*reserved), ApText(1));
  EXPECT_STREQ(Config()->GetInhibitReason(), "con-pop");

  const std::uint64_t asked = Now();
  AcceptSuggestion();
  Config()->SignalMainLoopSemaphore();
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(1); }, 30s));
  EXPECT_GE(Events(AirEvent::kConnectStarted).front().ms, asked + 4'800)
      << "the inhibit after a popup";
  RunFor(1s);
  EXPECT_EQ(LastNotice(u"ConnectionChange", u"SuggestionAccepted").data2, u"None");
  EXPECT_EQ(Text(value::kSuggestedNetwork), u"") << "the answered suggestion still stands";

  ASSERT_TRUE(WaitForSuggestion(2));
  const std::uint64_t second = Now();
  ExpectSuggested(u"Lab", 2, u"[Channel 149] [5Ghz]");
  EXPECT_EQ(Text(value::kSuggestedNetworkReason), LookUpStatusText(kStatusWeakSignal));
  EXPECT_STREQ(Config()->GetInhibitReason(), "sw-pop");
  EXPECT_EQ(TakeDialogs().size(), 1u);
  Do(R"({"do": "power", "mains": false, "batteryPercent": 60})");  // fewer rounds in the day
  RunUntil(second + 85'000'000);
  Do(R"({"do": "power", "mains": true})");
  RunUntil(second + 86'390'000);
  EXPECT_TRUE(TakeDialogs().empty()) << "the user was asked again within the day";
  RunFor(60s);
  EXPECT_EQ(TakeDialogs().size(), 1u) << "nobody asks again after a day";
  EXPECT_EQ(Number(u"SuggestCount"), 3u);
  RunFor(1h);
  EXPECT_TRUE(TakeDialogs().empty()) << "a third time is one too many";
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 1u);
}

TEST_F(SuggestionScenario, AnAllowListTurnsASwitchIntoAQuestion) {
  WorldBuilder world =
      BetterLabWorld(0, -60.0).Ap(Beacon(u8"Cafe").Channel(44).Vht80(2).Rsn({AKM_PSK}), 3, -95.0);
  Start(world.Signal(HeardFrom(60'000, -40.0)).Profile("Cafe").Network("Cafe", 1));
  RunUntil(20'000);
  Write(value::kAllowlistJson, uR"([["Office"], ["Lab", "02-50-00-00-00-02"]])");
  ASSERT_TRUE(WaitForSuggestion(1));
  ExpectSuggested(u"Lab", 2, u"[Channel 149] [5Ghz]");
  EXPECT_EQ(TakeDialogs().size(), 1u);
  for (int i = 0; i < 20; ++i) {
    RunFor(10s);
    EXPECT_EQ(Text(value::kCandidatesCSV).find(u"Cafe"), std::u16string::npos);
    EXPECT_NE(Text(value::kNONCandidatesCSV).find(u"Cafe"), std::u16string::npos);
    EXPECT_NE(Text(value::kSuggestedNetworkSSID), u"Cafe");
  }
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  AcceptSuggestion();
  ASSERT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s));
  Do(R"({"do": "signal", "bssid": "02-50-00-00-00-02", "dbm": -80})");
  RunFor(120s);
  EXPECT_TRUE(IsOn(2));
  EXPECT_TRUE(TakeDialogs().empty()) << "nothing that is allowed is better";

  WriteHome(u"AllowlistEnabled", 0);
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(3); }, 120s))
      << "without the list it acts by itself again";
}

}  // namespace corvane::test
