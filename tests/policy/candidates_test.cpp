#include "policy/policy_fixture.h"
#include "wlan/wifi_client_container.h"

namespace corvane {
namespace {

using test::ApMac;

class CandidateDebounce : public test::PolicyTest {
 protected:
  explicit CandidateDebounce(int adapters = 1) : PolicyTest(adapters) {}

  bool Increment(const BssEntryList& entries, std::int32_t current) {
    return CGlobalQUAYPolicy::IncrementCandidateCounters(adapter.get(), ApMac(1), entries, current,
                                                         &qualifier);
  }
  CSmartPointer<CWlanBssEntry> qualifier;
  void TearDown() override {
    qualifier.reset();
    PolicyTest::TearDown();
  }
};

class CandidateDebounceOfTwo : public CandidateDebounce {
 protected:
  CandidateDebounceOfTwo() : CandidateDebounce(2) {}
};

TEST_F(CandidateDebounce, OneAdapterReservesInTheFirstRoundAndIsReadyInTheSecond) {
  const BssEntryList entries{Add("Office", 2, 60), Add("Office", 1, 50)};
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_TRUE(HasReservation(2));
  EXPECT_EQ(qualifier, entries[0]);
  EXPECT_TRUE(Increment(entries, 50));
}

TEST_F(CandidateDebounceOfTwo, TwoAdaptersReserveInTheSecondRoundAndAreReadyInTheThird) {
  const BssEntryList entries{Add("Office", 2, 60)};
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_FALSE(HasReservation(2));
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_TRUE(HasReservation(2));
  EXPECT_TRUE(Increment(entries, 50));
}

TEST_F(CandidateDebounceOfTwo, ConnectionAndReservationOfAnotherAdapterHoldACandidateBack) {
  const BssEntryList entries{Add("Office", 2, 60), Add("Office", 3, 60)};
  Connect("Office", 2, 80, 1);
  adapters[1]->Claim().ClaimSuggested(ApMac(3), 0);
  entries[0]->m_candidate_counter = 1;
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_EQ(entries[0]->m_candidate_counter, 1) << "it waits";
  EXPECT_EQ(entries[1]->m_candidate_counter, 0);
  EXPECT_FALSE(qualifier);
  EXPECT_FALSE(CGlobalQUAYPolicy::IsBetterCandidatePossible(adapter.get(), entries, 50));
  adapters[1]->Claim().GiveUp(ApMac(2));  // another one's: stays
  EXPECT_FALSE(Increment(entries, 50));
  adapters[1]->Claim().GiveUp(ApMac(3));
  Increment(entries, 50);
  EXPECT_EQ(entries[1]->m_candidate_counter, 1);
  EXPECT_TRUE(CGlobalQUAYPolicy::IsBetterCandidatePossible(adapter.get(), entries, 50));
}

TEST_F(CandidateDebounceOfTwo, TheLaterOneIsBehindOnASharedAccessPoint) {
  auto& clients = CWifiClientContainer::GetInstance();
  Connect("Office", 2, 80, 0);
  EXPECT_FALSE(clients.IsBehindAnother(*adapters[1])) << "it is nowhere";
  Connect("Office", 2, 80, 1);
  EXPECT_TRUE(clients.IsBehindAnother(*adapters[1]));
  EXPECT_FALSE(clients.IsBehindAnother(*adapters[0]));
  Connect("Office", 3, 80, 1);
  EXPECT_FALSE(clients.IsBehindAnother(*adapters[1]));

  EXPECT_FALSE(adapters[1]->GetScoreContext().shared);
  adapters[1]->NoteShared(ApMac(2));
  EXPECT_EQ(adapters[1]->GetScoreContext().shared, ApMac(2));
  adapters[1]->NoteShared({});
  EXPECT_FALSE(adapters[1]->GetScoreContext().shared);
}

TEST_F(CandidateDebounce, BetterOneIsPossibleFromBothMarginsOn) {
  const auto possible = [&](std::int32_t score, platform::ULONG quality) {
    return CGlobalQUAYPolicy::IsBetterCandidatePossible(adapter.get(),
                                                        {Add("Office", 2, score, quality)}, 50);
  };
  EXPECT_TRUE(possible(53, 70));
  EXPECT_FALSE(possible(52, 70));
  EXPECT_FALSE(possible(53, 69));
}

TEST_F(CandidateDebounce, PercentMarginIsTheSetting) {
  const BssEntryList entries{Add("Office", 2, 56)};
  for (const std::uint32_t percent : {12u, 13u}) {
    Global().m_ScoreDiffPct = percent;
    Increment(entries, 50);
    EXPECT_EQ(static_cast<bool>(qualifier), percent == 12) << percent;
  }
  Global().m_ScoreDiffPct = 20;
}

TEST_F(CandidateDebounce, ForcedScansGoOnOnlyWhileACandidateLosesARound) {
  const auto entry = Add("Office", 2, 60);
  config->m_force_scan_counter = 1;
  adapter->DecrementAllCandidateCounters();
  EXPECT_EQ(config->m_force_scan_counter, 1);
  entry->m_candidate_counter = 1;
  adapter->DecrementAllCandidateCounters();
  EXPECT_EQ(config->m_force_scan_counter, 2);
}

TEST_F(CandidateDebounce, FirstReservationStaysWhenALaterEntryRipens) {
  const BssEntryList entries{Add("Office", 2, 70), Add("Office", 3, 65)};
  Increment(entries, 50);
  EXPECT_TRUE(HasReservation(2));
  EXPECT_EQ(qualifier, entries[1]);  // the lowest in the list
}

TEST_F(CandidateDebounce, ConnectionWithoutAScoreIsLeftAtOnce) {
  const BssEntryList entries{Add("Office", 2, 60)};
  EXPECT_TRUE(Increment(entries, 0));
  EXPECT_EQ(entries[0]->m_candidate_counter, 2);
}

TEST_F(CandidateDebounce, EntryMissingFromTheNewestScanHasNoStanding) {
  const BssEntryList entries{Add("Office", 2, 60)};
  Increment(entries, 50);
  entries[0]->m_bss_scanned = false;  // in the pass before the count goes up it keeps its place
  EXPECT_EQ(entries[0]->GetCandidate(), 1);
  entries[0]->m_unscanned_count = 1;
  EXPECT_EQ(entries[0]->GetCandidate(), 0);
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_EQ(entries[0]->m_candidate_counter, 0);
}

TEST_F(CandidateDebounce, WeakRoundKeepsTheCountAndALostOneClearsIt) {
  const BssEntryList entries{Add("Office", 2, 60), Add("Guests", 3, 60)};
  Increment(entries, 50);
  entries[0]->m_Bss.uLinkQuality = 69;
  SetScore(*entries[1], 50);
  Increment(entries, 50);
  EXPECT_EQ(entries[0]->m_candidate_counter, 1);
  EXPECT_EQ(entries[1]->m_candidate_counter, 0);
  entries[0]->m_Bss.uLinkQuality = 80;
  entries[0]->m_last_reason_code = platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE;
  Increment(entries, 50);
  EXPECT_EQ(entries[0]->m_candidate_counter, 0) << "one that was not there begins anew";
}

TEST_F(CandidateDebounce, MonitorModeStopsTheCountOneAboveTheRequired) {
  const BssEntryList entries{Add("Office", 2, 60)};
  Global().m_bMonitorWhileDisabled = true;
  config->m_Enabled = false;
  for (int i = 0; i < 6; ++i) Increment(entries, 50);
  EXPECT_EQ(entries[0]->m_candidate_counter, 3);
  config->m_Enabled = true;  // no monitor mode: it climbs on
  Increment(entries, 50);
  EXPECT_EQ(entries[0]->m_candidate_counter, 4);
}

TEST_F(CandidateDebounce, SuggestionOnTheAllowListNeedNotRipenAgain) {
  const BssEntryList entries{Add("Office", 2, 60)};
  config->SetString(value::kAllowlistJson, u"[[\"Office\",\"any\"]]");
  config->m_Allowlist.ReloadFromRegistry(*config);
  config->SetString(value::kSuggestedNetworkSSID, u"Office");
  config->SetString(value::kSuggestedNetworkBSSID, MacText(ApMac(2)));
  config->SetString(value::kConnectedBssid, MacText(ApMac(1)));
  EXPECT_TRUE(Increment(entries, 50));
  adapter->ClearAllCandidateCounters("test");
  EXPECT_FALSE(HasReservation(2));
  Global().m_bAllowlistEnabled = false;
  EXPECT_FALSE(Increment(entries, 50));
  EXPECT_EQ(entries[0]->m_candidate_counter, 1);
}

TEST_F(CandidateDebounce, EachRoundLeavesItsDifferences) {
  const BssEntryList entries{Add("Office", 2, 60), Add("Office", 3, 70)};
  Increment(entries, 50);
  CandidateSummary seen = adapter->Policy().TakeScoreDiffSummary();
  EXPECT_EQ(seen.min, 10);
  EXPECT_EQ(seen.max, 20);
  Increment({}, 50);
  seen = adapter->Policy().TakeScoreDiffSummary();
  EXPECT_EQ(seen.min, -1);
  EXPECT_EQ(seen.max, -1);
}

TEST_F(CandidateDebounce, NullsAreNotReady) {
  EXPECT_FALSE(CGlobalQUAYPolicy::IsCandidateReady(nullptr, nullptr, 0));
  EXPECT_FALSE(CGlobalQUAYPolicy::IsCandidateReady(adapter.get(), nullptr, 0));
}

TEST_F(CandidateDebounce, SuggestedBestIsTheHeadOrAnyEntryWithItsBssid) {
  const auto head = Add("Office", 2, 60), second = Add("Guests", 3, 50);
  const BssEntryList entries{head, second};
  CSmartPointer<CWlanBssEntry> found;
  const auto isSuggested = [&](const BssEntryList& list, const WString& ssid, int n) {
    return CGlobalQUAYPolicy::IsConnectedToSuggestedBest_ETW(adapter.get(), list, ssid, ApMac(n),
                                                             &found);
  };
  EXPECT_FALSE(isSuggested(entries, u"Office", 2));
  config->m_Etw.GetMemo().Add(false, u"Office", head->m_BSSIDText.c_str(), u"", u"",
                              CApSetMemo::kNoFlag, 0);
  config->m_Etw.GetMemo().Add(false, u"Guests", second->m_BSSIDText.c_str(), u"", u"",
                              CApSetMemo::kNoFlag, 0);
  EXPECT_TRUE(isSuggested(entries, u"Office", 2));
  EXPECT_EQ(found, head);
  EXPECT_TRUE(isSuggested(entries, u"Guests", 3));
  EXPECT_EQ(found, second);
  EXPECT_FALSE(isSuggested({head}, u"Guests", 3));
  EXPECT_FALSE(found);
  EXPECT_FALSE(isSuggested({}, u"Office", 2));
}

}  // namespace
}  // namespace corvane
