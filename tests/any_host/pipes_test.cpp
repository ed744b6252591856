// Named pipes of the host, with real clients.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/pipe_server.h"
#include "platform/session_api.h"

namespace corvane::test {

using namespace platform;

class HostPipesOfAny : public testing::Test, public PipeKernel {
 public:
  // An instance that the test itself serves.
  struct Instance {
    HANDLE pipe = nullptr;
    OVERLAPPED overlapped;
  };

  ~HostPipesOfAny() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    EXPECT_EQ(pipes.OpenRecords(), 0u);
    EXPECT_EQ(threads.OpenHandles(), 0u);
    EXPECT_FALSE(PipePeer(place).IsConnected());
  }

  HANDLE CreatePipe(const SECURITY_ATTRIBUTES* attributes = nullptr) {
    return pipes.CreateNamedPipeW(pipePath, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE, 255, kPipeBufferBytes,
                                  kPipeBufferBytes, 0, attributes);
  }
  void Listen(Instance& one) {
    one.pipe = CreatePipe();
    one.overlapped.hEvent = threads.CreateEventW(TRUE, FALSE, "connect");
    EXPECT_FALSE(pipes.ConnectNamedPipe(one.pipe, &one.overlapped));
    EXPECT_EQ(threads.GetLastError(), ERROR_IO_PENDING);
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
    EXPECT_TRUE(pipes.CloseHandle(one.pipe));
    EXPECT_TRUE(threads.CloseHandle(one.overlapped.hEvent));
  }
};

TEST_F(HostPipesOfAny, AnswersMessagesOfSeveralClients) {
  PipeServer server(*this, EchoOf);
  PipePeer first(place), second(place);
  ASSERT_TRUE(first.IsConnected() && second.IsConnected());
  EXPECT_TRUE(second.Send(u"two"));
  EXPECT_EQ(second.Receive(), u"two");
  EXPECT_TRUE(first.Send(u"one"));
  EXPECT_TRUE(first.Send(u""));
  EXPECT_EQ(first.Receive(), u"one");
  EXPECT_EQ(first.Receive(), u"");
  EXPECT_TRUE(second.Send(u"again"));
  EXPECT_EQ(second.Receive(), u"again");
}

TEST_F(HostPipesOfAny, TakesAMillionBytesAndNotMore) {
  PipeServer server(*this, EchoOf);
  const std::u16string longest(kPipeBufferBytes / 2 - 1, u'a');
  PipePeer good(place), bad(place);
  EXPECT_TRUE(good.Send(longest));
  EXPECT_EQ(good.Receive(), longest);
  bad.Send(longest + u"a");
  EXPECT_TRUE(bad.IsAtEnd());
  EXPECT_TRUE(server.AwaitEnded(1));
  EXPECT_EQ(server.Ended(), std::vector<DWORD>{ERROR_MORE_DATA});
  EXPECT_TRUE(good.Send(u"still here"));
  EXPECT_EQ(good.Receive(), u"still here");
}

TEST_F(HostPipesOfAny, EndsTheReadOfAClientThatVanishes) {
  PipeServer server(*this,
                    [](auto) { return std::string(kPipeBufferBytes - 2, 'a').append(2, '\0'); });
  {
    PipePeer idle(place), deaf(place);
    EXPECT_TRUE(deaf.Send(u"goes before the answer"));
  }
  EXPECT_TRUE(server.AwaitEnded(2));
  EXPECT_THAT(server.Ended(), testing::Each(ERROR_BROKEN_PIPE));
}

// Its writes are complete while the buffer has room; then they wait, and nobody else does.
TEST_F(HostPipesOfAny, LetsNobodyWaitForAClientThatDoesNotRead) {
  std::atomic<int> answered{0};
  PipeServer server(*this, [&](std::string message) {
    if (message.size() > 4) ++answered;
    return message.size() > 4 ? message : std::string("!\0\0\0", 4);
  });
  PipePeer stalled(place), other(place);
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

TEST_F(HostPipesOfAny, ServesHundredsAtOnce) {
  PipeServer server(*this, EchoOf);
  std::vector<PipePeer> clients;
  for (std::size_t i = 0; i < kManyClients; ++i) clients.emplace_back(place);
  for (PipePeer& client : clients) ASSERT_TRUE(client.Send(u"all of us"));
  for (PipePeer& client : clients) ASSERT_EQ(client.Receive(), u"all of us");
  clients.clear();
  EXPECT_TRUE(server.AwaitEnded(kManyClients));
  PipePeer next(place);
  EXPECT_TRUE(next.Send(u"free again"));
  EXPECT_EQ(next.Receive(), u"free again");
}

TEST_F(HostPipesOfAny, WakesForEventsAndQueuedCalls) {
  PipeServer server(*this, EchoOf);
  static std::atomic<std::uintptr_t> called{0};
  called = 0;
  const auto note = [](std::uintptr_t data) { called = called * 10 + data; };
  EXPECT_EQ(pipes.QueueUserAPC(note, server.Thread(), 7), 1u);
  EXPECT_EQ(pipes.QueueUserAPC(note, server.Thread(), 5), 1u);
  for (int i = 0; i < 500 && called < 10; ++i) threads.Sleep(10);
  EXPECT_EQ(called, 75u);

  const HANDLE event = threads.CreateEventW(FALSE, FALSE, "event");
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &event, TRUE, 20, TRUE), WAIT_TIMEOUT);
  EXPECT_EQ(pipes.QueueUserAPC(note, event, 8), 0u);
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
  struct Setter {
    Threads& threads;
    HANDLE event;
  } setter{threads, event};
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& self = *static_cast<Setter*>(parameter);
        self.threads.Sleep(50);
        return static_cast<DWORD>(self.threads.SetEvent(self.event));
      },
      &setter, "setter", nullptr);
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &event, TRUE, kLongMs, TRUE), WAIT_OBJECT_0);
  threads.WaitForSingleObject(thread, kLongMs);
  EXPECT_EQ(pipes.QueueUserAPC(note, thread, 9), 0u);  // it has ended
  threads.CloseHandle(thread);
  EXPECT_EQ(pipes.WaitForMultipleObjectsEx(1, &event, TRUE, 0, FALSE), WAIT_TIMEOUT);
  threads.CloseHandle(event);
}

TEST_F(HostPipesOfAny, TellsWhoIsAtTheOtherEnd) {
  Instance one;
  Listen(one);
  DWORD none = 0;
  EXPECT_FALSE(pipes.GetOverlappedResult(one.pipe, &one.overlapped, &none, FALSE));
  EXPECT_EQ(threads.GetLastError(), ERROR_IO_INCOMPLETE);
  PipePeer client(place);
  AwaitClient(one);
  ULONG process = 0;
  EXPECT_TRUE(pipes.GetNamedPipeClientProcessId(one.pipe, &process));
  EXPECT_EQ(process, static_cast<ULONG>(getpid()));
  Close(one);
  EXPECT_TRUE(client.IsAtEnd());
  EXPECT_FALSE(pipes.CloseHandle(one.pipe));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

// Nothing is read from a subscriber: that it has gone is told by the next write.
TEST_F(HostPipesOfAny, FindsAClientGoneThatIsOnlyWrittenTo) {
  Instance one;
  Listen(one);
  PipePeer client(place);
  AwaitClient(one);
  static DWORD written = 0;
  const auto note = [](DWORD, DWORD bytes, OVERLAPPED*) { written = bytes; };
  OVERLAPPED write;
  EXPECT_TRUE(pipes.WriteFileEx(one.pipe, "!\0\0", 4, &write, note));
  EXPECT_EQ(WaitAlertably(one, kLongMs), WAIT_IO_COMPLETION);
  EXPECT_EQ(written, 4u);
  EXPECT_TRUE(HasOverlappedIoCompleted(write));
  EXPECT_EQ(client.Receive(), u"!");
  client.Vanish();
  EXPECT_EQ(WaitAlertably(one, 300), WAIT_TIMEOUT);
  EXPECT_FALSE(pipes.WriteFileEx(one.pipe, "!\0\0", 4, &write, note));
  EXPECT_EQ(threads.GetLastError(), ERROR_BROKEN_PIPE);
  EXPECT_TRUE(HasOverlappedIoCompleted(write));
  Close(one);
}

// A failure of one routine ends the wait in which it was called, and is the program's to catch.
TEST_F(HostPipesOfAny, LetsTheExceptionOfARoutineOutOfTheWait) {
  Instance one;
  Listen(one);
  PipePeer client(place);
  AwaitClient(one);
  static int calls = 0;
  calls = 0;
  OVERLAPPED first, second;
  const auto fail = [](DWORD, DWORD, OVERLAPPED*) { throw std::runtime_error("of the routine"); };
  const auto count = [](DWORD, DWORD, OVERLAPPED*) { ++calls; };
  EXPECT_TRUE(pipes.WriteFileEx(one.pipe, "!\0\0", 4, &first, fail));
  EXPECT_TRUE(pipes.WriteFileEx(one.pipe, "?\0\0", 4, &second, count));
  EXPECT_THROW(WaitAlertably(one, kLongMs), std::runtime_error);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(WaitAlertably(one, kLongMs), WAIT_IO_COMPLETION);  // the others come
  EXPECT_EQ(calls, 1);
  Close(one);
}

TEST_F(HostPipesOfAny, CallsNoRoutineForAPipeThatIsClosed) {
  Instance one, next;
  Listen(one);
  PipePeer client(place);
  AwaitClient(one);
  static int calls = 0;
  calls = 0;
  const auto count = [](DWORD, DWORD, OVERLAPPED*) { ++calls; };
  OVERLAPPED write, read;
  char request[100];
  EXPECT_TRUE(pipes.WriteFileEx(one.pipe, "!\0\0", 4, &write, count));  // complete, and not told
  EXPECT_TRUE(pipes.ReadFileEx(one.pipe, request, sizeof request, &read, count));  // pending
  EXPECT_FALSE(HasOverlappedIoCompleted(read));
  Close(one);
  EXPECT_TRUE(HasOverlappedIoCompleted(read));
  Listen(next);
  EXPECT_EQ(WaitAlertably(next, 50), WAIT_TIMEOUT);
  EXPECT_EQ(calls, 0);
  // The same memory serves again at once.
  PipePeer other(place);
  AwaitClient(next);
  EXPECT_TRUE(pipes.WriteFileEx(next.pipe, "!\0\0", 4, &write, count));
  EXPECT_EQ(WaitAlertably(next, kLongMs), WAIT_IO_COMPLETION);
  EXPECT_EQ(calls, 1);
  Close(next);
}

// A listener that was given up lives on for a while with its reads pending.
TEST_F(HostPipesOfAny, WritesNothingIntoARecordThatIsFreed) {
  struct Listener {
    HostPipesOfAny& test;
    Instance one;
    HANDLE reading, end;
    char* record = nullptr;
  } listener{*this,
             {},
             threads.CreateEventW(TRUE, FALSE, "reading"),
             threads.CreateEventW(TRUE, FALSE, "end")};
  constexpr std::size_t kSize = sizeof(OVERLAPPED) + kPipeBufferBytes;
  const HANDLE thread = threads.CreateThread(
      [](void* parameter) -> DWORD {
        auto& self = *static_cast<Listener*>(parameter);
        self.test.Listen(self.one);
        self.test.threads.SetEvent(self.reading);
        self.test.AwaitClient(self.one);
        self.record = static_cast<char*>(self.test.pipes.GlobalAlloc(kSize));
        EXPECT_TRUE(self.test.pipes.ReadFileEx(
            self.one.pipe, self.record + sizeof(OVERLAPPED), kPipeBufferBytes,
            reinterpret_cast<OVERLAPPED*>(self.record), [](DWORD, DWORD, OVERLAPPED*) { FAIL(); }));
        self.test.threads.SetEvent(self.reading);
        return self.test.threads.WaitForSingleObject(self.end, kLongMs);
      },
      &listener, "listener", nullptr);
  threads.WaitForSingleObject(listener.reading, kLongMs);
  threads.ResetEvent(listener.reading);
  PipePeer client(place);
  threads.WaitForSingleObject(listener.reading, kLongMs);
  EXPECT_TRUE(pipes.DisconnectNamedPipe(listener.one.pipe));
  Close(listener.one);
  pipes.GlobalFree(listener.record);
  EXPECT_EQ(pipes.OpenRecords(), 0u);  // closing has waited for the read's end
  // The next client's record may lie where that one was.
  auto* const next = static_cast<char*>(pipes.GlobalAlloc(kSize));
  ASSERT_NE(next, nullptr);
  std::memset(next, 'f', kSize);
  client.Send(u"of a client that was cut off");
  threads.Sleep(100);
  EXPECT_EQ(std::string_view(next, kSize).find_first_not_of('f'), std::string_view::npos);
  pipes.GlobalFree(next);
  threads.SetEvent(listener.end);
  EXPECT_EQ(threads.WaitForSingleObject(thread, kLongMs), WAIT_OBJECT_0);
  for (const HANDLE handle : {thread, listener.reading, listener.end}) threads.CloseHandle(handle);
}

TEST_F(HostPipesOfAny, KeepsARecordThatIsFreedWhileAReadIsPending) {
  Instance one;
  Listen(one);
  PipePeer client(place);
  AwaitClient(one);
  auto* const record = static_cast<OVERLAPPED*>(pipes.GlobalAlloc(sizeof(OVERLAPPED) + 100));
  EXPECT_EQ(record->Internal, 0u);
  EXPECT_TRUE(
      pipes.ReadFileEx(one.pipe, record + 1, 100, record, [](DWORD, DWORD, OVERLAPPED*) {}));
  pipes.GlobalFree(record);
  EXPECT_EQ(pipes.OpenRecords(), 1u);
  Close(one);
  EXPECT_EQ(pipes.OpenRecords(), 0u);
  pipes.GlobalFree(&one);  // no record
}

TEST_F(HostPipesOfAny, MakesThePipesDescriptorOfTheProcessesAccount) {
  HANDLE token = nullptr;
  EXPECT_FALSE(pipes.OpenThreadToken(&token));
  EXPECT_EQ(threads.GetLastError(), ERROR_NO_TOKEN);
  ASSERT_TRUE(pipes.OpenProcessToken(&token));
  DWORD size = 0;
  EXPECT_FALSE(pipes.GetTokenUser(token, nullptr, 0, &size));
  EXPECT_EQ(threads.GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  std::vector<BYTE> user(size);
  ASSERT_TRUE(pipes.GetTokenUser(token, user.data(), size, &size));
  std::u16string sid;
  ASSERT_TRUE(pipes.ConvertSidToStringSidW(user.data(), &sid));
  EXPECT_TRUE(sid.starts_with(u"S-1-"));
  EXPECT_TRUE(pipes.CloseToken(token));

  SECURITY_ATTRIBUTES attributes;
  void*& descriptor = attributes.lpSecurityDescriptor;
  const std::u16string text = u"D:(A;;GA;;;" + sid + u")(A;;GWGR;;;AU)S:(ML;;NW;;;S-1-16-0)";
  ASSERT_TRUE(
      pipes.ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), 1, &descriptor));
  const HANDLE pipe = CreatePipe(&attributes);
  EXPECT_NE(pipe, nullptr);
  EXPECT_TRUE(pipes.CloseHandle(pipe));
  pipes.LocalFree(descriptor);
  EXPECT_FALSE(pipes.ConvertStringSecurityDescriptorToSecurityDescriptorW(u"D:(A", 1, &descriptor));
  EXPECT_GE(pipes.GetMajorVersion(), 6u);
}

}  // namespace corvane::test
