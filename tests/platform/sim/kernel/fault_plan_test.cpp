#include "platform/sim/kernel/fault_plan.h"

#include <gtest/gtest.h>

namespace corvane::test {
namespace {

using platform::sim::FaultPlan;

int CountFailures(const char* operation) {
  FaultPlan plan;
  plan.FailRandomly(0.05, 1);
  int failures = 0;
  for (int call = 0; call < 100'000; ++call) {
    if (plan.Decide(operation, 31, 0, true) != 0) ++failures;
  }
  return failures;
}

// A pipe that takes nobody any more would leave the rest of a long run without clients.
TEST(FaultPlanTest, WhatEndsAPipeForGoodFailsSeldomAndWhatClosesNever) {
  for (const char* operation : {"ReadFileEx", "QueueUserAPC", "BCryptDecrypt"}) {
    EXPECT_NEAR(CountFailures(operation), 5000, 500) << operation;
  }
  for (const char* operation : {"WaitForMultipleObjectsEx", "CreateNamedPipeW", "GetTokenUser"}) {
    EXPECT_NEAR(CountFailures(operation), 50, 40) << operation;
  }
  for (const char* operation : {"CloseHandle", "BCryptDestroyKey", "TerminateThread"}) {
    EXPECT_EQ(CountFailures(operation), 0) << operation;
  }
}

// One more call that may not fail moves nothing for the calls behind it.
TEST(FaultPlanTest, SeldomOperationsDrawAsTheOthersDo) {
  FaultPlan one, other;
  one.FailRandomly(0.05, 7);
  other.FailRandomly(0.05, 7);
  for (int call = 0; call < 2000; ++call) {
    one.Decide("WaitForMultipleObjectsEx", 31, 0, true);
    other.Decide("ReadFileEx", 31, 0, true);
    EXPECT_EQ(one.Decide("ReadFileEx", 31, 0, true), other.Decide("ReadFileEx", 31, 0, true));
  }
}

}  // namespace
}  // namespace corvane::test
