#include <gtest/gtest.h>

#include <string>

#include "support/pc_fixture.h"

namespace corvane::test {

using namespace platform;

TEST_F(KernelTest, SleepJumpsTheClock) {
  const ULONGLONG before = Os().clock.GetTickCount64();
  Os().threads.Sleep(86'400'000);
  EXPECT_EQ(Os().clock.GetTickCount64() - before, 86'400'000u);
}

}  // namespace corvane::test
