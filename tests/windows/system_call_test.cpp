// One call of the system from an operation of the seam: faults, last error, abandonment.

#include "platform/windows/system_call.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/windows/long_path.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr DWORD kServerUnavailable = 1722;  // RPC_S_SERVER_UNAVAILABLE, which RPC raises

int DivideByZero() {
  volatile int many = 7;
  volatile int zero = 0;
  return many / zero;
}
int Raise() {
  ::RaiseException(kServerUnavailable, 0, 0, nullptr);
  return 0;
}

template <typename Fn>
DWORD FaultOf(Fn fn) {
  return FaultCodeOf([&] { OrFault(fn); });
}

}  // namespace

TEST(SystemCall, AFaultIsAFailureOfThatOneCallOnItsThread) {
  EXPECT_EQ(FaultOf(&ReadNowhere), EXCEPTION_ACCESS_VIOLATION);
  EXPECT_EQ(FaultOf(&DivideByZero), EXCEPTION_INT_DIVIDE_BY_ZERO);
  EXPECT_EQ(FaultOf(&Raise), kServerUnavailable);
  EXPECT_EQ(FaultOf([] { return 7; }), 0u);
  EXPECT_EQ(OrFault([] { return 7; }), 7);
  // Within a function of a system library.
  EXPECT_EQ(FaultOf([] { return ::lstrcmpiW(L"a", L"b"); }), 0u);
  std::atomic<int> faults{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 200; ++round) {
        if (FaultOf(&ReadNowhere) == EXCEPTION_ACCESS_VIOLATION) ++faults;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, 800);
}

TEST(SystemCall, CallsNestAndExceptionsOfTheProgramPass) {
  // A callback within a call: its own fault ends its own call alone.
  const auto outer = [] { return FaultOf(&ReadNowhere) == EXCEPTION_ACCESS_VIOLATION ? 1 : 0; };
  EXPECT_EQ(OrFault(outer), 1);
  const auto thrower = []() -> int { throw std::runtime_error("of the program"); };
  EXPECT_THROW(OrFault(thrower), std::runtime_error);
}

TEST(SystemCall, KeepsTheErrorOfAFailingCallAndOfNoOther) {
  WindowsThreads threads;
  const auto failing = [] {
    ::SetLastError(ERROR_SHARING_VIOLATION);
    return FALSE;
  };
  const auto succeeding = [] {
    ::SetLastError(ERROR_ALREADY_EXISTS);
    return TRUE;
  };
  EXPECT_FALSE(ForwardOrFail("Some", failing));
  EXPECT_EQ(threads.GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(ForwardOrFail("Some", succeeding));
  EXPECT_EQ(threads.GetLastError(), ERROR_SHARING_VIOLATION);
  const auto invalid = [] {
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  };
  EXPECT_EQ(NullIfInvalid(ForwardOrFail("Some", invalid)), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
  // Of a thread that never failed before.
  std::thread([&] {
    EXPECT_FALSE(ForwardOrFail("Some", failing));
    EXPECT_EQ(threads.GetLastError(), ERROR_SHARING_VIOLATION);
  }).join();
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST(SystemCall, AThreadThatWasGivenUpEndsAtItsNextOperation) {
  WindowsThreads threads;
  struct Facts {
    std::atomic<bool> go{false}, closed{false}, goneOn{false};
  } facts;
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& it = *static_cast<Facts*>(parameter);
        while (!it.go) {
        }
        Forward("RegCloseKey", [] { return 0; });  // what destructors use passes
        it.closed = true;
        Forward("RegOpenKeyExW", [] { return 0; });
        it.goneOn = true;
        return 0;
      },
      &facts, "busy", nullptr);
  threads.TerminateThread(thread, 1);
  facts.go = true;
  EXPECT_TRUE(threads.AwaitAbandoned(10'000));
  EXPECT_TRUE(facts.closed);
  EXPECT_FALSE(facts.goneOn);
  threads.CloseHandle(thread);
}

TEST(SystemLibrary, FindsWhatIsThereAndNothingElse) {
  const SystemLibrary kernel(L"kernel32.dll");
  const SystemLibrary none(L"corvane-has-no-such.dll");
  const auto tick = CORVANE_FIND(kernel, GetTickCount64);
  ASSERT_TRUE(tick);
  EXPECT_GT(tick(), 0u);
  EXPECT_EQ(kernel.Find<void()>("NoSuchFunction"), nullptr);
  EXPECT_EQ(none.Find<void()>("GetTickCount64"), nullptr);
}

TEST(LongPath, LiftsTheLimitOfAbsolutePaths) {
  EXPECT_EQ(LongPath(u"C:/a/b"), L"\\\\?\\C:\\a\\b");
  EXPECT_EQ(LongPath(u"\\\\server\\share\\a"), L"\\\\?\\UNC\\server\\share\\a");
  EXPECT_EQ(LongPath(u"C:\\a/./b\\\\..\\c.d."), L"\\\\?\\C:\\a\\c.d");
  EXPECT_EQ(LongPath(u"\\\\?\\C:\\a\\..\\b"), L"\\\\?\\C:\\a\\..\\b");
  EXPECT_EQ(LongPath(u"\\\\.\\pipe\\a"), L"\\\\.\\pipe\\a");
  EXPECT_EQ(LongPath(u"a/b"), L"a\\b");
  EXPECT_EQ(LongPath(u"C:a"), L"C:a");
}

}  // namespace corvane::test
