// What is the Windows host's own of its pipes.

#include <gtest/gtest.h>

#include "any_host/pipe_peer.h"
#include "any_host/pipe_server.h"
#include "platform/windows/pipe_calls.h"
#include "platform/windows/win32.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

class WindowsPipesTest : public testing::Test, protected PipeKernel {
 protected:
  ~WindowsPipesTest() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    EXPECT_EQ(threads.OpenHandles(), 0u);
  }
  HANDLE CreatePipe(Pipes& of) {
    return of.CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 255, 1000, 1000, 0,
                               nullptr);
  }
  // Wine takes the flag and does not keep to it.
  static bool HasFirstInstances() {
    const auto create = [] {
      return ::CreateNamedPipeW(L"\\\\.\\pipe\\CorvaneFirst",
                                PIPE_ACCESS_DUPLEX | FILE_FLAG_FIRST_PIPE_INSTANCE, 0, 255, 1, 1, 0,
                                nullptr);
    };
    const HANDLE one = create();
    const HANDLE two = create();
    ::CloseHandle(one);
    if (two == INVALID_HANDLE_VALUE) return true;
    ::CloseHandle(two);
    return false;
  }
};

// A child with the rights of a user would have the server's end of the system's clients.
TEST_F(WindowsPipesTest, NoChildInheritsAPipe) {
  SECURITY_ATTRIBUTES inheritable;
  inheritable.bInheritHandle = TRUE;
  const HANDLE pipe = pipes.CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE, 255,
                                             1000, 1000, 0, &inheritable);
  ASSERT_TRUE(pipe);
  ::DWORD flags = HANDLE_FLAG_INHERIT;
  EXPECT_TRUE(::GetHandleInformation(pipe, &flags));
  EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0u);
  pipes.CloseHandle(pipe);
}

TEST_F(WindowsPipesTest, TakesNoNameThatAnotherServes) {
  const HANDLE first = CreatePipe(pipes);
  const HANDLE second = CreatePipe(pipes);  // of its own name it makes as many as it likes
  ASSERT_TRUE(first && second);
  Pipes other(threads);
  const HANDLE stolen = CreatePipe(other);
  if (HasFirstInstances()) {
    EXPECT_EQ(stolen, nullptr);
    EXPECT_EQ(threads.GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  } else if (stolen) {
    other.CloseHandle(stolen);
  }
  pipes.CloseHandle(first);
  pipes.CloseHandle(second);
  const HANDLE free = CreatePipe(other);
  EXPECT_NE(free, nullptr);
  other.CloseHandle(free);
  EXPECT_EQ(pipes.CreateNamedPipeW(u"no pipe", 3, 0, 255, 1, 1, 0, nullptr), nullptr);
}

// One that has come and gone before it was waited for is a client whose read fails.
TEST_F(WindowsPipesTest, TakesAClientThatWasThereBeforeTheWait) {
  const HANDLE pipe = CreatePipe(pipes);
  PipePeer(place).Vanish();
  OVERLAPPED overlapped, read;
  overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
  EXPECT_FALSE(pipes.ConnectNamedPipe(pipe, &overlapped));
  EXPECT_EQ(threads.GetLastError(), DWORD{ERROR_PIPE_CONNECTED});
  char request[10];
  static DWORD error;
  error = 0;
  const auto note = [](DWORD code, DWORD, OVERLAPPED*) { error = code; };
  if (!pipes.ReadFileEx(pipe, request, 10, &read, note)) {
    error = threads.GetLastError();
  } else {
    pipes.WaitForMultipleObjectsEx(1, &overlapped.hEvent, TRUE, 1000, TRUE);
  }
  EXPECT_EQ(error, DWORD{ERROR_BROKEN_PIPE});
  const ULONGLONG before = ::GetTickCount64();
  EXPECT_TRUE(pipes.CloseHandle(pipe));
  EXPECT_LT(::GetTickCount64() - before, 500u);  // nothing was pending
  threads.CloseHandle(overlapped.hEvent);
}

// The memory of an operation is the system's to check.
TEST_F(WindowsPipesTest, AFaultIsAFailureOfThatOneOperation) {
  const HANDLE pipe = CreatePipe(pipes);
  auto* const nowhere = reinterpret_cast<OVERLAPPED*>(0x10);
  char request[10];
  const auto never = [](DWORD, DWORD, OVERLAPPED*) { FAIL(); };
  EXPECT_THROW(pipes.ReadFileEx(pipe, request, 10, nowhere, never), PlatformFault);
  EXPECT_THROW(pipes.WriteFileEx(pipe, request, 10, nowhere, never), PlatformFault);
  std::u16string sid;
  EXPECT_THROW(pipes.ConvertSidToStringSidW(nowhere, &sid), PlatformFault);
  EXPECT_TRUE(pipes.CloseHandle(pipe));
}

// Calls that a thread did not come to are forgotten with it.
TEST_F(WindowsPipesTest, ForgetsTheCallsOfAThreadThatHasEnded) {
  struct Facts {
    Threads& threads;
    HANDLE go;
  } facts{threads, threads.CreateEventW(TRUE, FALSE, "go")};
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& self = *static_cast<Facts*>(parameter);
        return self.threads.WaitForSingleObject(self.go, kLongMs);  // not alertable
      },
      &facts, "deaf", nullptr);
  const auto never = [](std::uintptr_t) { FAIL(); };
  EXPECT_EQ(pipes.QueueUserAPC(never, thread, 1), 1u);
  threads.SetEvent(facts.go);
  threads.WaitForSingleObject(thread, kLongMs);
  ::Sleep(100);  // the system's thread goes a little later
  ::DWORD before = 0;
  ::DWORD after = 0;
  ::GetProcessHandleCount(::GetCurrentProcess(), &before);
  OVERLAPPED unused;  // what is begun next tidies up
  auto& calls = PipeCalls::Instance();
  calls.Retract(calls.Begin(nullptr, &unused, nullptr));
  ::GetProcessHandleCount(::GetCurrentProcess(), &after);
  EXPECT_LE(after, before);
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &facts.go, TRUE, 0, TRUE), DWORD{WAIT_OBJECT_0});
  threads.CloseHandle(thread);
  threads.CloseHandle(facts.go);
}

}  // namespace corvane::test
