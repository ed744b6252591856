// The calls of a pipe with one client, made by the test's own thread.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "host/pipe_peer.h"
#include "host/temp_directory.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_pipes.h"
#include "platform/linux/host_threads.h"

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

namespace {

constexpr DWORD kBytes = 1'000'000;
constexpr LPCWSTR kPipe = u"\\\\.\\pipe\\Test";

// Of this thread.
long CpuMs() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1'000 + time.tv_nsec / 1'000'000;
}

}  // namespace

class HostPipeCallsTest : public testing::Test {
 protected:
  struct Instance {
    HANDLE pipe = nullptr;
    OVERLAPPED overlapped;
  };

  ~HostPipeCallsTest() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    EXPECT_EQ(threads.OpenHandles(), 0u);
  }

  HANDLE CreatePipe() {
    return pipes.CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, 0, 255, kBytes, kBytes, 0, nullptr);
  }
  void Listen(Instance& one) {
    one.pipe = CreatePipe();
    one.overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
    EXPECT_FALSE(pipes.ConnectNamedPipe(one.pipe, &one.overlapped));
  }
  void AwaitClient(Instance& one) {
    DWORD none = 0;
    EXPECT_TRUE(pipes.GetOverlappedResult(one.pipe, &one.overlapped, &none, TRUE));
    threads.ResetEvent(one.overlapped.hEvent);
  }
  DWORD WaitAlertably(const Instance& one, DWORD ms) {
    return pipes.WaitForMultipleObjectsEx(1, &one.overlapped.hEvent, TRUE, ms, TRUE);
  }
  void Close(Instance& one) {
    pipes.CloseHandle(one.pipe);
    threads.CloseHandle(one.overlapped.hEvent);
  }

  TempDirectory home;
  const std::string folder = home / "pipe";
  const std::string socketPath = folder + "/Test";
  HostTime time{1.0};
  HostThreads threads{time};
  HostGate gate;
  HostPipes pipes{gate, threads, folder};
};

// Waiting for a result looks at the sockets, and leaves the calls that are queued alone.
TEST_F(HostPipeCallsTest, KeepsCallsForTheNextAlertableWait) {
  Instance first, second;
  Listen(first);
  PipePeer client(socketPath);
  AwaitClient(first);
  static int calls = 0;
  calls = 0;
  OVERLAPPED write;
  EXPECT_TRUE(pipes.WriteFileEx(first.pipe, "!\0\0", 4, &write,
                                [](DWORD, DWORD, OVERLAPPED*) { ++calls; }));
  Listen(second);
  std::thread later([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_TRUE(PipePeer(socketPath).IsConnected());
  });
  const long before = CpuMs();
  AwaitClient(second);
  EXPECT_LT(CpuMs() - before, 100);
  later.join();
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(WaitAlertably(first, 2'000), WAIT_IO_COMPLETION);
  EXPECT_EQ(calls, 1);
  Close(first);
  Close(second);
}

// It may still hold its end open, or have gone: nobody would ever hear of it again.
TEST_F(HostPipeCallsTest, EndsTheReadOfAClientThatTakesNoAnswers) {
  Instance one;
  Listen(one);
  PipePeer client(socketPath);
  AwaitClient(one);
  static DWORD result = 0;
  const auto note = [](DWORD error, DWORD, OVERLAPPED*) { result = error; };
  const auto wait = [&] {
    result = ERROR_IO_PENDING;
    const DWORD woken = WaitAlertably(one, 1'000);
    return woken == WAIT_IO_COMPLETION ? result : woken;
  };
  const std::string large(kBytes, 'x');  // the socket has no room for all of it
  OVERLAPPED write, read;
  char request[100];
  EXPECT_TRUE(pipes.WriteFileEx(one.pipe, large.data(), kBytes, &write, note));
  EXPECT_EQ(wait(), ERROR_SUCCESS);
  EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, note));
  client.EndReceiving();
  EXPECT_TRUE(client.Send(u"asks on"));  // a whole message is still one
  EXPECT_EQ(wait(), ERROR_SUCCESS);
  EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, note));
  EXPECT_EQ(wait(), ERROR_BROKEN_PIPE);
  Close(one);
}

// Everybody may open the folder and lock it; who may not write there is in nobody's way.
TEST_F(HostPipeCallsTest, OpensBesideAStrangersLock) {
  std::filesystem::create_directory(folder);
  const int stranger = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(stranger, LOCK_EX), 0);
  std::thread patience([stranger] {  // a server that waits gets its turn, late
    std::this_thread::sleep_for(std::chrono::seconds(2));
    close(stranger);
  });
  const auto start = HostTime::RealClock::now();
  const HANDLE pipe = CreatePipe();
  EXPECT_LT(HostTime::RealClock::now() - start, std::chrono::seconds(1));
  EXPECT_NE(pipe, nullptr);
  struct stat lock {};
  EXPECT_EQ(stat((folder + "/.lock").c_str(), &lock), 0);
  EXPECT_EQ(lock.st_mode & 07777, 0600u);
  pipes.CloseHandle(pipe);
  patience.join();
}

}  // namespace corvane::test
