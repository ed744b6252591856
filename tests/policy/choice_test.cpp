#include "policy/policy_fixture.h"
#include "policy/policy_log.h"

namespace corvane {
namespace {

using test::ApMac;
using Calls = std::vector<std::string>;

class ChoiceTest : public test::PolicyTest {
 protected:
  void Deny(const WString& json) {
    config->SetString(value::kDenylistJson, json);
    config->m_Denylist.ReloadFromRegistry(*config);
  }
};

TEST_F(ChoiceTest, DeniedConnectionIsLeftAndTheDecisionWaitsTenSeconds) {
  Connect("Office", 1);
  Add("Office", 1, 50)->m_bDenied = true;
  Add("Home", 2, 40);
  Deny(u"[[\"office\",\"any\"]]");
  const auto before = kernel.Clock().GetTickCount64();
  adapter->Policy().m_consec_disconnects = 20;
  Round();
  EXPECT_EQ(wlan->calls, Calls{"disconnect"});
  EXPECT_EQ(kernel.Clock().GetTickCount64() - before, 3000u);
  EXPECT_EQ(Value(value::kDisconnectedNetwork), u"Office [Channel 36]");
  EXPECT_EQ(config->m_deny_defer_until, before + 10'000);
  adapter->Policy().m_consec_disconnects = 20;
  adapter->ClearConnected();
  Round();  // within the ten seconds: does not even count
  EXPECT_EQ(adapter->Policy().m_consec_disconnects, 20u);
  RunFor(std::chrono::milliseconds(7001));
  adapter->Policy().m_consec_disconnects = 30;
  Round();
  EXPECT_EQ(wlan->calls, (Calls{"disconnect", "connect Home 02-00-00-00-00-02"}));
}

// The lines of the log ask for the state too; what they get decides nothing.
TEST_F(ChoiceTest, DeniedConnectionIsLeftThoughTheStateCannotBeRead) {
  g_DebugMask = kPolicyLog;
  Connect("Office", 1);
  Deny(u"[[\"Office\",\"any\"]]");
  wlan->stateResult = platform::ERROR_GEN_FAILURE;
  const auto before = kernel.Clock().GetTickCount64();
  Round();
  EXPECT_EQ(wlan->calls, Calls{"disconnect"});
  EXPECT_EQ(kernel.Clock().GetTickCount64() - before, 3000u);
}

TEST_F(ChoiceTest, DenyRowHoldsForEverySpellingOfItsSsid) {
  Deny(u"[[\"Lab\",\"any\"]]");
  Add("Lab", 1, 50)->m_bDenied = true;
  Add("LAB", 2, 60);
  Rounds(4);
  EXPECT_EQ(wlan->calls, Calls{}) << "it would be left and connected again without end";
}

TEST_F(ChoiceTest, DisabledAdapterKeepsADeniedConnectionAndAFailedDisconnectGoesOn) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Deny(u"[[\"Office\",\"02-00-00-00-00-01\"]]");
  config->m_Enabled = false;
  Round();
  EXPECT_EQ(wlan->calls, Calls{});
  config->m_Enabled = true;
  wlan->disconnectResult = platform::ERROR_GEN_FAILURE;
  adapter->Policy().m_last_score_notify_tick = 0;
  Add("Office", 2, 20);
  Round();
  EXPECT_EQ(wlan->calls, Calls{"disconnect"});
  EXPECT_EQ(config->m_deny_defer_until, 0u);
  EXPECT_NE(adapter->Policy().m_last_score_notify_tick, 0u);
}

TEST_F(ChoiceTest, EmptyListAndRoamingInhibitEndTheRoundBeforeAnythingElse) {
  Connect("Office", 1, 30);
  adapter->Policy().m_emergency_armed = true;
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 0);  // weak, but nothing to go to
  Add("Office", 1, 50);
  config->SetRoamingInhibit();
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 0);
  config->ClearRoamingInhibit();
  config->m_LQCThreshold = 90;  // the model's quality of 80 counts
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 3);
}

TEST_F(ChoiceTest, EmergencyFiresOnceForEachBadSpell) {
  Connect("Office", 1, 30);
  Add("Office", 1, 50, 30);
  adapter->Policy().m_emergency_armed = true;
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 3);
  EXPECT_FALSE(adapter->Policy().m_emergency_armed);
  config->m_force_scan_counter = 0;
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 0);
  wlan->links[0].quality = 70;  // recovered, at the threshold
  Round();
  EXPECT_TRUE(adapter->Policy().m_emergency_armed);
  wlan->links[0].quality = 69;
  config->m_force_scan_counter = 1;  // scans are under way: stays armed
  Round();
  EXPECT_TRUE(adapter->Policy().m_emergency_armed);
}

TEST_F(ChoiceTest, TwoNetworksGoneMissingAskADisconnectedAdapterToScan) {
  Add("Office", 1, 50)->m_unscanned_count = 1;
  Add("Office", 2, 50)->m_unscanned_count = 1;
  config->m_Enabled = false;
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 0);  // one network
  Add("Home", 3, 50)->m_unscanned_count = 1;
  Round();
  EXPECT_EQ(config->m_force_scan_counter, 3);
}

TEST_F(ChoiceTest, SuggestionThatLostItsPlaceIsWithdrawn) {
  SetMode(1);
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto suggested = Add("Home", 2, 40);
  const auto suggest = [&](std::int32_t position) {
    adapter->Policy().m_last_suggested_pos = position;
    adapter->Policy().m_last_suggested_ssid = u"Home";
    adapter->Policy().m_last_suggested_bssid = suggested->m_BSSIDText;
    config->SetString(value::kSuggestedNetwork, u"Home");
    Round();
  };
  suggest(1);
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, 1);
  EXPECT_EQ(Value(value::kSuggestedNetwork), u"Home");
  config->SetRoamingInhibit();
  suggest(5);
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, 5) << "the inhibit ends the round before";
  config->ClearRoamingInhibit();
  suggest(5);  // the list has become too short: the values stay
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, -1);
  EXPECT_EQ(adapter->Policy().m_last_suggested_bssid, u"");
  EXPECT_EQ(Value(value::kSuggestedNetwork), u"Home");
  EXPECT_NE(Value(u"BestNetwork").find(u"Home"), WString::npos);
  suggest(0);  // somebody else stands there
  EXPECT_EQ(adapter->Policy().m_last_suggested_pos, -1);
  EXPECT_EQ(Value(value::kSuggestedNetwork), u"");
}

TEST_F(ChoiceTest, DisconnectedAdapterConnectsInTheThirdRoundOrInTheThirtiethOfTheQuickLoop) {
  Add("Office", 1, 50);
  Rounds(2);
  EXPECT_EQ(wlan->calls, Calls{});
  Round();
  EXPECT_EQ(wlan->calls, Calls{"connect Office 02-00-00-00-00-01"});
  EXPECT_EQ(adapter->Policy().m_consec_disconnects, 30u);
  Round();
  EXPECT_EQ(adapter->Policy().m_consec_disconnects, 0u);

  Disconnect();
  config->OpenNoDelay(15'000);
  Rounds(29);
  EXPECT_EQ(wlan->calls.size(), 1u);
  Round();
  EXPECT_EQ(wlan->calls.size(), 2u);

  Disconnect();
  RunFor(std::chrono::milliseconds(15'000));
  ASSERT_TRUE(config->m_no_delay) << "its flag stays on where the window has no effect";
  Rounds(3);
  EXPECT_EQ(wlan->calls.size(), 3u);
}

TEST_F(ChoiceTest, StateThatChangesWithinTheRoundDecidesNothing) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Office", 2, 90);
  better->m_candidate_counter = 1;
  // Red networks, score report, arming, staleness, emergency, log, dispatch; the one after that.
  wlan->stateQueriesBeforeLoss = 7;
  Round();
  EXPECT_EQ(better->m_candidate_counter, 1);
  EXPECT_EQ(wlan->calls, Calls{});
}

TEST_F(ChoiceTest, StaleRoundIsSkippedOnlyWithoutULScan) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto better = Add("Office", 2, 90);
  Round();
  EXPECT_EQ(better->m_candidate_counter, 1);  // no scan ran, ULScan is on
  Global().m_bULScan = false;
  config->m_ScanInterval = 30;
  Round();
  EXPECT_EQ(better->m_candidate_counter, 1);
}

TEST_F(ChoiceTest, LatchWithoutForcedConnectKeepsADisconnectedAdapterQuiet) {
  Add("Office", 1, 50);
  config->m_ForceAutoConnect = false;
  config->m_network_switching = false;
  Rounds(3);
  EXPECT_EQ(wlan->calls, Calls{});
  config->m_ForceAutoConnect = true;
  Round();
  EXPECT_EQ(wlan->calls.size(), 1u);
}

TEST_F(ChoiceTest, OnlyAForcedConnectTakesAProfileThatDoesNotConnectByItself) {
  Add("Office", 1, 60)->m_AutoConnect = false;
  config->m_ForceAutoConnect = false;
  Rounds(4);
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(Value(value::kStatusMessage), LookUpStatusText(kStatusNoAutoConnectProfile));
  Add("Home", 2, 50);
  Round();
  EXPECT_EQ(wlan->calls, Calls{"connect Home 02-00-00-00-00-02"}) << "the best that may";

  Disconnect();
  adapter->Policy().m_consec_disconnects = 30;
  config->m_ForceAutoConnect = true;
  Round();
  EXPECT_EQ(wlan->calls.back(), "connect Office 02-00-00-00-00-01");
}

TEST_F(ChoiceTest, DisabledAdapterDecidesNothingWhileDisconnected) {
  const auto entry = Add("Office", 1, 50);
  entry->m_candidate_counter = 2;
  adapter->Claim().ClaimSuggested(ApMac(1), 0);
  Global().m_bServiceEnable = false;
  CGlobalQUAYPolicy::MakeChoice_disconnected(adapter.get(), {entry});
  EXPECT_EQ(wlan->calls, Calls{});
  EXPECT_EQ(entry->m_candidate_counter, 0);
  EXPECT_FALSE(HasReservation(1));
}

}  // namespace
}  // namespace corvane
