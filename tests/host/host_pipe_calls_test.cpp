// The calls of a pipe with one client, made by the test's own thread.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
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
  // This process's descriptors of the pipe, by what they are bound to.
  int FindSocket(int listens) const {
    for (int descriptor = 3; descriptor < 1024; ++descriptor) {
      sockaddr_un address{};
      socklen_t size = sizeof address;
      int value = 0;
      socklen_t valueSize = sizeof value;
      if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
          address.sun_path == socketPath &&
          getsockopt(descriptor, SOL_SOCKET, SO_ACCEPTCONN, &value, &valueSize) == 0 &&
          value == listens) {
        return descriptor;
      }
    }
    return -1;
  }
  int SocketOfServer() const { return FindSocket(1); }
  int SocketOfClient() const { return FindSocket(0); }
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
  ULONG process = 0;
  EXPECT_FALSE(pipes.GetNamedPipeClientProcessId(first.pipe, &process));  // nobody's
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

// Who is watched already cannot be watched, nor changed who is not: so epoll refuses.
TEST_F(HostPipeCallsTest, EndsAClientThatItCannotAttendTo) {
  static std::vector<DWORD> results;
  const auto note = [](DWORD error, DWORD, OVERLAPPED*) { results.push_back(error); };
  Instance one;
  Listen(one);
  OVERLAPPED write, read;
  char request[100];
  const std::string large(kBytes, 'x');  // the socket has no room for all of it
  const auto connect = [&] {
    results.clear();
    PipePeer client(socketPath);
    AwaitClient(one);
    return client;
  };
  const auto again = [&] {
    pipes.DisconnectNamedPipe(one.pipe);
    EXPECT_FALSE(pipes.ConnectNamedPipe(one.pipe, &one.overlapped));
  };
  {
    PipePeer client = connect();
    EXPECT_TRUE(threads.OwnAlerts().Watch(SocketOfClient(), 1, 0));
    EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, note));
    EXPECT_EQ(WaitAlertably(one, 1'000), WAIT_IO_COMPLETION);
    ASSERT_EQ(results, std::vector<DWORD>{ERROR_NOT_ENOUGH_MEMORY});
    EXPECT_TRUE(client.IsAtEnd());
    EXPECT_FALSE(pipes.WriteFileEx(one.pipe, "!\0\0", 4, &write, note));
    EXPECT_EQ(threads.GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  }
  again();
  {
    PipePeer client = connect();
    EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, note));
    threads.OwnAlerts().Unwatch(SocketOfClient());
    EXPECT_TRUE(pipes.WriteFileEx(one.pipe, large.data(), kBytes, &write, note));
    while (results.size() < 2 && WaitAlertably(one, 1'000) == WAIT_IO_COMPLETION) {
    }
    ASSERT_EQ(results, (std::vector<DWORD>{ERROR_SUCCESS, ERROR_NOT_ENOUGH_MEMORY}));
    EXPECT_FALSE(client.Receive().has_value());  // the end, behind the part that had gone out
  }
  // The next one is served, and where no client could be heard of, that is a failure.
  again();
  {
    PipePeer client = connect();
    EXPECT_TRUE(client.Send(u"asks"));
    EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, note));
    EXPECT_EQ(WaitAlertably(one, 1'000), WAIT_IO_COMPLETION);
    EXPECT_EQ(results, std::vector<DWORD>{ERROR_SUCCESS});
  }
  std::thread([&] {  // with alerts of its own
    const int listening = SocketOfServer();
    EXPECT_TRUE(threads.OwnAlerts().Watch(listening, 1, 0));
    Instance other{.pipe = CreatePipe(), .overlapped = {}};
    EXPECT_FALSE(pipes.ConnectNamedPipe(other.pipe, &other.overlapped));
    EXPECT_EQ(threads.GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    threads.OwnAlerts().Unwatch(listening);
    EXPECT_FALSE(pipes.ConnectNamedPipe(other.pipe, &other.overlapped));
    EXPECT_EQ(threads.GetLastError(), ERROR_IO_PENDING);
    pipes.CloseHandle(other.pipe);
  })
      .join();
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
