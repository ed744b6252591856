// When to look, how much better is enough, and for how long.

#include <gtest/gtest.h>

#include "balanced/balanced_profile.h"
#include "balanced/worth.h"
#include "support/platform_test.h"

namespace corvane::balanced::test {

namespace {

constexpr std::uint64_t kSec = 1000, kMin = 60 * kSec, kHour = 60 * kMin, kLong = 1'000'000'000;
constexpr MacAddress kHere{2, 0, 0, 0, 0, 1}, kThere{2, 0, 0, 0, 0, 2};

LinkReading On(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now, double mbps = 0) {
  return {now, true, bssid, quality, mbps};
}

// A second apart from the others of a run.
ScanInputs Asked(std::uint64_t deltaMs, double rate = 0.0) {
  ScanInputs in;
  in.connected = true;
  in.deltaMs = deltaMs;
  in.intervalSecs = 300;
  in.mainLoopSleepMs = 10'000;
  in.rate = rate;
  return in;
}

class BalancedProfileTest : public corvane::test::PlatformTest {};

}  // namespace

TEST(Ripening, TheMoreIsGainedTheSooner) {
  struct Case {
    GainFacts gain;
    std::int32_t needed, rounds;
  };
  const Case cases[] = {
      {{5, 60, true, false, kLong}, 3, 2},     {{6, 60, true, false, kLong}, 3, 1},
      {{3, 60, true, true, kLong}, 3, 1},      {{3, 29, true, false, kLong}, 3, 1},
      {{3, 30, true, false, kLong}, 3, 2},     {{5, 60, false, false, kLong}, 6, 2},
      {{5, 60, true, false, 2 * kMin}, 21, 2}, {{5, 60, true, false, 4 * kMin}, 4, 2},
      {{5, 60, false, false, kMin}, 24, 2},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(NeededGain(c.gain), c.needed) << c.gain.points << " " << c.gain.current;
    EXPECT_EQ(RoundsToWin(c.gain), c.rounds) << c.gain.points << " " << c.gain.current;
  }
}

TEST(ScanCadence, OftenWhereSomethingHappensSeldomWhereNothingDoes) {
  constexpr std::uint64_t kLongest = 300 * kSec;
  CadenceFacts steady{.connected = true};
  EXPECT_EQ(PauseMs(steady, kLongest), 30 * kSec);
  std::uint64_t last = 0;
  for (std::uint32_t dull = 0; dull < 40; ++dull) {
    steady.dullScans = dull;
    EXPECT_GE(PauseMs(steady, kLongest), last);
    last = PauseMs(steady, kLongest);
  }
  EXPECT_EQ(last, 60 * kSec);
  EXPECT_EQ(PauseMs(steady, 50 * kSec), 50 * kSec);  // never longer than the setting
  EXPECT_EQ(PauseMs({.connected = true, .pending = true}, kLongest), 10 * kSec);
  EXPECT_EQ(PauseMs({}, kLongest), 4 * kSec);
}

TEST(ScanCadence, ScansThatLeadToNothingComeSlower) {
  for (const bool connected : {true, false}) {
    CadenceFacts facts{.connected = connected, .pending = true, .readyScans = 8};
    const std::uint64_t first = PauseMs(facts, kHour);
    ++facts.readyScans;
    EXPECT_EQ(PauseMs(facts, kHour), 2 * first);
    facts.readyScans = 100;
    EXPECT_EQ(PauseMs(facts, kHour), (connected ? 60 : 30) * kSec);
  }
  EXPECT_EQ(PauseMs({.dullScans = 8}, kHour), 4 * kSec);
  EXPECT_EQ(PauseMs({.dullScans = 9}, kHour), 8 * kSec);
}

TEST(ScanCadence, TrafficIsNotDisturbed) {
  const CadenceFacts pending{.connected = true, .pending = true};
  EXPECT_EQ(DecideScan(Asked(kMin), pending, true, false).rule, ScanRule::kTraffic);
  EXPECT_EQ(DecideScan(Asked(kMin), pending, true, true).rule, ScanRule::kIdle);  // it is lost
  EXPECT_EQ(DecideScan(Asked(kMin), pending, false, false).rule, ScanRule::kIdle);
  EXPECT_EQ(DecideScan(Asked(9 * kSec), pending, false, false).rule, ScanRule::kTooEarly);
  ScanInputs forced = Asked(0, 50.0);
  forced.force_scan = true;
  EXPECT_EQ(DecideScan(forced, pending, true, false).rule, ScanRule::kForced);
  ScanInputs counted = Asked(0);
  counted.forceCounter = 1;
  EXPECT_EQ(DecideScan(counted, {.connected = true}, false, false).rule, ScanRule::kForcedCount);
  EXPECT_EQ(DecideScan(counted, {.connected = true}, true, false).rule, ScanRule::kTraffic);
  ScanInputs without = Asked(5 * kSec, 50.0);
  without.connected = false;
  EXPECT_EQ(DecideScan(without, {}, true, false).rule, ScanRule::kDisconnected);
}

TEST_F(BalancedProfileTest, AWalkIsFollowedAndARestIsLeftAlone) {
  BalancedProfile profile;
  std::uint64_t now = kMin;
  for (int i = 0; i < 4; ++i) profile.OnRound(On(kHere, 90, now += 10 * kSec));
  profile.OnWeighed(-1, 80, true);
  EXPECT_EQ(profile.Scan(Asked(29 * kSec)).rule, ScanRule::kTooEarly);
  EXPECT_EQ(profile.RoundPauseMs(10'000), 10'000u);
  profile.OnRound(On(kHere, 80, now += 10 * kSec));  // 5 dB less
  EXPECT_EQ(profile.Scan(Asked(30 * kSec)).rule, ScanRule::kIdle);
  EXPECT_EQ(profile.RoundPauseMs(10'000), 5'000u);
  EXPECT_EQ(profile.Scan(Asked(30 * kSec, 1.0)).rule, ScanRule::kTraffic);
  for (int i = 0; i < 4; ++i) profile.OnRound(On(kHere, 80, now += 10 * kSec));
  profile.OnWeighed(-1, 70, true);
  EXPECT_EQ(profile.Scan(Asked(29 * kSec)).rule, ScanRule::kTooEarly);
  profile.OnWeighed(75, 70, false);  // something better: a second look
  EXPECT_EQ(profile.Scan(Asked(10 * kSec)).rule, ScanRule::kIdle);
}

TEST_F(BalancedProfileTest, WhatIsInSightForLongIsLookedAtSeldom) {
  BalancedProfile profile;
  profile.OnRound(On(kHere, 90, kMin));
  for (int i = 0; i < 12; ++i) profile.OnWeighed(80, 70, true);
  EXPECT_EQ(profile.Scan(Asked(19 * kSec)).rule, ScanRule::kTooEarly);
  profile.OnWeighed(86, 70, true);  // something better still
  EXPECT_EQ(profile.Scan(Asked(10 * kSec)).rule, ScanRule::kIdle);
  for (int i = 0; i < 12; ++i) profile.OnWeighed(86, 70, true);
  profile.OnRound(On(kThere, 90, 2 * kMin));
  profile.OnWeighed(86, 70, true);
  EXPECT_EQ(profile.Scan(Asked(10 * kSec)).rule, ScanRule::kIdle);
}

TEST_F(BalancedProfileTest, GoingBackSoonIsDear) {
  BalancedProfile profile;
  std::uint64_t now = kMin;
  profile.OnRound(On(kHere, 90, now));
  const Contender there{kThere, 70, 60, 80, true}, back{kHere, 70, 60, 80, true};
  const CandidateMargins set{70, 3, 20};
  EXPECT_EQ(profile.Margins(set, there).scoreThreshold, 3u);
  EXPECT_EQ(profile.Margins(set, there).scorePercent, 0u);
  profile.OnRound(On(kThere, 90, now += kMin));
  EXPECT_EQ(profile.Margins(set, back).scoreThreshold, 21u);
  profile.OnRound(On(kThere, 90, now += 10 * kMin));
  EXPECT_EQ(profile.Margins(set, back).scoreThreshold, 3u);
}

TEST_F(BalancedProfileTest, APersonsNetworkIsKeptHerTransmitterNot) {
  BalancedProfile profile;
  const SuggestionMode overridden{.popupOverride = true};
  EXPECT_FALSE(profile.Mode(overridden, false).popupOverride);  // nobody chose
  profile.OnOutsideConnect(true, kMin);
  EXPECT_TRUE(profile.Mode(overridden, false).popupOverride);
  EXPECT_FALSE(profile.Mode(overridden, true).popupOverride);
  profile.OnOutsideConnect(false, kMin);
  EXPECT_FALSE(profile.Mode(overridden, false).popupOverride);
  profile.OnOutsideConnect(true, kMin);
  profile.OnConnected(kHere, 80, kMin);
  EXPECT_FALSE(profile.Mode(overridden, false).popupOverride);
  EXPECT_TRUE(profile.Mode({.passive = true, .popup = true}, true).popup);
}

TEST_F(BalancedProfileTest, ALinkThatWasLostIsNoQuarrel) {
  BalancedProfile profile;
  profile.OnLinkLost(10 * kMin);
  profile.OnOutsideRoam(10 * kMin + 10 * kSec);
  EXPECT_FALSE(profile.KeepsStill(1, On(kHere, 80, 10 * kMin + 11 * kSec)));
  profile.OnOutsideRoam(12 * kMin);
  EXPECT_TRUE(profile.KeepsStill(1, On(kHere, 80, 12 * kMin + kSec)));
  EXPECT_FALSE(profile.KeepsStill(1, On(kHere, 29, 12 * kMin + kSec)));
  EXPECT_FALSE(profile.KeepsStill(1, {12 * kMin + kSec, false, {}, 0, 0.0}));
}

TEST_F(BalancedProfileTest, WhereTheDriverDoesNotStayIsNotTriedAgainSoon) {
  BalancedProfile profile;
  profile.OnRound(On(kHere, 80, 10 * kMin));
  profile.OnConnected(kThere, 50, 10 * kMin);
  profile.OnOutsideRoam(10 * kMin + kSec);
  EXPECT_TRUE(profile.IsBarred(kThere, 50, false, 10 * kMin + 2 * kSec));
  EXPECT_FALSE(profile.IsBarred(kThere, 70, false, 10 * kMin + 2 * kSec));  // heard better
  EXPECT_FALSE(profile.IsBarred(kHere, 80, false, 10 * kMin + 2 * kSec));
  // A stay forgives.
  profile.OnConnected(kThere, 50, 11 * kMin);
  for (int i = 0; i < 8; ++i)
    profile.OnRound(On(kThere, 50, 11 * kMin + static_cast<std::uint64_t>(i) * 10 * kSec));
  profile.OnConnectFailed(kThere, 50, 13 * kMin);
  EXPECT_FALSE(profile.IsBarred(kThere, 50, false, 13 * kMin + 10 * kSec));
}

TEST_F(BalancedProfileTest, TheLinkIsBusyWhileItBearsWhatItCarries) {
  BalancedProfile profile;
  profile.OnRound(On(kHere, 80, kMin));
  EXPECT_TRUE(profile.IsBusy(true, 0.0, 0.06));
  EXPECT_TRUE(profile.IsBusy(false, 0.06, 99.0));
  EXPECT_FALSE(profile.IsBusy(false, 0.05, 0.06));
  profile.OnRound(On(kHere, 13, 2 * kMin));
  EXPECT_FALSE(profile.IsBusy(true, 5.0, 0.06));  // nothing gets through any more
}

TEST_F(BalancedProfileTest, CallsAGainByItsRate) {
  BalancedProfile profile;
  const SuggestionPercent twice = profile.PercentOf(PointsOf(400), PointsOf(200), 3, 20);
  EXPECT_TRUE(twice.shown);
  EXPECT_NEAR(twice.percent, 100, 8);
  EXPECT_FALSE(profile.PercentOf(50, 50, 0, 20).shown);
  EXPECT_EQ(profile.PercentOf(100, 0, 0, 20).percent, 1000);
}

}  // namespace corvane::balanced::test
