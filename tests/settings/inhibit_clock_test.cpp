#include "settings/inhibit_clock.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

using Outcome = InhibitClock::Outcome;

TEST(InhibitClock, KeepsTheLargerFutureAndTakesTheNewTag) {
  InhibitClock clock;
  EXPECT_EQ(clock.Set(15000, "out-scan", 1000).future, 16000u);
  const auto shorter = clock.Set(3000, "out-notify-disc", 2000);
  EXPECT_EQ(shorter.outcome, Outcome::kKeptLarger);
  EXPECT_EQ(shorter.future, 16000u);
  EXPECT_STREQ(clock.m_InhibitReason, "out-notify-disc");
  EXPECT_TRUE(clock.Get(15999).inhibited);
  EXPECT_FALSE(clock.Get(16000).inhibited);
}

TEST(InhibitClock, IsClearedByZero) {
  InhibitClock clock;
  clock.Set(15000, "sw-pop", 1000);
  EXPECT_EQ(clock.Set(0, "con-pop", 1001).outcome, Outcome::kSet);
  EXPECT_FALSE(clock.Get(1001).inhibited);
}

TEST(InhibitClock, IgnoresTheSixthOutsideScanInARow) {
  InhibitClock clock;
  std::uint64_t now = 1000;
  for (std::uint32_t call = 1; call <= 5; ++call, now += 20000) {
    const auto result = clock.Set(15000, "out-scan", now);
    EXPECT_EQ(result.outsideScans, call - 1);
    EXPECT_EQ(result.ms, 15000u);
    EXPECT_TRUE(clock.Get(now).inhibited);
  }
  for (std::uint32_t call = 6; call <= 7; ++call, now += 100) {
    const auto result = clock.Set(15000, "out-scan", now);
    EXPECT_EQ(result.outsideScans, call - 1);
    EXPECT_EQ(result.ms, 0u);
    InhibitClock reset = clock;
    EXPECT_EQ(reset.Get(500).remainingMs, 0u) << "what was ignored does not begin anew";
    EXPECT_FALSE(clock.Get(now).inhibited);
  }
  // What follows an outside scan counts with its run; the one after begins anew.
  EXPECT_EQ(clock.Set(5000, "out-disc", now).ms, 0u);
  EXPECT_EQ(clock.Set(5000, "out-disc", now).outsideScans, 0u);
  EXPECT_TRUE(clock.Get(now).inhibited);
  EXPECT_EQ(clock.Set(15000, "out-scan", now).outsideScans, 0u);
  const auto second = clock.Set(15000, "out-scan", now);
  EXPECT_EQ(second.outsideScans, 1u) << "another tag has ended the run before";
  EXPECT_EQ(second.ms, 15000u);
}

TEST(InhibitClock, StartsAgainWhenTheTicksGoBack) {
  InhibitClock clock;
  clock.Set(15000, "out-scan", 1'000'000);
  EXPECT_EQ(clock.Get(1'010'000).remainingMs, 5000u);
  const auto reset = clock.Get(500);
  EXPECT_TRUE(reset.clockReset && reset.inhibited);
  EXPECT_EQ(reset.remainingMs, 15000u);
  EXPECT_TRUE(clock.Get(15499).inhibited);
  EXPECT_FALSE(clock.Get(15500).inhibited);
  // Once over it stays over: the duration is gone.
  EXPECT_EQ(clock.Get(100).remainingMs, 0u);
  EXPECT_FALSE(clock.Get(101).inhibited);
  EXPECT_EQ(clock.Set(3000, "out-disc", 50).outcome, Outcome::kSetAfterReset);
  EXPECT_EQ(clock.Remaining(50), 3000u);
  // A tick that went back takes the new future, although the old one was larger.
  clock.Set(15000, "out-scan", 1'000'000);
  EXPECT_EQ(clock.Set(3000, "out-disc", 900).future, 3900u);
  EXPECT_EQ(clock.m_InhibitMs, 3000u) << "what a clock that is reset begins anew with";
}

}  // namespace
}  // namespace corvane
