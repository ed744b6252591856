#include "wlan/operation_gate.h"

#include <gtest/gtest.h>

#include <list>

#include "foundation/ignored.h"
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
          Ignored(one.test->gate.Complete(one.kind, kCode, one.reason));
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

// The completion comes with the time-out, and its thread is held up before the signal.
class LateSignal : public platform::ThreadApi {
 public:
  explicit LateSignal(platform::ThreadApi& real) : m_Real(real) {}
  platform::BOOL SetEvent(platform::HANDLE event) override {
    if (const platform::DWORD delay = std::exchange(lateMs, 0)) m_Real.Sleep(delay);
    return m_Real.SetEvent(event);
  }
  platform::HANDLE CreateThread(ThreadProc start, void* parameter, const char* name,
                                platform::DWORD* id) override {
    return m_Real.CreateThread(start, parameter, name, id);
  }
  platform::HANDLE CreateEventW(platform::BOOL manual, platform::BOOL set,
                                const char* name) override {
    return m_Real.CreateEventW(manual, set, name);
  }
  platform::BOOL ResetEvent(platform::HANDLE event) override { return m_Real.ResetEvent(event); }
  platform::BOOL CloseHandle(platform::HANDLE object) override {
    return m_Real.CloseHandle(object);
  }
  platform::DWORD WaitForMultipleObjects(platform::DWORD count, const platform::HANDLE* objects,
                                         platform::BOOL all, platform::DWORD ms) override {
    return m_Real.WaitForMultipleObjects(count, objects, all, ms);
  }
  void Sleep(platform::DWORD ms) override { m_Real.Sleep(ms); }
  void InitializeCriticalSection(platform::CRITICAL_SECTION* section, const char* name,
                                 int rank) override {
    m_Real.InitializeCriticalSection(section, name, rank);
  }
  void EnterCriticalSection(platform::CRITICAL_SECTION* section) override {
    m_Real.EnterCriticalSection(section);
  }
  void LeaveCriticalSection(platform::CRITICAL_SECTION* section) override {
    m_Real.LeaveCriticalSection(section);
  }
  void DeleteCriticalSection(platform::CRITICAL_SECTION* section) override {
    m_Real.DeleteCriticalSection(section);
  }
  void BeginForLog() override { m_Real.BeginForLog(); }
  void EndForLog() override { m_Real.EndForLog(); }
  platform::DWORD GetCurrentThreadId() override { return m_Real.GetCurrentThreadId(); }
  platform::DWORD GetLastError() override { return m_Real.GetLastError(); }
  void SetLastError(platform::DWORD code) override { m_Real.SetLastError(code); }

  platform::DWORD lateMs = 0;  // of the next signal

 private:
  platform::ThreadApi& m_Real;
};

TEST_F(OperationGateTest, LateSignalGivesTheNextOperationNoMoreTime) {
  Install<LateSignal>(Os().threads).lateMs = 15'000;
  ASSERT_TRUE(gate.TryBegin(Kind::kScan));
  CompleteIn(900ms, Kind::kScan, 0);
  EXPECT_EQ(gate.Await(Kind::kScan, 1000).end, OperationGate::End::kDone);
  ASSERT_TRUE(gate.TryBegin(Kind::kScan));
  const std::uint64_t began = Now();
  EXPECT_EQ(gate.Await(Kind::kScan, 20'000).end, OperationGate::End::kTimeout);
  EXPECT_EQ(Now() - began, 20'000u) << "the signal of the scan before came in between";
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
