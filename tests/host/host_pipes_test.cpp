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
#include <functional>
#include <set>
#include <thread>

#include "any_host/temp_directory.h"
#include "host/pipe_peer.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/host_threads.h"

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

namespace {

constexpr DWORD kBytes = 1'000'000;
constexpr DWORD kLong = 10'000;
constexpr LPCWSTR kPipe = u"\\\\.\\pipe\\Test";

mode_t ModeOf(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 ? found.st_mode & 07777 : 0;
}

class Server;

// What the server keeps of a client, as the program does: one block with the OVERLAPPED as its
// head.
struct Record : OVERLAPPED {
  HANDLE pipe;
  Server* server;
  DWORD toWrite;
  char request[kBytes];
  char reply[kBytes];
};

// Answers each message with what `answer` makes of it, on a thread of its own that ends when its
// owner gives it up. `ended` has the codes by which clients went.
class Server {
 public:
  using Answer = std::function<std::string(std::string)>;

  Server(HostPipes& pipes, HostThreads& threads, Answer answer)
      : m_Pipes(pipes), m_Threads(threads), m_Answer(std::move(answer)) {
    m_Listening.hEvent = m_Event = threads.CreateEventW(TRUE, FALSE, "connect");
    m_Ready = threads.CreateEventW(TRUE, FALSE, "ready");
    m_Thread =
        threads.CreateThread([](void* self) -> DWORD { return static_cast<Server*>(self)->Run(); },
                             this, "server", nullptr);
    threads.WaitForSingleObject(m_Ready, kLong);
  }
  ~Server() {
    m_Threads.TerminateThread(m_Thread, 1);
    EXPECT_TRUE(m_Threads.WaitForAbandoned(std::chrono::seconds(10)).empty());
    while (!m_Records.empty()) Close(*m_Records.begin());
    if (m_Waiting) m_Pipes.CloseHandle(m_Waiting);
    for (const HANDLE handle : {m_Event, m_Ready, m_Thread}) m_Threads.CloseHandle(handle);
  }

  HANDLE Thread() const { return m_Thread; }
  std::vector<DWORD> Ended() {
    const std::lock_guard lock(m_Mutex);
    return m_Ended;
  }
  // Whether so many clients have gone within a while.
  bool AwaitEnded(std::size_t count) {
    for (int i = 0; i < 1'000 && Ended().size() < count; ++i) m_Threads.Sleep(10);
    return Ended().size() >= count;
  }

 private:
  DWORD Run() {
    Listen();
    m_Threads.SetEvent(m_Ready);
    for (;;) {
      const DWORD result = m_Pipes.WaitForMultipleObjectsEx(1, &m_Event, TRUE, INFINITE, TRUE);
      if (result == WAIT_IO_COMPLETION) continue;
      if (result != WAIT_OBJECT_0) return result;
      DWORD none = 0;
      EXPECT_TRUE(m_Pipes.GetOverlappedResult(m_Waiting, &m_Listening, &none, FALSE));
      auto* const record = static_cast<Record*>(m_Pipes.GlobalAlloc(sizeof(Record)));
      record->pipe = std::exchange(m_Waiting, nullptr);
      record->server = this;
      m_Records.insert(record);
      OnWritten(0, 0, record);
      Listen();
    }
  }
  void Listen() {
    m_Waiting =
        m_Pipes.CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, 0, 255, kBytes, kBytes, 0, nullptr);
    EXPECT_FALSE(m_Pipes.ConnectNamedPipe(m_Waiting, &m_Listening));
    EXPECT_EQ(m_Threads.GetLastError(), ERROR_IO_PENDING);
  }
  static void OnWritten(DWORD error, DWORD bytes, OVERLAPPED* overlapped) {
    auto* const record = static_cast<Record*>(overlapped);
    Server& self = *record->server;
    EXPECT_TRUE(error != 0 || bytes == record->toWrite);
    if (error != 0 ||
        !self.m_Pipes.ReadFileEx(record->pipe, record->request, kBytes, record, &OnRead)) {
      self.End(record, error);
    }
  }
  static void OnRead(DWORD error, DWORD bytes, OVERLAPPED* overlapped) {
    auto* const record = static_cast<Record*>(overlapped);
    Server& self = *record->server;
    if (error != 0) return self.End(record, error);
    const std::string reply = self.m_Answer({record->request, bytes});
    std::memcpy(record->reply, reply.data(), reply.size());
    record->toWrite = static_cast<DWORD>(reply.size());
    if (!self.m_Pipes.WriteFileEx(record->pipe, record->reply, record->toWrite, record,
                                  &OnWritten)) {
      self.End(record, self.m_Threads.GetLastError());
    }
  }
  void End(Record* record, DWORD error) {
    Close(record);
    const std::lock_guard lock(m_Mutex);
    m_Ended.push_back(error);
  }
  void Close(Record* record) {
    EXPECT_TRUE(m_Pipes.DisconnectNamedPipe(record->pipe));
    EXPECT_TRUE(m_Pipes.CloseHandle(record->pipe));
    m_Records.erase(record);
    m_Pipes.GlobalFree(record);
  }

  HostPipes& m_Pipes;
  HostThreads& m_Threads;
  const Answer m_Answer;
  OVERLAPPED m_Listening;
  HANDLE m_Event = nullptr;
  HANDLE m_Ready = nullptr;
  HANDLE m_Waiting = nullptr;
  HANDLE m_Thread = nullptr;
  std::set<Record*> m_Records;
  std::mutex m_Mutex;
  std::vector<DWORD> m_Ended;
};

std::string Echo(std::string message) { return message; }

}  // namespace

class HostPipesTest : public testing::Test {
 protected:
  ~HostPipesTest() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    EXPECT_EQ(pipes.OpenRecords(), 0u);
    EXPECT_EQ(threads.OpenHandles(), 0u);
    EXPECT_FALSE(std::filesystem::exists(socketPath));
  }

  HANDLE CreatePipe(HostPipes& of) {
    return of.CreateNamedPipeW(kPipe, PIPE_ACCESS_DUPLEX, 0, 255, kBytes, kBytes, 0, nullptr);
  }

  // Clients that are one too many come without a pause, and cost those that are served little.
  void AsksUnderAFlood(PipePeer& client) {
    std::atomic<bool> over{false};
    std::vector<std::thread> flood;
    for (int i = 0; i < 2; ++i) {
      flood.emplace_back([this, &over] {
        while (!over) PipePeer(socketPath).IsConnected();
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
    EXPECT_TRUE(PipePeer(socketPath).IsAtEnd());  // and so have all before it been turned away
  }

  TempDirectory home;
  const std::string folder = home / "pipe";
  const std::string socketPath = folder + "/Test";
  HostTime time{1.0};
  HostThreads threads{time};
  HostGate gate;
  HostPipes pipes{gate, threads, folder};
};

TEST_F(HostPipesTest, AnswersWholeMessagesOfSeveralClients) {
  Server server(pipes, threads, Echo);
  PipePeer first(socketPath), second(socketPath);
  ASSERT_TRUE(first.IsConnected() && second.IsConnected());
  EXPECT_TRUE(second.Send(u"two"));
  EXPECT_EQ(second.Receive(), u"two");
  EXPECT_TRUE(first.SendBytes(std::string("o\0n", 3)));  // in pieces, and more than one message
  EXPECT_TRUE(first.SendBytes(std::string("\0e\0\0\0x\0\0\0\0\0", 11)));
  EXPECT_EQ(first.Receive(), u"one");
  EXPECT_EQ(first.Receive(), u"x");
  EXPECT_EQ(first.Receive(), u"");
  EXPECT_TRUE(second.Send(u"again"));
  EXPECT_EQ(second.Receive(), u"again");
}

TEST_F(HostPipesTest, TakesAMillionBytesAndNotMore) {
  Server server(pipes, threads, Echo);
  const std::u16string longest(kBytes / 2 - 1, u'a');
  PipePeer good(socketPath), bad(socketPath);
  EXPECT_TRUE(good.Send(longest));
  EXPECT_EQ(good.Receive(), longest);
  bad.Send(longest + u"a");
  EXPECT_TRUE(bad.IsAtEnd());
  EXPECT_TRUE(server.AwaitEnded(1));
  EXPECT_EQ(server.Ended(), std::vector<DWORD>{ERROR_MORE_DATA});
  EXPECT_TRUE(good.Send(u"still here"));
  EXPECT_EQ(good.Receive(), u"still here");
}

TEST_F(HostPipesTest, EndsTheReadOfAClientThatVanishes) {
  Server server(pipes, threads, [](auto) { return std::string(kBytes - 2, 'a').append(2, '\0'); });
  {
    PipePeer idle(socketPath), halfway(socketPath), deaf(socketPath);
    EXPECT_TRUE(halfway.SendBytes("h"));
    EXPECT_TRUE(deaf.Send(u"goes before the answer"));
  }
  EXPECT_TRUE(server.AwaitEnded(3));
  EXPECT_THAT(server.Ended(), testing::Each(ERROR_BROKEN_PIPE));
  // Who only ends its own sending has the whole answer before the end.
  PipePeer polite(socketPath);
  EXPECT_TRUE(polite.Send(u"the last question"));
  polite.EndSending();
  EXPECT_EQ(polite.Receive(), std::u16string(kBytes / 2 - 1, u'\x6161'));
  EXPECT_TRUE(polite.IsAtEnd());
}

// Its writes are complete while the buffer has room; then they wait, and nobody else does.
TEST_F(HostPipesTest, LetsNobodyWaitForAClientThatDoesNotRead) {
  std::atomic<int> answered{0};
  Server server(pipes, threads, [&](std::string message) {
    if (message.size() > 4) ++answered;
    return message.size() > 4 ? message : std::string("!\0\0\0", 4);
  });
  PipePeer stalled(socketPath), other(socketPath);
  const std::u16string large(100'000, u'x');  // 200,002 bytes
  int sent = 0;
  const auto moment = std::chrono::milliseconds(300);
  auto last = std::chrono::steady_clock::now();
  for (int seen = 0; std::chrono::steady_clock::now() - last < moment; threads.Sleep(5)) {
    if (answered == sent && sent < 40) {
      EXPECT_TRUE(stalled.Send(large));
      ++sent;
    }
    if (seen != answered) last = std::chrono::steady_clock::now();
    seen = answered;
  }
  EXPECT_GE(answered, 5);  // the buffer alone holds four, and one waits
  EXPECT_LT(sent, 40);
  EXPECT_TRUE(other.Send(u"?"));
  EXPECT_EQ(other.Receive(), u"!");
  for (int i = 0; i < sent; ++i) ASSERT_EQ(stalled.Receive(), large) << i;
  EXPECT_TRUE(stalled.Send(large));
  EXPECT_EQ(stalled.Receive(), large);
}

TEST_F(HostPipesTest, ServesHundredsAtOnce) {
  Server server(pipes, threads, Echo);
  std::vector<PipePeer> clients;
  for (int i = 0; i < 300; ++i) clients.emplace_back(socketPath);
  for (PipePeer& client : clients) ASSERT_TRUE(client.Send(u"all of us"));
  for (PipePeer& client : clients) ASSERT_EQ(client.Receive(), u"all of us");
  for (int i = 300; i < 1'024; ++i) clients.emplace_back(socketPath);
  ASSERT_TRUE(clients.back().Send(u"the last"));
  ASSERT_EQ(clients.back().Receive(), u"the last");
  EXPECT_TRUE(PipePeer(socketPath).IsAtEnd());  // one too many
  AsksUnderAFlood(clients.back());
  clients.pop_back();
  EXPECT_TRUE(server.AwaitEnded(1));
  PipePeer next(socketPath);
  EXPECT_TRUE(next.Send(u"free again"));
  EXPECT_EQ(next.Receive(), u"free again");
}

TEST_F(HostPipesTest, WakesForEventsAndQueuedCalls) {
  Server server(pipes, threads, Echo);
  static std::atomic<std::uintptr_t> called{0};
  called = 0;
  const auto note = [](std::uintptr_t data) { called = data; };
  EXPECT_EQ(pipes.QueueUserAPC(note, server.Thread(), 7), 1u);
  for (int i = 0; i < 500 && called == 0; ++i) threads.Sleep(10);
  EXPECT_EQ(called, 7u);

  const HANDLE event = threads.CreateEventW(FALSE, FALSE, "event");
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &event, TRUE, 20, TRUE), WAIT_TIMEOUT);
  EXPECT_EQ(pipes.QueueUserAPC(note, event, 8), 0u);
  struct Setter {
    HostThreads& threads;
    HANDLE event;
  } setter{threads, event};
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& self = *static_cast<Setter*>(parameter);
        self.threads.Sleep(50);
        return static_cast<DWORD>(self.threads.SetEvent(self.event));
      },
      &setter, "setter", nullptr);
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &event, TRUE, kLong, TRUE), WAIT_OBJECT_0);
  threads.WaitForSingleObject(thread, kLong);
  EXPECT_EQ(pipes.QueueUserAPC(note, thread, 9), 0u);  // it has ended
  threads.CloseHandle(thread);
  threads.CloseHandle(event);
}

TEST_F(HostPipesTest, TakesThePlaceOfADeadServerOnly) {
  // What a run that was killed has left.
  std::filesystem::create_directory(folder);
  const int dead = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, socketPath.data(), socketPath.size());
  ASSERT_EQ(bind(dead, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(close(dead), 0);

  const HANDLE pipe = CreatePipe(pipes);
  ASSERT_NE(pipe, nullptr);
  EXPECT_EQ(ModeOf(folder), 0755u);
  EXPECT_EQ(ModeOf(socketPath), 0666u);
  HostPipes another(gate, threads, folder);
  EXPECT_EQ(CreatePipe(another), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(PipePeer(socketPath).IsConnected());  // it is left as it is
  pipes.CloseHandle(pipe);
  EXPECT_FALSE(PipePeer(socketPath).IsConnected());

  std::ofstream(socketPath) << "no socket";
  EXPECT_EQ(CreatePipe(pipes), nullptr);
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(std::filesystem::remove(socketPath));
  for (const LPCWSTR path : {u"\\\\.\\pipe\\", u"\\\\.\\pipe\\..", u"\\\\.\\pipe\\a/b", u"Test"})
    EXPECT_EQ(pipes.CreateNamedPipeW(path, 0, 0, 255, kBytes, kBytes, 0, nullptr), nullptr);
}

TEST_F(HostPipesTest, TellsWhoIsAtTheOtherEnd) {
  const HANDLE pipe = CreatePipe(pipes);
  OVERLAPPED overlapped;
  overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
  EXPECT_FALSE(pipes.ConnectNamedPipe(pipe, &overlapped));
  DWORD none = 0;
  EXPECT_FALSE(pipes.GetOverlappedResult(pipe, &overlapped, &none, FALSE));
  EXPECT_EQ(threads.GetLastError(), ERROR_IO_INCOMPLETE);
  ULONG process = 0;
  EXPECT_FALSE(pipes.GetNamedPipeClientProcessId(pipe, &process));
  PipePeer client(socketPath);
  EXPECT_TRUE(pipes.GetOverlappedResult(pipe, &overlapped, &none, TRUE));
  EXPECT_TRUE(pipes.GetNamedPipeClientProcessId(pipe, &process));
  EXPECT_EQ(process, static_cast<ULONG>(getpid()));
  pipes.CloseHandle(pipe);
  EXPECT_TRUE(client.IsAtEnd());
  threads.CloseHandle(overlapped.hEvent);
}

// Nothing is read from a subscriber: that it has gone costs nothing until the next write tells.
TEST_F(HostPipesTest, FindsAClientGoneThatIsOnlyWrittenTo) {
  const HANDLE pipe = CreatePipe(pipes);
  OVERLAPPED overlapped;
  overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
  EXPECT_FALSE(pipes.ConnectNamedPipe(pipe, &overlapped));
  PipePeer client(socketPath);
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
  EXPECT_EQ(wait(kLong), WAIT_IO_COMPLETION);
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
  EXPECT_TRUE(PipePeer(home / "short/Test").IsConnected());
  there.CloseHandle(pipe);
}

}  // namespace corvane::test
