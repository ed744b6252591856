#include "wlan/operation_gate.h"

#include <gtest/gtest.h>

#include "support/platform_test.h"

namespace corvane {
namespace {

using Kind = WlanOperation;

TEST(NotificationOwnership, FollowsTheOperationInFlight) {
  struct Case {
    bool busy;
    Kind kind;
    platform::DWORD code;
    NotificationOwner owner;
  };
  constexpr platform::DWORD kStart = 9, kComplete = 10, kFailed = 11, kDisconnecting = 20,
                            kGone = 21;
  const Case cases[] = {
      {false, Kind::kNone, kComplete, {false, false}},
      {false, Kind::kConnect, kGone, {false, false}},
      {true, Kind::kDisconnect, kGone, {true, false}},
      {true, Kind::kDisconnect, kDisconnecting, {true, false}},
      {true, Kind::kConnect, kGone, {false, true}},
      {true, Kind::kConnect, kDisconnecting, {false, true}},
      {true, Kind::kScan, kGone, {false, false}},
      {true, Kind::kConnect, kStart, {true, false}},
      {true, Kind::kConnect, kComplete, {true, false}},
      {true, Kind::kConnect, kFailed, {true, false}},
      {true, Kind::kScan, kComplete, {false, false}},
      {true, Kind::kDisconnect, kComplete, {false, false}},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(OwnerOfNotification(one.busy, one.kind, one.code), one.owner)
        << "busy " << one.busy << " kind " << static_cast<int>(one.kind) << " code " << one.code;
  }
}

using OperationGateTest = test::PlatformTest;

TEST_F(OperationGateTest, NextOperationWaitsUntilTheOutcomeIsTaken) {
  OperationGate gate;
  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_FALSE(gate.TryBegin(Kind::kScan));
  EXPECT_TRUE(gate.Complete(Kind::kConnect, 10, 7));
  EXPECT_FALSE(gate.Get().m_op_busy);
  EXPECT_FALSE(gate.TryBegin(Kind::kScan)) << "would lose the reason of the connect";
  const auto outcome = gate.TakeOutcome();
  EXPECT_EQ(outcome.m_op_code, 10u);
  EXPECT_EQ(outcome.m_op_reason, 7);
  EXPECT_TRUE(gate.TryBegin(Kind::kScan));
}

TEST_F(OperationGateTest, CompletionOfAnotherKindLeavesTheOperation) {
  OperationGate gate;
  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_FALSE(gate.Complete(Kind::kScan, 7, 0));
  EXPECT_TRUE(gate.Get().m_op_busy);
}

TEST_F(OperationGateTest, CompletionAndTimeOutAtOnceSignalExactlyOnce) {
  OperationGate gate;
  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_TRUE(gate.Complete(Kind::kConnect, 10, 0));
  EXPECT_FALSE(gate.Withdraw()) << "the signal is on its way and has to be consumed";
  gate.TakeOutcome();

  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_TRUE(gate.Withdraw());
  EXPECT_FALSE(gate.Complete(Kind::kConnect, 10, 0)) << "nobody waits any more";
}

TEST_F(OperationGateTest, CallerThatLeavesIsNotSignalled) {
  OperationGate gate;
  ASSERT_TRUE(gate.TryBegin(Kind::kDisconnect));
  gate.LeaveBusy();
  EXPECT_TRUE(gate.Get().m_op_busy);
  EXPECT_FALSE(gate.Complete(Kind::kDisconnect, 21, 0));
  EXPECT_FALSE(gate.Get().m_op_busy);
}

}  // namespace
}  // namespace corvane
