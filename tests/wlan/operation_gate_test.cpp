#include "wlan/operation_gate.h"

#include <gtest/gtest.h>

#include <list>

#include "support/pc_fixture.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;
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

class OperationGateTest : public test::KernelTest {
 protected:
  OperationGateTest() { gate.Initialize(); }
  // The platform's thread ends an operation after this time.
  void CompleteIn(std::chrono::milliseconds delay, Kind kind, std::int32_t reason) {
    m_Late.push_back({this, kind, reason, static_cast<platform::DWORD>(delay.count())});
    const platform::HANDLE thread = Os().threads.CreateThread(
        [](void* late) -> platform::DWORD {
          auto& one = *static_cast<Late*>(late);
          Os().threads.Sleep(one.ms);
          one.test->gate.Complete(one.kind, kCode, one.reason);
          return 0;
        },
        &m_Late.back(), "platform", nullptr);
    Os().threads.CloseHandle(thread);
  }
  std::uint64_t Now() { return Os().clock.GetTickCount64(); }

  static constexpr platform::DWORD kCode = 10;
  OperationGate gate;

 private:
  struct Late {
    OperationGateTest* test;
    Kind kind;
    std::int32_t reason;
    platform::DWORD ms;
  };
  std::list<Late> m_Late;
};

TEST_F(OperationGateTest, NextOperationWaitsUntilTheOutcomeIsTaken) {
  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_FALSE(gate.TryBegin(Kind::kScan));
  EXPECT_FALSE(gate.Complete(Kind::kScan, 7, 0)) << "another kind leaves the operation";
  EXPECT_TRUE(gate.Get().m_op_busy);
  EXPECT_TRUE(gate.Complete(Kind::kConnect, kCode, 7));
  EXPECT_FALSE(gate.Get().m_op_busy);
  EXPECT_FALSE(gate.TryBegin(Kind::kScan)) << "would lose the reason of the connect";
  const auto result = gate.Await(Kind::kConnect, 1000);
  EXPECT_EQ(result.end, OperationGate::End::kDone);
  EXPECT_EQ(result.outcome.m_op_code, kCode);
  EXPECT_EQ(result.outcome.m_op_reason, 7);
  EXPECT_TRUE(gate.TryBegin(Kind::kScan));
}

// The signal of an operation that is over stays set when the wait for it fails, or when the
// time-out came first: it must not end the next operation, and the one after, and so for ever.
TEST_F(OperationGateTest, LateSignalEndsNoOtherOperation) {
  ASSERT_TRUE(gate.TryBegin(Kind::kScan));
  EXPECT_TRUE(gate.Complete(Kind::kScan, 7, 0));
  kernel.Faults().FailCall("WaitForMultipleObjects", 1, platform::ERROR_INVALID_HANDLE);
  EXPECT_THROW(gate.Await(Kind::kScan, 20000), Exception);
  for (int scan = 0; scan < 3; ++scan) {
    ASSERT_TRUE(gate.TryBegin(Kind::kScan)) << scan;
    CompleteIn(5s, Kind::kScan, scan);
    const std::uint64_t began = Now();
    const auto result = gate.Await(Kind::kScan, 20000);
    EXPECT_EQ(result.end, OperationGate::End::kDone);
    EXPECT_EQ(result.outcome.m_op_reason, scan);
    EXPECT_EQ(Now() - began, 5000u);
  }
}

TEST_F(OperationGateTest, CompletionAfterTheTimeOutIsNobodys) {
  ASSERT_TRUE(gate.TryBegin(Kind::kConnect));
  EXPECT_EQ(gate.Await(Kind::kConnect, 1000).end, OperationGate::End::kTimeout);
  EXPECT_FALSE(gate.Get().m_op_busy);
  EXPECT_FALSE(gate.Complete(Kind::kConnect, kCode, 0));
}

TEST_F(OperationGateTest, ExitLeavesADisconnectInFlightAndEndsTheOthers) {
  for (const Kind kind : {Kind::kScan, Kind::kConnect, Kind::kDisconnect}) {
    ASSERT_TRUE(gate.TryBegin(kind));
    gate.SignalExit();
    EXPECT_EQ(gate.Await(kind, platform::INFINITE).end, OperationGate::End::kExit);
    EXPECT_EQ(gate.Get().m_op_busy, kind == Kind::kDisconnect);
    gate.Await(Kind::kScan, 0);  // takes what is left of the signal
  }
  EXPECT_FALSE(gate.Complete(Kind::kDisconnect, 21, 0)) << "its caller has left";
  EXPECT_FALSE(gate.Get().m_op_busy);
}

}  // namespace
}  // namespace corvane
