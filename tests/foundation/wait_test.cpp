#include "foundation/semaphore.h"
#include "foundation/win_event.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

class WaitTest : public test::PlatformTest {
 protected:
  template <typename Fn>
  static Exception Caught(Fn&& fn) {
    try {
      fn();
    } catch (const Exception& e) {
      return e;
    }
    return Exception("nothing was thrown");
  }
  // Message with the digits of addresses left out.
  static std::string Text(const Exception& e) {
    std::string text = e.what();
    if (const auto at = text.find("(0x"); at != std::string::npos) text.replace(at + 1, 18, "H");
    return text;
  }
};

TEST_F(WaitTest, EventOutcomes) {
  const auto event = CWinEvent::CreateObject();
  bool timedOut = false;
  EXPECT_FALSE(event->WaitOnEvent(10, &timedOut));
  EXPECT_TRUE(timedOut);
  EXPECT_FALSE(event->WaitOnEvent(10));

  event->SetEvent();
  event->SetEvent();
  EXPECT_TRUE(event->WaitOnEvent(10, &timedOut));
  EXPECT_FALSE(timedOut);
  EXPECT_FALSE(event->WaitOnEvent(10, &timedOut));  // the wait has reset it

  event->SetExitEvent();
  timedOut = true;
  EXPECT_FALSE(event->WaitOnEvent(10, &timedOut));
  EXPECT_FALSE(timedOut);
  EXPECT_FALSE(event->WaitOnEvent(10, &timedOut));
  EXPECT_TRUE(timedOut);
}

TEST_F(WaitTest, EventWinsOverTheExitSignalWhichStays) {
  const auto event = CWinEvent::CreateObject();
  event->SetExitEvent();
  event->SetEvent();
  EXPECT_TRUE(event->WaitOnEvent(10));
  bool timedOut = true;
  EXPECT_FALSE(event->WaitOnEvent(10, &timedOut));
  EXPECT_FALSE(timedOut);
}

TEST_F(WaitTest, EventWakesAWaiterOnAnotherThread) {
  const auto event = CWinEvent::CreateObject();
  bool woken = false;
  std::thread waiter([&] { woken = event->WaitOnEvent(platform::INFINITE); });
  event->SetEvent();
  waiter.join();
  EXPECT_TRUE(woken);
}

TEST_F(WaitTest, EventFailuresAreThrownWithTheirCode) {
  os.failures.Fail("CreateEventW");
  EXPECT_STREQ(Caught([] { CWinEvent::CreateObject(); }).what(), "CreateEvent(): failed");
  os.failures.Pass("CreateEventW");

  const auto event = CWinEvent::CreateObject();
  os.failures.Fail("SetEvent", 6);
  os.console.Output();
  EXPECT_EQ(Text(Caught([&] { event->SetEvent(); })), "SetEvent(H) failed: 6");
  EXPECT_NE(os.console.Output().find("SetEvent(0x"), std::string::npos);
  const Exception exit = Caught([&] { event->SetExitEvent(); });
  EXPECT_EQ(Text(exit), "SetExitEvent(H) failed: 6");
  EXPECT_EQ(exit.GetCode(), 6u);

  os.failures.Fail("WaitForMultipleObjects", 87);
  const Exception wait = Caught([&] { event->WaitOnEvent(10); });
  EXPECT_EQ(Text(wait), "WaitForXObject(H) failed: 87");
  EXPECT_EQ(wait.GetCode(), 87u);
}

TEST_F(WaitTest, SecondWakeUpThrowsAndOneStays) {
  const auto semaphore = CSemaphore::CreateObject();
  semaphore->SetDebugName("worker 0");
  EXPECT_FALSE(semaphore->WaitOnSemaphore(10));
  semaphore->IncReleaseCount();
  os.console.Output();
  const Exception second = Caught([&] { semaphore->IncReleaseCount(); });
  EXPECT_EQ(Text(second), "CSemaphore::IncReleaseCount(H) failed: 298");
  EXPECT_EQ(second.GetCode(), platform::ERROR_TOO_MANY_POSTS);
  const std::string line = os.console.Output();
  EXPECT_NE(line.find("[ERROR_TOO_MANY_POSTS]"), std::string::npos);
  EXPECT_NE(line.find("[name=worker 0]"), std::string::npos);
  EXPECT_TRUE(semaphore->WaitOnSemaphore(10));
  EXPECT_FALSE(semaphore->WaitOnSemaphore(10));
}

TEST_F(WaitTest, SemaphoreFailures) {
  {
    const auto semaphore = CSemaphore::CreateObject();
    os.failures.Fail("ReleaseSemaphore", 6);
    EXPECT_EQ(Text(Caught([&] { semaphore->IncReleaseCount(); })),
              "CSemaphore::IncReleaseCount(H) failed: 6");
    EXPECT_EQ(os.console.Output().find("[ERROR_TOO_MANY_POSTS]"), std::string::npos);
    os.failures.Fail("WaitForMultipleObjects", 6);
    EXPECT_EQ(Text(Caught([&] { semaphore->WaitOnSemaphore(10); })), "WaitForXObject(H) failed: 6");
  }
  os.failures.Fail("CreateSemaphoreW");
  const auto none = CSemaphore::CreateObject();
  EXPECT_STREQ(Caught([&] { none->IncReleaseCount(); }).what(),
               "IncReleaseCount() ERROR: _semaphore is NULL");
  EXPECT_NE(
      os.console.Output().find("[_semaphore=NULL][name=[not assigned]] ERROR! _semaphore is NULL"),
      std::string::npos);
  EXPECT_STREQ(Caught([&] { none->WaitOnSemaphore(10); }).what(),
               "WaitOnSemaphore() ERROR: _semaphore is NULL");
}

TEST_F(WaitTest, FaultInClosingAHandleEndsThere) {
  auto event = CWinEvent::CreateObject();
  auto semaphore = CSemaphore::CreateObject();
  os.failures.Fail("CloseHandle", test::FailureSwitch::kFault);
  event.reset();
  semaphore.reset();
  EXPECT_EQ(os.threads.OpenHandles(), 0u) << "the fault in one leaves the other open";
}

}  // namespace
}  // namespace corvane
