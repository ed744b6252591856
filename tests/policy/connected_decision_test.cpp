#include "policy/policy_fixture.h"

namespace corvane {
namespace {

using test::ApMac;

class ConnectedDecisionTest : public test::PolicyTest {
 protected:
  explicit ConnectedDecisionTest(int adapters = 1) : PolicyTest(adapters) {}
  bool IsBest(const BssEntryList& entries, CSmartPointer<CWlanBssEntry>* best) {
    return CGlobalQUAYPolicy::IsConnectedToBest(adapter.get(), entries, Facts(), best);
  }
  void FastScan(const BssEntryList& entries) {
    CGlobalQUAYPolicy::EnabledFastScan_connected(adapter.get(), entries, Facts());
  }
  std::uint32_t Number(WStringView name) {
    std::uint32_t number = 0;
    config->GetDWORD(name, &number);
    return number;
  }
};

class ConnectedDecisionOfTwo : public ConnectedDecisionTest {
 protected:
  ConnectedDecisionOfTwo() : ConnectedDecisionTest(2) {}
};

TEST_F(ConnectedDecisionOfTwo, BestIsTheHeadThatNoOtherAdapterHas) {
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 50), taken = Add("Office", 2, 90),
             third = Add("Office", 3, 40);
  adapters[1]->Claim().ClaimSuggested(ApMac(2), 0);
  CSmartPointer<CWlanBssEntry> best;
  EXPECT_TRUE(IsBest({mine, taken}, &best));
  EXPECT_EQ(best, mine);
  EXPECT_TRUE(IsBest({taken, mine}, &best));
  EXPECT_EQ(best, mine);
  EXPECT_FALSE(IsBest({taken, third}, &best));
  EXPECT_EQ(best, third);
  EXPECT_FALSE(IsBest({taken}, &best));
  EXPECT_FALSE(best);
  EXPECT_TRUE(IsBest({}, &best));
  EXPECT_EQ(best, mine);  // out of the model
  adapters[1]->Claim().GiveUp(ApMac(2));
  EXPECT_FALSE(IsBest({taken, mine}, &best));
  EXPECT_EQ(best, taken);
}

TEST_F(ConnectedDecisionTest, BestAlreadyClearsTheCountersAndTellsTheQuality) {
  SetMode(1);
  Connect("Office", 1, 80);
  const auto mine = Add("Office", 1, 50), other = Add("Home", 2, 40);
  other->m_candidate_counter = 2;
  Round();
  EXPECT_EQ(other->m_candidate_counter, 0);
  EXPECT_EQ(Number(u"QualityGoodCount"), 1u);
  EXPECT_EQ(Number(u"BestCount"), 0u);  // nothing was suggested
  mine->m_Bss.uLinkQuality = 60;
  wlan->links[0].quality = 60;
  Rounds(2);
  EXPECT_EQ(Number(u"QualityBadCount"), 1u);  // the second report is a repeat
  config->m_bForceLQEtw = true;
  Round();
  EXPECT_EQ(Number(u"QualityBadCount"), 2u);
  EXPECT_FALSE(config->m_bForceLQEtw);
}

TEST_F(ConnectedDecisionTest, TakenSuggestionIsClosedAndAnotherIsAnsweredByTheBest) {
  SetMode(1);
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 50);
  Add("Home", 2, 40);
  CApSetMemo& memo = config->m_Etw.GetMemo();
  memo.Add(false, u"Office", mine->m_BSSIDText.c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
  Round();
  EXPECT_FALSE(memo.HasNetwork(u"Office"));
  EXPECT_EQ(Number(u"BestCount"), 1u);
  config->m_Etw.ResetBest();
  memo.Add(false, u"Home", MacText(ApMac(2)).c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
  Round();
  EXPECT_TRUE(memo.HasNetwork(u"Home"));
  EXPECT_EQ(Number(u"BestCount"), 2u);
}

TEST_F(ConnectedDecisionTest, EarlyCheckClosesASuggestionOnAStaleRound) {
  SetMode(1);
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 50);
  Add("Home", 2, 90);  // not the best: only the early check can close it
  CApSetMemo& memo = config->m_Etw.GetMemo();
  for (const bool decides : {false, true}) {
    Global().m_bULScan = decides;
    memo.Add(false, u"Office", mine->m_BSSIDText.c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
    Round();
    EXPECT_FALSE(memo.HasNetwork(u"Office")) << decides;
  }
}

TEST_F(ConnectedDecisionTest, LostConnectionLetsTheNextOneBeReportedAnew) {
  SetMode(1);
  config->m_ForceAutoConnect = config->m_network_switching = false;
  const auto mine = Add("Office", 1, 50);
  for (const std::uint32_t reports : {1u, 2u}) {
    Connect("Office", 1, 80);
    Rounds(2);
    EXPECT_EQ(Number(u"QualityGoodCount"), reports);
    Disconnect();
    Round();
  }
}

TEST_F(ConnectedDecisionTest, ConnectionOutsideTheListIsLeftByItsModelOrBackupScore) {
  Connect("Cafe", 1);
  const auto better = Add("Home", 2, 60);
  adapter->Link().SetBackupScore(50);
  Round();
  EXPECT_EQ(better->m_candidate_counter, 1);
  adapter->Link().SetBackupScore(58);  // within the margin
  better->m_candidate_counter = 0;
  Round();
  EXPECT_EQ(better->m_candidate_counter, 0);

  FastScan({better});
  EXPECT_EQ(config->m_force_scan_counter, 0);
  adapter->Link().SetBackupScore(57);
  FastScan({better});
  EXPECT_EQ(config->m_force_scan_counter, 3);
}

TEST_F(ConnectedDecisionTest, ScoreOfNothingIsAScore) {
  Connect("Office", 1);
  Add("Office", 1, 0);
  Add("Home", 2, 30);
  config->m_rate_gate_high = 1.0;
  adapter->Link().SetBackupScore(100);
  Round();
  EXPECT_EQ(wlan->calls.size(), 1u) << "what is better than nothing need not ripen";
}

TEST_F(ConnectedDecisionTest, FastScanAsksForScansOnlyForSomethingNewAndBetter) {
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 50), better = Add("Home", 2, 53);
  FastScan({mine, better});
  EXPECT_EQ(config->m_force_scan_counter, 0);  // best already
  FastScan({better, mine});
  EXPECT_EQ(config->m_force_scan_counter, 3);  // points alone count here, not the percent
  config->m_force_scan_counter = 1;
  FastScan({better, mine});
  EXPECT_EQ(config->m_force_scan_counter, 1);
  Global().m_rt_audio = true;
  SetScore(*better, 52);
  FastScan({better, mine});
  EXPECT_EQ(config->m_force_scan_counter, 1);  // held back before anything is called off
  Global().m_rt_audio = false;
  FastScan({better, mine});
  EXPECT_EQ(config->m_force_scan_counter, 0);
}

TEST_F(ConnectedDecisionTest, FastScanDoesNotChaseItsLastSuggestionTwice) {
  Connect("Office", 1);
  const auto mine = Add("Office", 1, 50), better = Add("Home", 2, 70);
  config->SetString(value::kConnectedBssid, mine->m_BSSIDText);
  for (const int mode : {1, 2}) {
    SetMode(mode);
    CApSetMemo& memo = mode == 1 ? config->m_Etw.GetMemo() : config->m_Popup.GetMemo();
    memo.Add(false, u"Home", better->m_BSSIDText.c_str(), u"", u"", CApSetMemo::kNoFlag, 0);
    config->SetString(value::kSuggestedNetworkSSID, u"");
    config->m_force_scan_counter = 0;
    FastScan({better, mine});
    EXPECT_EQ(config->m_force_scan_counter, 0) << mode;
    config->SetString(value::kSuggestedNetworkSSID, u"Home");
    config->SetString(value::kSuggestedNetworkBSSID, better->m_BSSIDText);
    FastScan({better, mine});
    EXPECT_EQ(config->m_force_scan_counter, 3)
        << mode;  // the standing suggestion is not taken up yet
  }
}

TEST_F(ConnectedDecisionTest, NullInterfacesAreLeftAlone) {
  CGlobalQUAYPolicy::MakeChoice_connected(nullptr, {}, {});
  CGlobalQUAYPolicy::EnabledFastScan_connected(nullptr, {}, {});
  CGlobalQUAYPolicy::MakeChoice_disconnected(nullptr, {});
}

}  // namespace
}  // namespace corvane
