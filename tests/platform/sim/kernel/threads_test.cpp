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

// The search for circles of threads must see that the new owner waits no more.
TEST_F(KernelTest, ALockThatWasHandedOnIsAskedForAgain) {
  CRITICAL_SECTION lock;
  Os().threads.InitializeCriticalSection(&lock, "handed on", 0);
  Os().threads.EnterCriticalSection(&lock);
  const HANDLE thread = Os().threads.CreateThread(
      [](void* section) -> DWORD {
        Os().threads.EnterCriticalSection(static_cast<CRITICAL_SECTION*>(section));
        Os().threads.LeaveCriticalSection(static_cast<CRITICAL_SECTION*>(section));
        return 0;
      },
      &lock, "waiter", nullptr);
  RunFor(1s);
  Os().threads.LeaveCriticalSection(&lock);  // handed to the waiter, which has not run yet
  Os().threads.EnterCriticalSection(&lock);
  Os().threads.LeaveCriticalSection(&lock);
  EXPECT_EQ(Os().threads.WaitForSingleObject(thread, 1000), WAIT_OBJECT_0);
  Os().threads.CloseHandle(thread);
  Os().threads.DeleteCriticalSection(&lock);
}

}  // namespace corvane::test
