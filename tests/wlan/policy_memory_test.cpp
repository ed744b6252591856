#include "wlan/policy_memory.h"

#include "wlan/part_fixture.h"

namespace corvane::test {
namespace {

class PolicyMemoryTest : public PartTest {
 protected:
  CSmartPointer<CWlanBssEntry> Add(const WString& ssid, const MacAddress& bssid, int counter) {
    auto& network = networks[ssid];
    if (!network) network = CWlanNetwork::CreateObject();
    auto& entry = network->m_BssMap[bssid];
    entry = CWlanBssEntry::CreateObject();
    entry->m_candidate_counter = counter;
    return entry;
  }

  const MacAddress mine{1}, other{2};
  NetworkMap networks;
  PolicyMemory memory{identity, interfaceLock, networks};
};

TEST_F(PolicyMemoryTest, RisingConnectionTakesStepsBackAndAsksForAScanMore) {
  const auto entry = Add(u"Office", other, 5), idle = Add(u"Guests", {3}, 0);
  const auto report = [&](std::int32_t score, const MacAddress& bssid) {
    memory.NotifyCurrentNetworkScore(score, bssid);
    return entry->m_candidate_counter;
  };
  memory.Claim().ClaimSuggested(other, 0);
  EXPECT_EQ(report(50, mine), 5);
  EXPECT_EQ(report(51, mine), 5);
  EXPECT_EQ(memory.Claim().Held(), other);
  EXPECT_EQ(report(52, mine), 4) << "the second rise in a row";
  EXPECT_FALSE(memory.Claim().Held());
  EXPECT_EQ(config->m_force_scan_counter, 0) << "nothing forced: nothing added";
  config->m_force_scan_counter = 2;
  EXPECT_EQ(report(60, mine), 3) << "a jump";
  EXPECT_EQ(config->m_force_scan_counter, 3);
  EXPECT_EQ(report(60, mine), 3);
  EXPECT_EQ(report(70, {9}), 3) << "another access point: begins anew";
  EXPECT_EQ(report(71, {9}), 3);
  EXPECT_EQ(report(80, {9}), 2);
  EXPECT_EQ(config->m_force_scan_counter, 3) << "at its limit";
  EXPECT_EQ(idle->m_candidate_counter, 0) << "never below";
  entry->m_candidate_counter = 0;
  config->m_force_scan_counter = 1;
  memory.DecrementAllCandidateCounters();
  EXPECT_EQ(config->m_force_scan_counter, 1) << "no candidate has lost a round";
}

TEST_F(PolicyMemoryTest, ClearBeginsAnewWithEveryCandidateAndTheClaim) {
  const auto entry = Add(u"Office", other, 5), second = Add(u"Guests", {3}, 1);
  memory.Claim().ClaimRipening({3}, 0);
  memory.ClearAllCandidateCounters("test");
  EXPECT_EQ(entry->m_candidate_counter, 0);
  EXPECT_EQ(second->m_candidate_counter, 0);
  EXPECT_FALSE(memory.Claim().Held());
}

TEST_F(PolicyMemoryTest, FlappingRaisesTheMarginForGood) {
  ASSERT_EQ(config->m_APScoreThreshold, 3u);
  for (int i = 0; i < 3; ++i) memory.IncSwitchAttempt();
  RunFor(60s);
  memory.RollSwitchPeriod();
  EXPECT_EQ(config->m_APScoreThreshold, 5u);
  std::uint32_t stored = 0;
  EXPECT_TRUE(config->GetDWORD(u"APScoreThreshold", &stored));
  EXPECT_EQ(stored, 5u);
  RunFor(60s);
  memory.RollSwitchPeriod();
  EXPECT_EQ(config->m_APScoreThreshold, 5u) << "the minutes that raised it are spent";
}

TEST_F(PolicyMemoryTest, KeepsTheEndsOfTheLast120Differences) {
  CandidateSummary ends = memory.TakeScoreDiffSummary();
  EXPECT_EQ(ends.min, -1);
  EXPECT_EQ(ends.max, -1);
  memory.AddScoreDiffSummary({1, 900});
  for (int i = 0; i < 119; ++i) memory.AddScoreDiffSummary({5 + i % 2, 6 + i % 2});
  memory.AddScoreDiffSummary({5, 6});
  ends = memory.TakeScoreDiffSummary();
  EXPECT_EQ(ends.min, 5);
  EXPECT_EQ(ends.max, 7);
  EXPECT_EQ(memory.TakeScoreDiffSummary().min, -1) << "taken once";
}

}  // namespace
}  // namespace corvane::test
