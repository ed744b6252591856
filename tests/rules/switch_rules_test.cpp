#include "rules/switch_rules.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

// passive, popup, override, allow list
constexpr SuggestionMode kAutoswitch{false, false, false, false};
constexpr SuggestionMode kEvent{true, false, false, false};
constexpr SuggestionMode kPopup{true, true, false, false};

SuggestionMode Overridden(SuggestionMode mode) {
  mode.popupOverride = true;
  return mode;
}
SuggestionMode Allowing(SuggestionMode mode) {
  mode.allowlistActive = true;
  return mode;
}

TEST(MoveWay, DependsOnModeRoamAndRoaming) {
  using enum MoveWay;
  struct Case {
    const char* name;
    SuggestionMode mode;
    bool roam, roamingEnabled;
    MoveWay way;
  };
  for (const Case& c : {
           Case{"autoswitch, other network", kAutoswitch, false, false, kConnect},
           Case{"autoswitch, roam", kAutoswitch, true, true, kConnect},
           Case{"event, roam", kEvent, true, true, kConnect},
           Case{"event, roam, roaming off", kEvent, true, false, kSuggestByEvent},
           Case{"event, other network", kEvent, false, true, kSuggestByEvent},
           Case{"popup, roam", kPopup, true, true, kConnect},
           Case{"popup, other network", kPopup, false, true, kSuggestByPopup},
           Case{"override, autoswitch", Overridden(kAutoswitch), true, true, kSuggestByPopup},
           Case{"override, event", Overridden(kEvent), true, true, kSuggestByPopup},
           Case{"allow list, event, roam", Allowing(kEvent), true, true, kSuggestByEvent},
           Case{"allow list, popup, roam", Allowing(kPopup), true, true, kSuggestByPopup},
           Case{"allow list, autoswitch", Allowing(kAutoswitch), true, true, kSuggestByPopup},
       }) {
    EXPECT_EQ(WayOfSwitch(c.mode, c.roam, c.roamingEnabled), c.way) << c.name;
  }
}

TEST(MoveWay, DisconnectedAdapterAsksOnlyInPassiveModesWithoutAllowList) {
  EXPECT_EQ(WayOfConnect(kAutoswitch), MoveWay::kConnect);
  EXPECT_EQ(WayOfConnect(Overridden(kAutoswitch)), MoveWay::kConnect);
  EXPECT_EQ(WayOfConnect(kEvent), MoveWay::kSuggestByEvent);
  EXPECT_EQ(WayOfConnect(Overridden(kEvent)), MoveWay::kSuggestByEvent);
  EXPECT_EQ(WayOfConnect(kPopup), MoveWay::kSuggestByPopup);
  EXPECT_EQ(WayOfConnect(Allowing(kPopup)), MoveWay::kConnect);
  EXPECT_EQ(WayOfConnect(Allowing(kEvent)), MoveWay::kConnect);
}

TEST(SuggestionPercent, IsShownFromTheLimitOn) {
  struct Case {
    std::int32_t score, current;
    std::uint32_t minimum;
    bool shown;
    std::int32_t percent;
  };
  for (const Case& c : {
           Case{60, 50, 0, true, 20},
           Case{59, 50, 0, false, 18},
           Case{40, 50, 0, true, 20},  // the difference counts without its sign
           Case{50, 50, 0, false, 0},
           Case{50, 50, 3, false, 6},  // the margin stands in for no difference
           Case{10, 10, 3, true, 30},
           Case{23, 19, 0, true, 21},  // 21.05 is cut
           Case{30, 0, 0, true, 100},  // nothing to compare with
           Case{30, -1, 0, true, 100},
       }) {
    const SuggestionPercent percent = PercentOf(c.score, c.current, c.minimum, 20);
    EXPECT_EQ(percent.shown, c.shown) << c.score << " vs " << c.current;
    EXPECT_EQ(percent.percent, c.percent) << c.score << " vs " << c.current;
  }
}

TEST(FastScan, RulesDecideInTheirOrder) {
  using enum FastScan;
  // matches the suggestion, open suggestion, busy, better possible, forced scans
  EXPECT_EQ(JudgeFastScan({true, false, true, true, 0}), kAlreadySuggested);
  EXPECT_EQ(JudgeFastScan({true, true, true, true, 0}), kBusy);
  EXPECT_EQ(JudgeFastScan({false, false, true, false, 3}), kBusy);  // leaves the forced scans alone
  EXPECT_EQ(JudgeFastScan({true, true, false, false, 0}), kNothingBetter);
  EXPECT_EQ(JudgeFastScan({false, false, false, true, 2}), kAlreadyForced);
  EXPECT_EQ(JudgeFastScan({true, true, false, true, 0}), kForceScans);
}

TEST(LinkBusy, RateAtTheGateHoldsASwitchBack) {
  EXPECT_FALSE(IsLinkBusy(false, 0.0599, 0.06));
  EXPECT_TRUE(IsLinkBusy(false, 0.06, 0.06));
  EXPECT_TRUE(IsLinkBusy(true, 0.0, 0.06));
}

}  // namespace
}  // namespace corvane
