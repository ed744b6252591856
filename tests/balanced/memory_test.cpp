// What the balanced profile remembers: refusals, quarrels, the background of a link.

#include <gtest/gtest.h>

#include "balanced/background.h"
#include "balanced/failure_memory.h"
#include "balanced/quarrel.h"

namespace corvane::balanced::test {

namespace {

constexpr MacAddress kAp{2, 0, 0, 0, 0, 1}, kOther{2, 0, 0, 0, 0, 2};
constexpr std::uint64_t kSec = 1000, kMin = 60 * kSec;

}  // namespace

TEST(FailureMemory, WaitsLongerAfterEachFailure) {
  FailureMemory memory;
  std::uint64_t now = 1 * kMin;
  EXPECT_FALSE(memory.IsBarred(kAp, 80, now));
  for (const std::uint64_t secs : {10u, 30u, 60u, 120u, 300u, 600u, 1800u - 1}) {
    memory.OnFailure(kAp, 80, now);
    EXPECT_TRUE(memory.IsBarred(kAp, 80, now + secs * kSec - 1)) << secs;
    EXPECT_FALSE(memory.IsBarred(kOther, 80, now));
    const bool isLongest = secs > 1000;  // it ends with the half hour that forgives
    EXPECT_EQ(memory.IsBarred(kAp, 80, now + secs * kSec), isLongest) << secs;
    now += secs * kSec;
  }
  memory.OnSuccess(kAp);
  EXPECT_FALSE(memory.IsBarred(kAp, 80, now));
}

TEST(FailureMemory, FadesAndGivesWayToAStrongerSignal) {
  FailureMemory memory;
  for (int i = 0; i < 3; ++i) memory.OnFailure(kAp, 40, kMin);
  EXPECT_TRUE(memory.IsBarred(kAp, 47, kMin + 50 * kSec));
  EXPECT_FALSE(memory.IsBarred(kAp, 48, kMin + 50 * kSec));  // 4 dB more
  // An hour later two of the three steps are forgiven: the next failure is the second.
  const std::uint64_t later = kMin + 60 * kMin;
  memory.OnFailure(kAp, 40, later);
  EXPECT_TRUE(memory.IsBarred(kAp, 40, later + 29 * kSec));
  EXPECT_FALSE(memory.IsBarred(kAp, 40, later + 30 * kSec));
}

TEST(FailureMemory, ForgetsTheOldestOfVeryMany) {
  FailureMemory memory;
  for (int i = 0; i < 300; ++i) {
    memory.OnFailure(
        {2, 0, 0, 0, static_cast<std::uint8_t>(i / 256), static_cast<std::uint8_t>(i % 256)}, 80,
        kMin + static_cast<std::uint64_t>(i));
  }
  EXPECT_FALSE(memory.IsBarred({2, 0, 0, 0, 0, 0}, 80, kMin + 300));
  EXPECT_TRUE(memory.IsBarred({2, 0, 0, 0, 1, 43}, 80, kMin + 300));
}

TEST(Quarrel, NoFightAndNoSurrender) {
  Quarrel quarrel;
  std::uint64_t now = 10 * kMin;
  EXPECT_FALSE(quarrel.Holds(now, false));
  quarrel.OnOutsideRoam(now);  // nothing of ours was undone
  EXPECT_TRUE(quarrel.Holds(now + 5 * kSec - 1, false));
  EXPECT_FALSE(quarrel.Holds(now + 5 * kSec, false));
  EXPECT_FALSE(quarrel.Holds(now + 1, true));  // a bad link is left at once

  std::uint64_t held = 5 * kSec;
  for (int i = 0; i < 8; ++i) {
    quarrel.OnOwnMove(now += 2 * kMin);
    quarrel.OnOutsideRoam(now += kMin);
    held = std::min<std::uint64_t>(held * 2, 40 * kSec);
    EXPECT_TRUE(quarrel.Holds(now + held - 1, false)) << i;
    EXPECT_FALSE(quarrel.Holds(now + held, false)) << i;
  }
  quarrel.OnOutsideRoam(now += 60 * kMin);  // an hour of peace forgives
  EXPECT_FALSE(quarrel.Holds(now + 5 * kSec, false));
}

TEST(Background, ALinkThatNeverRestsStillRests) {
  Background background;
  EXPECT_EQ(background.Gate(0.06), 0.06);
  for (int i = 0; i < 17; ++i) background.Add(0.1);
  EXPECT_EQ(background.Gate(0.06), 0.06);  // not known yet
  background.Add(0.1);
  EXPECT_NEAR(background.Gate(0.06), 0.26, 1e-9);
  // A call that lasts is no background, a download neither.
  for (int i = 0; i < 100; ++i) background.Add(2.0);
  EXPECT_LE(background.Gate(0.06), 0.06 + 2 * 0.25);
  for (int i = 0; i < 180; ++i) background.Add(i % 5 == 0 ? 0.0 : 30.0);
  EXPECT_EQ(background.Gate(0.06), 0.06);
}

}  // namespace corvane::balanced::test
