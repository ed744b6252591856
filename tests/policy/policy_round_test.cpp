#include <algorithm>

#include "platform/sim/kernel/sim_session.h"
#include "policy/candidate_list.h"
#include "policy/policy_fixture.h"
#include "policy/policy_log.h"

namespace corvane {
namespace {

using test::ApMac;

// First field and second field of each row, as "SSID n".
std::vector<std::string> RowsOf(const WString& csv) {
  std::vector<std::string> rows;
  std::size_t at = 0;
  while (at < csv.size()) {
    const std::size_t end = std::min(csv.find(u'\t', at), csv.size());
    const WString row = csv.substr(at, end - at);
    const std::size_t first = row.find(u'\v'), second = row.find(u'\v', first + 1);
    rows.push_back(Narrow(row.substr(0, first)) + " " + Narrow(row.substr(second - 1, 1)));
    at = end + 1;
  }
  return rows;
}

class PolicyRoundTest : public test::PolicyTest {
 protected:
  std::vector<std::string> Candidates() { return RowsOf(Value(value::kCandidatesCSV)); }
  std::vector<std::string> Others() { return RowsOf(Value(value::kNONCandidatesCSV)); }
  using Rows = std::vector<std::string>;
};

TEST_F(PolicyRoundTest, NothingInRangePublishesEmptyLists) {
  config->SetString(value::kCandidatesCSV, u"old");
  Round();
  EXPECT_EQ(Value(value::kProfiledNetworksInRangeJson), u"[]");
  EXPECT_EQ(Value(value::kCandidatesCSV), u"");
  EXPECT_EQ(Value(value::kNONCandidatesCSV), u"");
  CGlobalQUAYPolicy::ExecutePolicies(nullptr);
}

TEST_F(PolicyRoundTest, CandidatesAreSortedAndTheRestIsShownBesideThem) {
  Add("Office", 1, 40);
  Add("Office", 2, 60);
  Add("Home", 3, 50, 70);
  Add("Home", 4, 50, 75);
  Add("Cafe", 5, 90)->m_AuthAlgorithm = platform::DOT11_AUTH_ALGO_80211_OPEN;
  Add("Next door", 6, 80)->m_GrantedAccess = platform::WLAN_READ_ACCESS;
  Add("Shed", 7, 95)->m_bDenied = true;
  Add("Hidden away", 8, 99);
  Global().SetNetworkFilters({{u"Hidden away", kFilterDenied}});
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 2", "Home 4", "Home 3", "Office 1"}));
  EXPECT_EQ(Others(), (Rows{"Shed 7", "Cafe 5", "Next door 6"}));
  EXPECT_EQ(Value(value::kProfiledNetworksInRangeJson),
            u"[\"Office\",\"Home\",\"Home\",\"Office\"]");
}

TEST_F(PolicyRoundTest, EqualEntriesComeInTheReverseOfTheirMap) {
  Add("Office", 1, 50);
  Add("Office", 2, 50);
  Add("Home", 3, 50);
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 2", "Office 1", "Home 3"}));
}

TEST_F(PolicyRoundTest, LongListLosesItsFirstRows) {
  for (int i = 0; i < 402; ++i) {
    const auto entry = Add("Network " + std::to_string(i), i % 250, 1000 - i);
    entry->m_BSSIDText = u"02-00-00-00-00-01";
  }
  Round();
  // Such a value is longer than the program itself reads.
  const auto stored = kernel.Registry().GetText(
      WString(kHomeKeyPath) + u"\\" + adapter->GetGuidText(), value::kCandidatesCSV);
  ASSERT_TRUE(stored);
  const Rows rows = RowsOf(*stored);
  ASSERT_EQ(rows.size(), 400u);
  EXPECT_EQ(rows.front().substr(0, 9), "Network 2");
  EXPECT_EQ(rows.back().substr(0, 11), "Network 401");
}

TEST_F(PolicyRoundTest, PreferredEntryLeadsFromItsQualityOn) {
  Add("Office", 1, 60);
  const auto preferred = Add("Home", 2, 10, 75);
  preferred->m_arbitrary_priority = 100;
  preferred->m_arbitrary_min_lq = 75;
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Home 2", "Office 1"}));
  preferred->m_arbitrary_min_lq = 76;
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 1", "Home 2"}));
}

TEST_F(PolicyRoundTest, EntryLeavesAfterThreeMissedScansUnlessItIsTheConnection) {
  Connect("Office", 1);
  const auto connected = Add("Office", 1, 50), other = Add("Office", 2, 40);
  for (const auto& entry : {connected, other})
    entry->m_bss_scanned = false, entry->m_unscanned_count = 2;
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 1", "Office 2"}));
  connected->m_unscanned_count = other->m_unscanned_count = 3;
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 1"}));
}

TEST_F(PolicyRoundTest, ConnectedNetworkComesFirstAndOnceInTheNetworksInRange) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Office", 2, 40);
  Add("Home", 3, 90);
  Round();
  EXPECT_EQ(Value(value::kProfiledNetworksInRangeJson), u"[\"Office\",\"Home\"]");
}

TEST_F(PolicyRoundTest, LatchedAdapterKeepsToItsNetwork) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("OFFICE", 2, 40);
  Add("Home", 3, 90);
  config->m_network_switching = false;
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Office 1", "OFFICE 2"}));
  // All profiled networks are published before the latch.
  EXPECT_EQ(Value(value::kProfiledNetworksInRangeJson), u"[\"Office\",\"Home\",\"OFFICE\"]");
  Disconnect();
  Round();
  EXPECT_EQ(Candidates().size(), 3u);
}

TEST_F(PolicyRoundTest, AllowListKeepsItsRowsAlone) {
  Add("Office", 1, 50);
  Add("Home", 2, 40);
  config->SetString(value::kAllowlistJson, u"[[\"home\",\"any\"]]");
  config->m_Allowlist.ReloadFromRegistry(*config);
  Round();
  EXPECT_EQ(Candidates(), (Rows{"Home 2"}));
  EXPECT_EQ(Others(), (Rows{"Office 1"}));
  EXPECT_TRUE(config->m_allowlist_active);
  Global().m_bAllowlistEnabled = false;
  Round();
  EXPECT_EQ(Candidates().size(), 2u);
  EXPECT_FALSE(config->m_allowlist_active);
}

TEST_F(PolicyRoundTest, QualityIsTheBetterOfAssociationAndModel) {
  Connect("Office", 1, 50);
  const auto entry = Add("Office", 1, 50, 60);
  std::uint32_t quality = 50;
  const auto peg = [&](bool connected) {
    CGlobalQUAYPolicy::UpdateAssociateLQPegging(adapter.get(), connected, &quality, u"Office",
                                                ApMac(1), "t");
  };
  peg(true);
  EXPECT_EQ(quality, 60u);
  EXPECT_TRUE(adapter->Policy().m_peg_active);
  EXPECT_EQ(adapter->Policy().m_assoc_lq, 50);
  EXPECT_EQ(adapter->Policy().m_bss_lq, 60);
  quality = 60;
  peg(true);  // not above
  EXPECT_FALSE(adapter->Policy().m_peg_active);
  peg(false);
  EXPECT_EQ(adapter->Policy().m_assoc_lq, -1);
  EXPECT_EQ(adapter->Policy().m_bss_lq, -1);
}

TEST_F(PolicyRoundTest, BluetoothActivityEndsAtItsTick) {
  EXPECT_FALSE(IsBluetoothActive(0, 100));
  EXPECT_TRUE(IsBluetoothActive(101, 100));
  EXPECT_FALSE(IsBluetoothActive(100, 100));
  const auto low = Add("Office", 1, 50), high = Add("Office", 2, 50);
  low->m_Bss.ulChCenterFrequency = 2437000;
  adapter->SetBTPenalty(5);
  EXPECT_EQ(low->GetScore(false, ScoreContext()), 45);
  EXPECT_EQ(high->GetScore(false, ScoreContext()), 50);
}

TEST_F(PolicyRoundTest, ClientsOrderIsServedFromEitherListAndLivesForOneRound) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Home", 2, 40);
  Add("Cafe", 3, 30)->m_AuthAlgorithm = platform::DOT11_AUTH_ALGO_80211_OPEN;
  Global().m_rt_audio = true;  // nothing but orders moves the adapter
  const auto order = [&](const WString& ssid, int n) {
    wlan->calls.clear();
    config->SetString(value::kConnectStatus, u"pending");
    config->SetUIConnectRequest({ssid, MacText(ApMac(n)), {}, false});
    Round();
    EXPECT_TRUE(config->TakeUIConnectRequest().bssid.empty());
    return wlan->calls;
  };
  using Calls = std::vector<std::string>;
  EXPECT_EQ(order(u"Home", 2), (Calls{"connect Home 02-00-00-00-00-02"}));
  EXPECT_EQ(Value(value::kConnectedBssid), MacText(ApMac(2)));
  EXPECT_EQ(order(u"Cafe", 3), (Calls{"connect Cafe 02-00-00-00-00-03"}));
  EXPECT_EQ(Value(value::kConnectStatus), u"connected");
  // The connection itself: fulfilled already, the status stays.
  adapter->Policy().m_emergency_armed = false;
  EXPECT_EQ(order(u"Cafe", 3), Calls{});
  EXPECT_EQ(Value(value::kConnectStatus), u"pending");
  EXPECT_TRUE(adapter->Policy().m_emergency_armed) << "the round goes on to its choice";
  EXPECT_EQ(order(u"Nowhere", 77), Calls{});
  EXPECT_EQ(Value(value::kConnectStatus), u"error");
}

TEST_F(PolicyRoundTest, RefusedOrderIsTriedThreeTimesTwoSecondsApart) {
  const auto entry = Add("Home", 2, 40);
  wlan->refusals[ApMac(2)] = platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE;
  config->SetUIConnectRequest({u"Home", MacText(ApMac(2)), {}, false});
  const auto before = kernel.Clock().GetTickCount64();
  Round();
  EXPECT_EQ(wlan->calls.size(), 3u);
  EXPECT_EQ(kernel.Clock().GetTickCount64() - before, 4000u);
  EXPECT_EQ(entry->m_connect_failed, 0);  // a person's wish is no statistic
  EXPECT_EQ(entry->m_last_reason_code, platform::WLAN_REASON_CODE_ASSOCIATION_FAILURE);
  EXPECT_EQ(Value(value::kConnectStatus), u"error");
}

TEST_F(PolicyRoundTest, OrderWithoutAProfileAsksTheUserAndClaimsNoConnection) {
  const auto cafe = Add("Cafe", 3, 30), home = Add("Home", 2, 40);
  cafe->m_GrantedAccess = platform::WLAN_READ_ACCESS;
  const auto order = [&](const CSmartPointer<CWlanBssEntry>& entry, const char16_t* profile) {
    config->SetUIConnectRequest({entry->m_SSIDW, entry->m_BSSIDText, profile, false});
    wlan->calls.clear();
    Round();
    return wlan->calls.size();
  };
  EXPECT_EQ(order(cafe, u""), 0u);
  EXPECT_EQ(kernel.Session().TakeCommands().size(), 1u);
  EXPECT_EQ(Value(value::kConnectStatus), u"external");
  EXPECT_EQ(Value(value::kConnectedBssid), u"");
  EXPECT_EQ(cafe->m_connect_good, 0);
  EXPECT_FALSE(cafe->m_ever_connected);
  EXPECT_EQ(adapter->Policy().m_consec_disconnects, 0u)
      << "the order is carried out: no choice in this round";

  wlan->connectMs = 100'000;
  EXPECT_EQ(order(home, u""), 2u)
      << "the first try is given up after 90 s, and ends during the second";
  Disconnect();
  RunFor(std::chrono::seconds(100));
  EXPECT_EQ(order(cafe, u"<xml/>"), 1u) << "without a stored profile a person may be asked";
  EXPECT_EQ(cafe->m_connect_good, 1);
}

// The wait holds the lock of all adapters and clients.
TEST_F(PolicyRoundTest, OrderWhoseCompletionIsLostEndsByItself) {
  const auto cafe = Add("Cafe", 3, 30);
  cafe->m_GrantedAccess = platform::WLAN_READ_ACCESS;
  wlan->connectMs = 24 * 3600 * 1000;
  config->SetUIConnectRequest({u"Cafe", cafe->m_BSSIDText, u"<xml/>", false});
  const auto before = kernel.Clock().GetTickCount64();
  Round();
  EXPECT_EQ(wlan->calls.size(), 3u);
  EXPECT_EQ(kernel.Clock().GetTickCount64() - before, 3 * 600'000u + 2 * 2000u);
  EXPECT_EQ(Value(value::kConnectStatus), u"error");
}

TEST_F(PolicyRoundTest, LogLinesLeaveTheCounterOfAnUnscannedEntry) {
  g_DebugMask = kCandidateDetailLog;
  const auto entry = Add("Office", 1, 50);
  entry->m_bss_scanned = false;
  entry->m_unscanned_count = entry->m_candidate_counter = 1;
  Round();
  EXPECT_EQ(entry->m_candidate_counter, 1);
}

TEST_F(PolicyRoundTest, AcceptedSuggestionIsConnectedOnce) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  const auto suggested = Add("Home", 2, 40);
  config->SetString(value::kSuggestedNetworkSSID, u"Home");
  config->SetString(value::kSuggestedNetworkBSSID, suggested->m_BSSIDText);
  config->m_accept_suggestion = true;
  Rounds(2);
  EXPECT_EQ(wlan->calls, std::vector<std::string>{"connect Home 02-00-00-00-00-02"});
  EXPECT_TRUE(suggested->m_ever_connected);
  EXPECT_EQ(suggested->m_connect_good, 1);
}

TEST_F(PolicyRoundTest, FailedAcceptanceRestoresTheConnectionAndTheRoundGoesOn) {
  Connect("Office", 1);
  Add("Office", 1, 50);
  Add("Home", 2, 40);
  wlan->refusals[ApMac(2)] = 77;
  config->SetString(value::kSuggestedNetworkSSID, u"Home");
  config->SetString(value::kSuggestedNetworkBSSID, MacText(ApMac(2)));
  config->m_accept_suggestion = true;
  adapter->Policy().m_last_score_notify_tick = 0;
  Round();
  ASSERT_EQ(wlan->calls.size(), 4u);
  EXPECT_EQ(wlan->calls.back(), "connect Office 00-00-00-00-00-00");
  EXPECT_NE(adapter->Policy().m_last_score_notify_tick, 0u);  // the choice ran
}

}  // namespace
}  // namespace corvane
