// Threads, kernel objects and locks of the host.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>

#include "any_host/host_kernel.h"

namespace corvane::test {

using namespace platform;

namespace {

constexpr DWORD kLong = 600'000;  // of the machine, a limit that only a failure reaches

// Adds up what a function of its own does on a thread.
template <typename Body>
HANDLE Start(Threads& threads, Body& body, const char* name = "test") {
  return threads.CreateThread(
      [](void* parameter) -> DWORD { return (*static_cast<Body*>(parameter))(); }, &body, name,
      nullptr);
}

}  // namespace

class HostThreads : public testing::Test, protected HostKernel {
 protected:
  ~HostThreads() override { EXPECT_EQ(threads.OpenHandles(), 0u); }
};

TEST_F(HostThreads, GivesAThreadsResultToWhoeverWaitsForIt) {
  auto body = [&]() -> DWORD {
    threads.SetLastError(77);  // a thread's own
    return threads.GetLastError();
  };
  threads.SetLastError(5);
  const HANDLE thread = Start(threads, body);
  ASSERT_EQ(threads.WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
  EXPECT_EQ(threads.WaitForSingleObject(thread, 0), WAIT_OBJECT_0);  // stays signalled
  DWORD code = 0;
  EXPECT_TRUE(threads.GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 77u);
  EXPECT_EQ(threads.GetLastError(), 5u);
  EXPECT_TRUE(threads.CloseHandle(thread));
  EXPECT_FALSE(threads.CloseHandle(thread));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(HostThreads, AnswersWithTheFirstSignalledHandleInOrder) {
  std::array<HANDLE, 3> events;
  for (HANDLE& event : events) event = threads.CreateEventW(FALSE, FALSE, "event");
  threads.SetEvent(events[2]);
  threads.SetEvent(events[1]);
  const auto wait = [&](BOOL all) {
    return threads.WaitForMultipleObjects(3, events.data(), all, 0);
  };
  EXPECT_EQ(wait(FALSE), WAIT_OBJECT_0 + 1);
  EXPECT_EQ(wait(FALSE), WAIT_OBJECT_0 + 2);
  EXPECT_EQ(wait(FALSE), WAIT_TIMEOUT);
  // A wait for all takes nothing until all are there.
  threads.SetEvent(events[0]);
  threads.SetEvent(events[1]);
  EXPECT_EQ(wait(TRUE), WAIT_TIMEOUT);
  threads.SetEvent(events[2]);
  EXPECT_EQ(wait(TRUE), WAIT_OBJECT_0);
  EXPECT_EQ(wait(FALSE), WAIT_TIMEOUT);
  EXPECT_EQ(threads.WaitForMultipleObjects(0, events.data(), FALSE, 0), WAIT_FAILED);
  for (const HANDLE event : events) threads.CloseHandle(event);
  EXPECT_EQ(threads.WaitForSingleObject(events[0], 0), WAIT_FAILED);
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(HostThreads, CountsASemaphoreUpToItsMaximum) {
  const HANDLE semaphore = threads.CreateSemaphoreW(0, 2, "semaphore");
  LONG before = -1;
  EXPECT_TRUE(threads.ReleaseSemaphore(semaphore, 2, &before));
  EXPECT_EQ(before, 0);
  EXPECT_FALSE(threads.ReleaseSemaphore(semaphore, 1, nullptr));
  EXPECT_EQ(threads.GetLastError(), ERROR_TOO_MANY_POSTS);
  EXPECT_EQ(threads.WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
  EXPECT_EQ(threads.WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
  EXPECT_EQ(threads.WaitForSingleObject(semaphore, 10), WAIT_TIMEOUT);
  threads.CloseHandle(semaphore);
  EXPECT_EQ(threads.CreateSemaphoreW(3, 2, "bad"), nullptr);
}

TEST_F(HostThreads, OneSignalLetsOneOfManyWaitersGo) {
  constexpr int kWaiters = 8;
  const HANDLE event = threads.CreateEventW(FALSE, FALSE, "auto");
  const HANDLE semaphore = threads.CreateSemaphoreW(0, kWaiters, "passed");
  auto body = [&]() -> DWORD {
    threads.WaitForSingleObject(event, INFINITE);
    threads.ReleaseSemaphore(semaphore, 1, nullptr);
    return 0;
  };
  std::array<HANDLE, kWaiters> waiters;
  for (HANDLE& waiter : waiters) waiter = Start(threads, body);
  for (int i = 0; i < kWaiters; ++i) {
    threads.SetEvent(event);
    EXPECT_EQ(threads.WaitForSingleObject(semaphore, kLong), WAIT_OBJECT_0);
    EXPECT_EQ(threads.WaitForSingleObject(semaphore, 100), WAIT_TIMEOUT);
  }
  EXPECT_EQ(threads.WaitForMultipleObjects(kWaiters, waiters.data(), TRUE, kLong), WAIT_OBJECT_0);
  for (const HANDLE waiter : waiters) threads.CloseHandle(waiter);
  threads.CloseHandle(event);
  threads.CloseHandle(semaphore);
}

TEST_F(HostThreads, AHandleMayBeClosedWhileItIsWaitedOn) {
  const HANDLE event = threads.CreateEventW(TRUE, FALSE, "closed");
  const HANDLE ready = threads.CreateEventW(TRUE, FALSE, "ready");
  DWORD result = WAIT_FAILED;
  auto body = [&]() -> DWORD {
    threads.SetEvent(ready);
    result = threads.WaitForSingleObject(event, 2000);
    return 0;
  };
  const HANDLE thread = Start(threads, body);
  threads.WaitForSingleObject(ready, INFINITE);
  threads.Sleep(100);
  threads.CloseHandle(event);
  EXPECT_EQ(threads.WaitForSingleObject(thread, kLong), WAIT_OBJECT_0);
  EXPECT_EQ(result, WAIT_TIMEOUT);
  threads.CloseHandle(thread);
  threads.CloseHandle(ready);
}

TEST_F(HostThreads, AnAbandonedThreadUnwindsAndItsHandleIsSignalledAtOnce) {
  const HANDLE never = threads.CreateEventW(TRUE, FALSE, "never");
  CRITICAL_SECTION section;
  threads.InitializeCriticalSection(&section, "section", 0);
  std::atomic<bool> unwound{false};
  std::atomic<bool> goneOn{false};
  struct AtEnd {
    Threads& threads;
    HANDLE event;
    CRITICAL_SECTION& section;
    std::atomic<bool>& unwound;
    ~AtEnd() {  // what destructors use goes on working
      threads.EnterCriticalSection(&section);
      threads.LeaveCriticalSection(&section);
      EXPECT_EQ(threads.WaitForSingleObject(event, INFINITE), WAIT_TIMEOUT);
      unwound = true;
    }
  };
  auto body = [&]() -> DWORD {
    const AtEnd atEnd{threads, never, section, unwound};
    threads.WaitForSingleObject(never, INFINITE);
    goneOn = true;
    return 0;
  };
  const HANDLE thread = Start(threads, body);
  threads.Sleep(500);
  threads.EnterCriticalSection(&section);  // it cannot have unwound yet
  EXPECT_TRUE(threads.TerminateThread(thread, 9));
  EXPECT_EQ(threads.WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  DWORD code = 0;
  threads.GetExitCodeThread(thread, &code);
  EXPECT_EQ(code, 9u);
  EXPECT_FALSE(unwound);
  threads.LeaveCriticalSection(&section);
  EXPECT_TRUE(threads.AwaitAbandoned(kLong));
  EXPECT_TRUE(unwound);
  EXPECT_FALSE(goneOn);
  threads.DeleteCriticalSection(&section);
  threads.CloseHandle(thread);
  threads.CloseHandle(never);
}

TEST_F(HostThreads, AnAbandonedThreadThatComputesEndsAtItsNextCallOfAService) {
  std::atomic<bool> go{false};
  std::atomic<bool> closed{false};
  std::atomic<bool> goneOn{false};
  auto body = [&]() -> DWORD {
    while (!go) {
    }
    gate.Enter("RegCloseKey");  // what destructors use lets it pass
    closed = true;
    gate.Enter("RegQueryValueExW");
    goneOn = true;
    return 0;
  };
  const HANDLE thread = Start(threads, body, "busy");
  threads.TerminateThread(thread, 1);
  EXPECT_FALSE(threads.AwaitAbandoned(1000));
  go = true;
  EXPECT_TRUE(threads.AwaitAbandoned(kLong));
  EXPECT_TRUE(closed);
  EXPECT_FALSE(goneOn);
  threads.CloseHandle(thread);
}

TEST_F(HostThreads, AWaitForAThreadsEndIsNotCutShortByAbandonment) {
  const HANDLE release = threads.CreateEventW(TRUE, FALSE, "release");
  auto inner = [&]() -> DWORD {
    threads.WaitForSingleObject(release, INFINITE);
    return 0;
  };
  const HANDLE worker = Start(threads, inner);
  std::atomic<DWORD> result{WAIT_FAILED};
  auto outer = [&]() -> DWORD {
    result = threads.WaitForSingleObject(worker, kLong);
    return 0;
  };
  const HANDLE owner = Start(threads, outer);
  threads.Sleep(500);
  threads.TerminateThread(owner, 0);
  threads.Sleep(500);
  threads.SetEvent(release);
  EXPECT_TRUE(threads.AwaitAbandoned(kLong));
  EXPECT_EQ(result, WAIT_OBJECT_0);
  for (const HANDLE handle : {release, worker, owner}) threads.CloseHandle(handle);
}

TEST_F(HostThreads, ACriticalSectionIsRecursiveAndKeepsOthersOut) {
  CRITICAL_SECTION section;
  threads.InitializeCriticalSection(&section, "counter", 0);
  int counter = 0;  // the thread sanitizer sees an unguarded touch
  auto body = [&]() -> DWORD {
    for (int i = 0; i < 1000; ++i) {
      threads.EnterCriticalSection(&section);
      threads.EnterCriticalSection(&section);
      ++counter;
      threads.LeaveCriticalSection(&section);
      ++counter;
      threads.LeaveCriticalSection(&section);
    }
    return 0;
  };
  const HANDLE both[] = {Start(threads, body), Start(threads, body)};
  EXPECT_EQ(threads.WaitForMultipleObjects(2, both, TRUE, kLong), WAIT_OBJECT_0);
  EXPECT_EQ(counter, 4000);
  for (const HANDLE handle : both) threads.CloseHandle(handle);
  threads.DeleteCriticalSection(&section);
}

}  // namespace corvane::test
