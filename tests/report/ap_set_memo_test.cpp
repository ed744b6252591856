#include "report/ap_set_memo.h"

#include "platform/sim/kernel/sim_clock.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

class ApSetMemoTest : public KernelTest {
 protected:
  void Add(const char16_t* ssid, const char16_t* bssid, std::uint32_t flag = CApSetMemo::kNoFlag,
           std::uint32_t sq = 0, bool stamp = false) {
    EXPECT_TRUE(memo.Add(stamp, ssid, bssid, u"band", u"channel", flag, sq));
    RunFor(1s);
  }
  WString Newest() {
    CApSetMemo::Newest newest;
    return memo.GetNewest(&newest) ? newest.ssid + u"/" + newest.bssid : u"-";
  }

  CApSetMemo memo;
};

TEST_F(ApSetMemoTest, TextsListEveryPairInKeyOrder) {
  WString brief, ssids, bssids, sqs;
  EXPECT_EQ(memo.GetSummary(&brief), u"none");
  EXPECT_EQ(brief, u"");
  Add(u"b", u"02", 1, 40);
  Add(u"a", u"03", 1, 70);
  Add(u"b", u"01", 1, 55);
  EXPECT_EQ(memo.GetSummary(&brief), u"a[03(SQ 70)], b[01(SQ 55), 02(SQ 40)]");
  EXPECT_EQ(brief, u"a[03], b[01, 02]");
  memo.GetLists(&ssids, &bssids, &sqs);
  EXPECT_EQ(ssids, u"a, b, b");
  EXPECT_EQ(bssids, u"03, 01, 02");
  EXPECT_EQ(sqs, u"70, 55, 40");
  memo.Clear();
  EXPECT_EQ(memo.GetSummary(nullptr), u"none");
}

TEST_F(ApSetMemoTest, ANewFlagBringsItsQualityAndNoFlagKeepsThem) {
  Add(u"a", u"01", 1, 40);
  Add(u"a", u"01", 1, 90);  // the same flag: nothing new
  EXPECT_EQ(memo.GetSummary(nullptr), u"a[01(SQ 40)]");
  Add(u"a", u"01", 2, 60);
  EXPECT_EQ(memo.GetFlag(u"a", u"01"), 2u);
  EXPECT_EQ(memo.GetSummary(nullptr), u"a[01(SQ 60)]");
  Add(u"a", u"01", 0xFFFFFFFE, 10);
  Add(u"a", u"01", CApSetMemo::kNoFlag, 10);
  EXPECT_EQ(memo.GetFlag(u"a", u"01"), 2u);
  EXPECT_EQ(memo.GetFlag(u"a", u"02"), CApSetMemo::kNoFlag);
  EXPECT_FALSE(memo.Add(false, u"a", nullptr, u"", u"", 0, 0));
  EXPECT_FALSE(memo.Add(false, u"a", u"02", u"", nullptr, 0, 0));
  EXPECT_FALSE(memo.HasAp(u"a", u"02"));
}

TEST_F(ApSetMemoTest, NewestFollowsAdditionsAndRemovals) {
  EXPECT_EQ(Newest(), u"-");
  Add(u"a", u"01");
  Add(u"b", u"02");
  Add(u"b", u"03");
  EXPECT_EQ(Newest(), u"b/03");
  Add(u"a", u"01");  // seen again: no new record
  EXPECT_EQ(Newest(), u"b/03");
  EXPECT_TRUE(memo.RemoveAp(u"b", u"02"));
  EXPECT_EQ(Newest(), u"b/03") << "another one went";
  EXPECT_TRUE(memo.RemoveNetwork(u"b"));
  EXPECT_EQ(Newest(), u"a/01");
  EXPECT_TRUE(memo.RemoveAp(u"a", u"01"));
  EXPECT_EQ(Newest(), u"-");
  EXPECT_FALSE(memo.HasNetwork(u"a")) << "an empty network goes too";
  EXPECT_FALSE(memo.RemoveAp(u"a", u"01"));
  EXPECT_FALSE(memo.RemoveNetwork(u"a"));

  Add(u"a", u"01");
  Add(u"b", u"02");
  Add(u"c", u"03");
  Add(u"a", u"01");
  EXPECT_TRUE(memo.RemoveNetwork(u"c"));
  EXPECT_EQ(Newest(), u"a/01") << "the one seen last, not the one added last";
}

TEST_F(ApSetMemoTest, RepeatsAndStampsBelongToTheNetwork) {
  std::uint64_t unixTime = 7;
  EXPECT_EQ(memo.BumpRepeats(u"a", &unixTime), 0u);
  EXPECT_EQ(unixTime, 0u);
  const std::uint64_t tick = Os().clock.GetTickCount64();
  Add(u"a", u"01", CApSetMemo::kNoFlag, 0, true);
  Add(u"a", u"02");
  EXPECT_EQ(memo.BumpRepeats(u"a", &unixTime), tick);
  EXPECT_EQ(unixTime, platform::UnixSecondsNow() - 2);
  EXPECT_EQ(memo.BumpRepeats(u"a", nullptr), tick);
  EXPECT_EQ(memo.GetRepeats(u"a"), 2u);
  memo.ResetRepeats(u"a");
  EXPECT_EQ(memo.GetRepeats(u"a"), 0u);
  memo.ClearStamps();
  EXPECT_EQ(memo.BumpRepeats(u"a", &unixTime), 0u);
  EXPECT_EQ(unixTime, 0u);
  Add(u"a", u"02", CApSetMemo::kNoFlag, 0, true);
  EXPECT_NE(memo.BumpRepeats(u"a", nullptr), 0u) << "an existing network can be stamped";
}

}  // namespace
}  // namespace corvane::test
