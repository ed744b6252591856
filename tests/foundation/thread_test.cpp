#include "foundation/thread.h"

#include "foundation/exception.h"
#include "foundation/smart_obj.h"
#include "platform/platform.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

class ThreadTest : public test::PlatformTest {};

enum class Body { kEndsOnRequest, kThrowsException, kThrowsStdException, kNeverEnds, kStopsItself };

std::atomic<int> g_Owners{0};
std::atomic<int> g_Unwound{0};

class CWorker : public SmartObjEx<CWorker, SmartObj<>>, public CThread<CWorker> {
 public:
  explicit CWorker(Body body) : CThread<CWorker>("worker"), m_Body(body) { ++g_Owners; }
  ~CWorker() override {
    StopThread(1000);
    --g_Owners;
  }
  const char* GetClassName() const override { return "CWorker"; }
  using CThreadBase::StopThread;

  void RunThreadLoop() {
    struct AtEnd {
      ~AtEnd() { ++g_Unwound; }
    } atEnd;
    ++m_Rounds;
    switch (m_Body) {
      case Body::kEndsOnRequest:
        while (m_bRun) Os().threads.Sleep(10);
        return;
      case Body::kThrowsException:
        throw Exception("out of luck: %i", 5);
      case Body::kThrowsStdException:
        throw std::runtime_error("very much so");
      case Body::kNeverEnds:
        for (;;) Os().threads.Sleep(10);
      case Body::kStopsItself:
        StopThread(1000);
        return;
    }
  }

  const Body m_Body;
  std::atomic<int> m_Rounds{0};
};

void WaitUntil(const std::atomic<bool>& flag, bool value) {
  while (flag != value) std::this_thread::yield();
}

TEST_F(ThreadTest, RunsUntilItIsStoppedAndStartsAgain) {
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kEndsOnRequest));
  for (int round = 1; round <= 2; ++round) {
    EXPECT_EQ(worker->BeginThread(), platform::S_OK);
    EXPECT_TRUE(worker->IsRunning());
    worker->StopThread(2000);
    EXPECT_FALSE(worker->IsRunning());
    EXPECT_FALSE(worker->m_bRun);
    EXPECT_FALSE(worker->m_bEnding);
    EXPECT_EQ(os.threads.OpenHandles(), 0u);
    worker->StopThread(2000);  // does nothing
  }
  EXPECT_EQ(worker->m_Rounds, 2);
}

TEST_F(ThreadTest, AnExceptionEndsTheThreadWithALine) {
  const struct {
    Body body;
    const char* line;
  } cases[] = {{Body::kThrowsException, "CThread::ThreadProc: Exception: out of luck: 5\n"},
               {Body::kThrowsStdException, "CThread::ThreadProc: std:exception: very much so\n"}};
  for (const auto& c : cases) {
    const auto worker = CSmartPointer<CWorker>(new CWorker(c.body));
    worker->BeginThread();
    WaitUntil(worker->m_bRunning, false);
    EXPECT_EQ(os.console.Output(), c.line);
    EXPECT_EQ(os.threads.OpenHandles(), 1u);
    worker->BeginThread();  // closes the old handle
    WaitUntil(worker->m_bRunning, false);
    EXPECT_EQ(os.threads.OpenHandles(), 1u);
    EXPECT_EQ(worker->m_Rounds, 2);
    os.console.Output();
  }
}

TEST_F(ThreadTest, AFailedStartGivesTheCodeAsAnHresult) {
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kEndsOnRequest));
  const struct {
    platform::DWORD code;
    std::uint32_t result;
  } cases[] = {{8, 0x80070008},
               {0x12345, 0x80072345},
               {0x80004005, 0x80004005},
               {test::FailureSwitch::kFault, 0x8007001F}};
  for (const auto& c : cases) {
    os.failures.Fail("CreateThread", c.code);
    EXPECT_EQ(static_cast<std::uint32_t>(worker->BeginThread()), c.result);
    EXPECT_FALSE(worker->IsRunning());
  }
  os.failures.Pass("CreateThread");
  EXPECT_EQ(worker->BeginThread(), platform::S_OK);
}

TEST_F(ThreadTest, AThreadGivenUpLeavesTheFlagsAlone) {
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kNeverEnds));
  g_Unwound = 0;
  worker->BeginThread();
  while (worker->m_Rounds == 0) std::this_thread::yield();
  worker->StopThread(50);
  EXPECT_FALSE(worker->IsRunning());
  EXPECT_FALSE(worker->m_bRun);
  EXPECT_EQ(os.threads.OpenHandles(), 0u);

  // The flags of the next thread are not touched by the end of the earlier one.
  worker->BeginThread();
  while (g_Unwound == 0) std::this_thread::yield();
  while (worker->m_Rounds < 2) std::this_thread::yield();
  EXPECT_TRUE(worker->IsRunning());
  worker->StopThread(50);
}

TEST_F(ThreadTest, AnOwnerOutlivesTheThreadItGaveUp) {
  g_Owners = 0;
  g_Unwound = 0;
  auto worker = CSmartPointer<CWorker>(new CWorker(Body::kNeverEnds));
  worker->BeginThread();
  while (worker->m_Rounds == 0) std::this_thread::yield();
  worker->StopThread(50);
  worker.reset();
  os.threads.JoinAll();
  EXPECT_EQ(g_Unwound, 1);
  EXPECT_EQ(g_Owners, 0);
}

TEST_F(ThreadTest, AWaitThatFailsStillEndsTheStop) {
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kEndsOnRequest));
  worker->BeginThread();
  os.failures.Fail("WaitForMultipleObjects");
  worker->StopThread(2000);
  EXPECT_FALSE(worker->IsRunning());
  os.failures.Pass("WaitForMultipleObjects");
}

TEST_F(ThreadTest, AFaultInClosingTheHandleStillEndsTheStop) {
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kEndsOnRequest));
  worker->BeginThread();
  os.failures.Fail("CloseHandle", test::FailureSwitch::kFault);
  EXPECT_TRUE(worker->StopThread(2000));
  EXPECT_FALSE(worker->IsRunning());
}

TEST_F(ThreadTest, AThreadMayStopItself) {
  g_Unwound = 0;
  const auto worker = CSmartPointer<CWorker>(new CWorker(Body::kStopsItself));
  worker->BeginThread();
  while (g_Unwound == 0) std::this_thread::yield();
  os.threads.JoinAll();
  EXPECT_FALSE(worker->IsRunning());
}

}  // namespace
}  // namespace corvane
