#include "platform/linux/host_threads.h"

#include <gtest/gtest.h>

#include <atomic>

#include "any_host/host_kernel.h"

namespace corvane::test {

using namespace platform;

class LinuxThreads : public testing::Test, protected HostKernel {};

// By its own clock a sleep is never short, however fast that clock runs; in life it is.
TEST_F(LinuxThreads, SleepsByTheClockOfTheMachine) {
  const ULONGLONG before = clock.GetTickCount64();
  const auto lifeBefore = std::chrono::steady_clock::now();
  threads.Sleep(5000);
  EXPECT_GE(clock.GetTickCount64() - before, 4999u);
  EXPECT_LT(std::chrono::steady_clock::now() - lifeBefore, std::chrono::seconds(5));
}

TEST_F(LinuxThreads, AWaitForAllTakesNoHandleTwice) {
  const HANDLE event = threads.CreateEventW(FALSE, TRUE, "twice");
  const HANDLE twice[] = {event, event};
  EXPECT_EQ(threads.WaitForMultipleObjects(2, twice, TRUE, 0), WAIT_FAILED);
  threads.CloseHandle(event);
}

TEST_F(LinuxThreads, NamesThoseThatDoNotUnwind) {
  std::atomic<bool> go{false};
  auto body = [&]() -> DWORD {
    while (!go) {
    }
    return 0;
  };
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD { return (*static_cast<decltype(body)*>(parameter))(); }, &body,
      "busy", nullptr);
  threads.TerminateThread(thread, 1);
  EXPECT_EQ(threads.WaitForAbandoned(std::chrono::milliseconds(20)),
            std::vector<std::string>{"busy"});
  go = true;
  EXPECT_TRUE(threads.WaitForAbandoned(std::chrono::seconds(10)).empty());
  threads.CloseHandle(thread);
}

}  // namespace corvane::test
