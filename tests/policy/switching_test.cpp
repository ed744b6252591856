#include "history/telemetry_memo.h"
#include "platform/sim/kernel/sim_event_trace.h"
#include "policy/policy_fixture.h"
#include "policy/policy_log.h"

namespace corvane {
namespace {

using test::ApMac;
using Calls = std::vector<std::string>;

// Collects what subscribers are told.
class Listener : public INotificationProvider, public SmartObjEx<Listener, SmartObj<>> {
 public:
  void SendNotification(CNotificationEvent* event) override {
    events.push_back(Narrow(event->m_Type + u"|" + event->m_Data1 + u"|" + event->m_Data2));
  }
  std::vector<std::string> events;
};

class SwitchingTest : public test::PolicyTest {
 protected:
  void SetUp() override {
    PolicyTest::SetUp();
    listener = Listener::CreateObject();
    auto& manager = CNotificationManagerSingleton::GetInstance();
    manager.AddProvider(listener.get());
    manager.BeginThread();
    config->m_rate_gate_high = 1.0;
  }
  void TearDown() override {
    CNotificationManagerSingleton::GetInstance().Shutdown(1000);
    listener.reset();
    PolicyTest::TearDown();
  }
  std::vector<std::string> Events() {
    RunFor(std::chrono::milliseconds(10));
    return std::exchange(listener->events, {});
  }
  std::uint32_t Moves(bool within) {
    return within ? CTelemetryMemo::GetInstance().GetAp() : CTelemetryMemo::GetInstance().GetNet();
  }
  CSmartPointer<Listener> listener;
};

TEST_F(SwitchingTest, AutoswitchMovesInTheSecondRoundAndTellsOfIt) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  better->m_Bss.lRssi = -47;
  Round();
  EXPECT_EQ(wlan->calls, Calls{});
  config->m_force_scan_counter = 2;
  Round();
  EXPECT_EQ(wlan->calls, Calls{"connect Home 02-00-00-00-00-02"});
  EXPECT_EQ(Value(value::kConnectedNetwork), u"Home [Channel 36]");
  EXPECT_EQ(Value(value::kConnectedBssid), better->m_BSSIDText);
  EXPECT_EQ(config->m_force_scan_counter, 0);
  EXPECT_EQ(better->m_connect_good, 1);
  EXPECT_EQ(better->m_candidate_counter, 0);
  EXPECT_FALSE(HasReservation(2));
  EXPECT_EQ(Moves(false), 1u);
  EXPECT_EQ(Moves(true), 0u);
  const auto events = Events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].find(
                "Autoswitch|Score 70, 02-00-00-00-00-02, SQ 80, Channel 36, Link rate Tx 400000"),
            0u)
      << events[0];
  EXPECT_NE(events[0].find(", Rssi -47, "), std::string::npos) << events[0];
  EXPECT_NE(events[0].find("|Score 50, 02-00-00-00-00-01, SQ 80"), std::string::npos) << events[0];
}

TEST_F(SwitchingTest, AudioAndTrafficHoldASwitchBackAndLeaveTheCounts) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  better->m_candidate_counter = 1;
  Global().m_rt_audio = true;
  Rounds(3);
  EXPECT_EQ(better->m_candidate_counter, 1);
  Global().m_rt_audio = false;
  config->m_rate_gate_high = 0.0;  // no traffic reaches a gate of nothing
  Round();
  EXPECT_EQ(better->m_candidate_counter, 1);
  config->m_rate_gate_high = 0.06;
  Round();
  EXPECT_EQ(wlan->calls.size(), 1u);
}

TEST_F(SwitchingTest, RefusedTargetIsFollowedByTheNextReadyOne) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto first = Add("Home", 2, 80), second = Add("Home", 3, 70);
  wlan->refusals[ApMac(2)] = platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE;
  Rounds(2);
  EXPECT_EQ(wlan->calls,
            (Calls{"connect Home 02-00-00-00-00-02", "connect Home 02-00-00-00-00-03"}));
  EXPECT_EQ(first->m_connect_failed, 1);
  EXPECT_EQ(first->m_last_reason_code, platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE);
  EXPECT_EQ(second->m_connect_good, 1);
}

TEST_F(SwitchingTest, ConnectThatEndsOnAnotherAccessPointIsNoMove) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  wlan->landings[ApMac(2)] = ApMac(9);
  Round();
  const test::StepWatch watch;
  Round();
  EXPECT_EQ(watch.steps, (std::vector{RoundStep::kSwitch, RoundStep::kElsewhere}));
  EXPECT_EQ(wlan->calls.size(), 1u) << "there is a connection, nothing is restored";
  EXPECT_EQ(better->m_connect_good + better->m_connect_failed, 0);
  EXPECT_EQ(Moves(false), 0u);
  EXPECT_EQ(Events(), std::vector<std::string>{});
}

TEST_F(SwitchingTest, SwitchThatFailsAltogetherRestoresTheOldNetwork) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  wlan->refusals[ApMac(2)] = 0x38001;
  Rounds(2);
  EXPECT_EQ(wlan->calls,
            (Calls{"connect Home 02-00-00-00-00-02", "connect Office 00-00-00-00-00-00"}));
  EXPECT_EQ(better->m_candidate_counter, 0);
  EXPECT_FALSE(HasReservation(2));
  EXPECT_EQ(Value(value::kConnectStatus), u"error");

  g_DebugMask = kPolicyLog;  // whose lines ask for the state of each entry that is passed over
  better->m_candidate_counter = 2;
  const BssEntryList entries{better, Add("Home", 3, 60)};
  const ConnectionFacts facts = Facts();
  wlan->stateResult = platform::ERROR_GEN_FAILURE;
  EXPECT_FALSE(CGlobalQUAYPolicy::SwitchConnectionToBest(adapter.get(), entries, 50, facts));
}

TEST_F(SwitchingTest, RestoreThatFailsEndsTheRound) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Home", 2, 70);
  wlan->refusals[ApMac(2)] = wlan->refusals[MacAddress{}] = 0x38001;
  Round();
  EXPECT_THROW(Round(), Exception);
}

TEST_F(SwitchingTest, PassiveModeRoamsByItselfWithRoamingOn) {
  for (const int mode : {1, 2}) {
    SetMode(mode);
    wlan->calls.clear();
    Connect("Office", 1);
    Add("Office", 1, 50);
    Add("Office", 2, 70);
    Rounds(2);
    EXPECT_EQ(wlan->calls, Calls{"connect Office 02-00-00-00-00-02"}) << mode;
    EXPECT_EQ(Value(value::kSuggestedNetworkSSID), u"") << mode;
  }
  EXPECT_EQ(Moves(true), 2u);
  Global().m_bRoamingEnabled = false;
  SetMode(1);
  Connect("Office", 1);
  wlan->calls.clear();
  Rounds(2);
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kSuggestedNetworkBSSID), MacText(ApMac(2)));
}

TEST_F(SwitchingTest, OpenSuggestionVetoesARoam) {
  SetMode(1);
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Office", 2, 70);
  config->m_Etw.GetMemo().Add(false, u"Office", better->m_BSSIDText.c_str(), u"", u"",
                              CApSetMemo::kNoFlag, 0);
  Rounds(3);
  EXPECT_EQ(wlan->calls, Calls{});
}

TEST_F(SwitchingTest, EventModeSuggestsAnotherNetworkOnce) {
  SetMode(1);
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  Rounds(2);
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kSuggestedNetworkSSID), u"Home");
  EXPECT_EQ(
      Value(value::kSuggestedNetworkReason),
      u"A Wireless Network that is 40% better is available. Would you like to connect to it?");
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, 0);
  EXPECT_EQ(adapter->Policy().m_last_suggested_bssid, better->m_BSSIDText);
  EXPECT_EQ(better->m_candidate_counter, 0);
  EXPECT_EQ(config->GetInhibitRemainingMs(), 0u);
  std::uint32_t count = 0;
  config->GetDWORD(u"SuggestCount", &count);
  Rounds(4);
  std::uint32_t later = 0;
  config->GetDWORD(u"SuggestCount", &later);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(later, 1u);
}

TEST_F(SwitchingTest, PopupInhibitsEvenWhenItIsNotShown) {
  SetMode(2);
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  const auto ask = [&] {
    better->m_candidate_counter = 2;
    adapter->Policy().m_last_suggested_pos = -1;
    config->Set_InhibitQUAY(0, "test");
    EXPECT_TRUE(CGlobalQUAYPolicy::SwitchConnectionToBest(adapter.get(), {better}, 50, Facts()));
    EXPECT_GT(config->GetInhibitRemainingMs(), 4000u);
    EXPECT_EQ(better->m_candidate_counter, 0);
    return adapter->Policy().m_last_suggested_pos == 0;
  };
  EXPECT_TRUE(ask());
  EXPECT_EQ(Value(value::kSuggestedNetworkSSID), u"Home");
  EXPECT_FALSE(ask());  // within the day
  EXPECT_EQ(wlan->calls, Calls{});
}

TEST_F(SwitchingTest, SuggestionThatIsMadeCountsAsAnAttempt) {
  SetMode(1);
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  for (int minute = 0; minute < 2; ++minute) {
    adapter->IncSwitchAttempt();
    RunFor(std::chrono::minutes(1));
  }
  better->m_candidate_counter = 2;
  CGlobalQUAYPolicy::SwitchConnectionToBest(adapter.get(), {better}, 50, Facts());
  ASSERT_EQ(Value(value::kSuggestedNetworkSSID), u"Home");
  EXPECT_EQ(config->m_APScoreThreshold, 3u);
  RunFor(std::chrono::minutes(1));
  adapter->IncSwitchAttempt();
  EXPECT_EQ(config->m_APScoreThreshold, 5u) << "three active minutes in a row";
}

TEST_F(SwitchingTest, TargetThatIsConnectedAlreadyIsPublished) {
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 70);
  mine->m_candidate_counter = 2;
  config->SetString(value::kConnectedNetwork, u"");
  EXPECT_TRUE(CGlobalQUAYPolicy::SwitchConnectionToBest(adapter.get(), {mine}, 50, Facts()));
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kConnectedNetwork), u"Office [Channel 36]");
}

// The reservation that a suggestion takes is dropped at the end of its own round: the other adapter
// of the machine may suggest the same access point.
TEST_F(SwitchingTest, NoReservationOutlivesTheRoundOfASuggestion) {
  SetMode(2);
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Home", 2, 70);
  Round();
  EXPECT_TRUE(HasReservation(2)) << "about to be ready";
  Round();
  EXPECT_EQ(Value(value::kSuggestedNetworkSSID), u"Home");
  EXPECT_FALSE(HasReservation(2));
}

TEST_F(SwitchingTest, OutsideConnectionAndAllowListTurnAutoswitchIntoDialogs) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Office", 2, 70);
  config->m_bForcePopupOverride = true;
  Rounds(2);
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kSuggestedNetworkBSSID), MacText(ApMac(2)));
  config->m_bForcePopupOverride = false;
  config->m_Popup.GetMemo().Clear();
  config->SetString(value::kSuggestedNetworkBSSID, u"");
  config->SetString(value::kAllowlistJson, u"[[\"Office\",\"any\"]]");
  config->m_Allowlist.ReloadFromRegistry(*config);
  Rounds(2);
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kSuggestedNetworkBSSID), MacText(ApMac(2)));
}

TEST_F(SwitchingTest, MonitorModeGoesThroughTheMotionsAndTouchesNothing) {
  Global().m_bMonitorWhileDisabled = true;
  config->m_Enabled = false;
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Home", 2, 70);
  const BssEntryList entries{better};
  better->m_candidate_counter = 2;
  EXPECT_TRUE(CGlobalQUAYPolicy::SwitchConnectionToBest(adapter.get(), entries, 50, Facts()));
  EXPECT_TRUE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), entries, false));
  config->m_accept_suggestion = true;
  config->SetString(value::kSuggestedNetworkBSSID, better->m_BSSIDText);
  EXPECT_FALSE(CGlobalQUAYPolicy::CheckAcceptSuggestion(adapter.get(), entries, Facts()));
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Events(), std::vector<std::string>{});
}

TEST_F(SwitchingTest, AutomaticConnectIsGivenFifteenSeconds) {
  const auto entry = Add("Office", 1, 60);
  config->m_force_scan_counter = 2;
  for (const platform::DWORD ms : {15'100u, 14'900u}) {
    wlan->connectMs = ms;
    const auto before = kernel.Clock().GetTickCount64();
    const bool done = CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false);
    EXPECT_EQ(done, ms < 15'000);
    EXPECT_NEAR(static_cast<double>(kernel.Clock().GetTickCount64() - before), 15'000, 150) << ms;
    RunFor(std::chrono::seconds(1));  // what comes too late
    Disconnect();
  }
  EXPECT_EQ(entry->m_connect_failed, 1);
  EXPECT_EQ(entry->m_connect_good, 1);
  EXPECT_EQ(config->m_force_scan_counter, 0);
}

TEST_F(SwitchingTest, FirstConnectTakesTheNextEntryAfterARefusal) {
  const auto first = Add("Office", 1, 60);
  Add("Home", 2, 50);
  wlan->refusals[ApMac(1)] = platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE;
  Rounds(3);
  EXPECT_EQ(wlan->calls,
            (Calls{"connect Office 02-00-00-00-00-01", "connect Home 02-00-00-00-00-02"}));
  EXPECT_EQ(first->m_connect_failed, 1);
  EXPECT_EQ(Moves(false), 1u);
  const auto events = Events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].substr(0, 52), "NewConnection|Score 50, 02-00-00-00-00-02, SQ 80, Ch");
  EXPECT_EQ(events[0].substr(events[0].size() - 5), "|None");

  const auto again = [&] {
    Disconnect();
    adapter->Policy().m_consec_disconnects = 30;
    wlan->calls.clear();
    Round();
    return wlan->calls.size();
  };
  EXPECT_EQ(again(), 1u) << "what is not available is not tried again";
  first->m_last_reason_code = 0;
  wlan->refusals[ApMac(1)] = platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE;
  EXPECT_EQ(again(), 2u);
  EXPECT_EQ(again(), 2u) << "after any other reason it is";
}

TEST_F(SwitchingTest, WithoutAnEligibleEntryTheStatusSaysSo) {
  config->m_ForceAutoConnect = false;
  const auto entry = Add("Office", 1, 60);
  entry->m_AutoConnect = false;
  const WString text(LookUpStatusText(kStatusNoAutoConnectProfile));
  EXPECT_FALSE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, true));
  EXPECT_EQ(Value(value::kStatusMessage), text);
  entry->m_last_reason_code = platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE;
  EXPECT_FALSE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false));
  entry->m_last_reason_code = 0;
  EXPECT_TRUE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false));
  EXPECT_EQ(Value(value::kStatusMessage), u"");
}

TEST_F(SwitchingTest, DisconnectedPassiveAdapterSuggestsTheBestNetwork) {
  SetMode(2);
  const auto entry = Add("Office", 1, 60);
  EXPECT_TRUE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false));
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kSuggestedNetworkReason), LookUpStatusText(kStatusBestNetwork));
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, 0);
  EXPECT_TRUE(HasReservation(1));
  config->m_allowlist_active = true;
  EXPECT_TRUE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false));
  EXPECT_EQ(wlan->calls.size(), 1u);
}

TEST_F(SwitchingTest, DisconnectedAdapterSuggestsByEventWithoutAQualityOfItsOwn) {
  SetMode(1);
  const auto entry = Add("Office", 1, 60);
  EXPECT_TRUE(CGlobalQUAYPolicy::ConnectToBestNoDebounce(adapter.get(), {entry}, false));
  const auto events = kernel.EventTrace().TakeEvents();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].Number("SignalQuality"), 0);
  EXPECT_EQ(events[0].Number("Percentage"), 100);
}

TEST_F(SwitchingTest, AcceptedSuggestionTellsOldAndNewAndCountsItsKindOfMove) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto other = Add("Office", 2, 40), net = Add("Home", 3, 40);
  const auto accept = [&](const CSmartPointer<CWlanBssEntry>& entry) {
    config->SetString(value::kSuggestedNetworkSSID, entry->m_SSIDW);
    config->SetString(value::kSuggestedNetworkBSSID, entry->m_BSSIDText);
    config->m_accept_suggestion = true;
    Round();
  };
  accept(other);
  EXPECT_EQ(Moves(true), 1u);
  accept(net);
  EXPECT_EQ(Moves(false), 1u);
  const auto events = Events();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].find("SuggestionAccepted|Score 40, 02-00-00-00-00-02"), 0u) << events[0];
  EXPECT_NE(events[0].find("|Score 50, 02-00-00-00-00-01"), std::string::npos) << events[0];
}

}  // namespace
}  // namespace corvane
