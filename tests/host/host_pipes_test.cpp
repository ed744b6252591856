#include "platform/linux/host_pipes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/pipe_server.h"

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

namespace {

mode_t ModeOf(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

}  // namespace

class HostPipesTest : public testing::Test, protected PipeKernel {
 protected:
  ~HostPipesTest() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    EXPECT_EQ(pipes.OpenRecords(), 0u);
    EXPECT_EQ(threads.OpenHandles(), 0u);
    EXPECT_FALSE(std::filesystem::exists(place));
  }

  HANDLE CreatePipe(HostPipes& of) {
    return of.CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX, 0, 255, kPipeBufferBytes,
                               kPipeBufferBytes, 0, nullptr);
  }

  // Clients that are one too many come without a pause, and cost those that are served little.
  void AsksUnderAFlood(PipePeer& client) {
    std::atomic<bool> over{false};
    std::vector<std::thread> flood;
    for (int i = 0; i < 2; ++i) {
      flood.emplace_back([this, &over] {
        while (!over) PipePeer(place).IsConnected();
      });
    }
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i) {
      EXPECT_TRUE(client.Send(u"still served"));
      EXPECT_EQ(client.Receive(), u"still served");
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
    over = true;
    for (std::thread& one : flood) one.join();
    EXPECT_TRUE(PipePeer(place).IsAtEnd());  // and so have all before it been turned away
  }
};

TEST_F(HostPipesTest, FindsTheMessagesInAStream) {
  PipeServer server(*this, EchoOf);
  PipePeer first(place);
  EXPECT_TRUE(first.SendBytes(std::string("o\0n", 3)));  // in pieces, and more than one message
  EXPECT_TRUE(first.SendBytes(std::string("\0e\0\0\0x\0\0\0\0\0", 11)));
  EXPECT_EQ(first.Receive(), u"one");
  EXPECT_EQ(first.Receive(), u"x");
  EXPECT_EQ(first.Receive(), u"");
}

TEST_F(HostPipesTest, EndsTheReadOfAClientThatGoesHalfway) {
  PipeServer server(*this,
                    [](auto) { return std::string(kPipeBufferBytes - 2, 'a').append(2, '\0'); });
  {
    PipePeer halfway(place);
    EXPECT_TRUE(halfway.SendBytes("h"));
  }
  EXPECT_TRUE(server.AwaitEnded(1));
  EXPECT_THAT(server.Ended(), testing::Each(ERROR_BROKEN_PIPE));
  // Who only ends its own sending has the whole answer before the end.
  PipePeer polite(place);
  EXPECT_TRUE(polite.Send(u"the last question"));
  polite.EndSending();
  EXPECT_EQ(polite.Receive(), std::u16string(kPipeBufferBytes / 2 - 1, u'\x6161'));
  EXPECT_TRUE(polite.IsAtEnd());
}

TEST_F(HostPipesTest, TurnsAwayWhoIsOneTooMany) {
  PipeServer server(*this, EchoOf);
  std::vector<PipePeer> clients;
  for (int i = 0; i < 1'024; ++i) clients.emplace_back(place);
  ASSERT_TRUE(clients.back().Send(u"the last"));
  ASSERT_EQ(clients.back().Receive(), u"the last");
  EXPECT_TRUE(PipePeer(place).IsAtEnd());  // one too many
  AsksUnderAFlood(clients.back());
  clients.pop_back();
  EXPECT_TRUE(server.AwaitEnded(1));
  PipePeer next(place);
  EXPECT_TRUE(next.Send(u"free again"));
  EXPECT_EQ(next.Receive(), u"free again");
}

TEST_F(HostPipesTest, TakesThePlaceOfADeadServerOnly) {
  // What a run that was killed has left.
  std::filesystem::create_directory(folder);
  const int dead = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, place.data(), place.size());
  ASSERT_EQ(bind(dead, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(close(dead), 0);

  const HANDLE pipe = CreatePipe(pipes);
  ASSERT_NE(pipe, nullptr);
  EXPECT_EQ(ModeOf(folder), 0755u);
  EXPECT_EQ(ModeOf(place), 0666u);
  HostPipes another(gate, threads, folder);
  EXPECT_EQ(CreatePipe(another), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(PipePeer(place).IsConnected());  // it is left as it is
  pipes.CloseHandle(pipe);
  EXPECT_FALSE(PipePeer(place).IsConnected());

  std::ofstream(place) << "no socket";
  EXPECT_EQ(CreatePipe(pipes), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(std::filesystem::remove(place));
  for (const LPCWSTR path : {u"\\\\.\\pipe\\", u"\\\\.\\pipe\\..", u"\\\\.\\pipe\\a/b", u"Test"})
    EXPECT_EQ(
        pipes.CreateNamedPipeW(path, 0, 0, 255, kPipeBufferBytes, kPipeBufferBytes, 0, nullptr),
        nullptr);
}

// Nothing is read from a subscriber: that it has gone costs nothing until the next write tells.
TEST_F(HostPipesTest, FindsAClientGoneThatIsOnlyWrittenTo) {
  const HANDLE pipe = CreatePipe(pipes);
  OVERLAPPED overlapped;
  overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
  EXPECT_FALSE(pipes.ConnectNamedPipe(pipe, &overlapped));
  PipePeer client(place);
  DWORD none = 0;
  EXPECT_TRUE(pipes.GetOverlappedResult(pipe, &overlapped, &none, TRUE));
  threads.ResetEvent(overlapped.hEvent);

  static DWORD written = 0;
  const auto note = [](DWORD, DWORD bytes, OVERLAPPED*) { written = bytes; };
  const auto wait = [&](DWORD ms) {
    return pipes.WaitForMultipleObjectsEx(1, &overlapped.hEvent, TRUE, ms, TRUE);
  };
  OVERLAPPED write;
  EXPECT_TRUE(pipes.WriteFileEx(pipe, "!\0\0", 4, &write, note));
  EXPECT_EQ(wait(kLongMs), WAIT_IO_COMPLETION);
  EXPECT_EQ(written, 4u);
  EXPECT_TRUE(client.Send(u"nobody reads this"));
  EXPECT_EQ(client.Receive(), u"!");
  client.Vanish();
  timespec before{}, after{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before);
  EXPECT_EQ(wait(300), WAIT_TIMEOUT);
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after);
  EXPECT_LT((after.tv_sec - before.tv_sec) * 1'000 + (after.tv_nsec - before.tv_nsec) / 1'000'000,
            100);
  EXPECT_FALSE(pipes.WriteFileEx(pipe, "!\0\0", 4, &write, note));
  EXPECT_EQ(threads.GetLastError(), ERROR_BROKEN_PIPE);
  pipes.CloseHandle(pipe);
  threads.CloseHandle(overlapped.hEvent);
}

// A path that no address has room for.
TEST_F(HostPipesTest, WorksInADirectoryWithALongName) {
  const std::string deep = home / std::string(150, 'd');
  std::filesystem::create_directory(deep);
  HostPipes there(gate, threads, deep + "/pipe");
  const HANDLE pipe = CreatePipe(there);
  ASSERT_NE(pipe, nullptr);
  std::filesystem::create_symlink(deep + "/pipe", home / "short");
  EXPECT_TRUE(PipePeer(home / "short/CorvaneTest").IsConnected());
  there.CloseHandle(pipe);
}

}  // namespace corvane::test
