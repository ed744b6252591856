#include "platform/sim/kernel/sim_pipes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "support/pc_fixture.h"

namespace corvane::test {

using namespace platform;
using platform::sim::SimPipeClient;

namespace {

constexpr LPCWSTR kPath = u"\\\\.\\pipe\\TRLSPipe";
constexpr DWORD kSize = 1'000'000;

PipeApi& Pipes() { return Os().pipes; }

HANDLE CreatePipe(DWORD maxInstances = PIPE_UNLIMITED_INSTANCES) {
  return Pipes().CreateNamedPipeW(kPath, PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED,
                                  PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
                                  maxInstances, kSize, kSize, 5000, nullptr);
}

// What a completion routine was told, by the order of the calls.
struct Told {
  DWORD error;
  DWORD bytes;
  OVERLAPPED* overlapped;
};
std::vector<Told> g_Told;

void Tell(DWORD error, DWORD bytes, OVERLAPPED* overlapped) {
  g_Told.push_back({error, bytes, overlapped});
}

std::string Bytes(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

}  // namespace

// The server's end is the test itself, on the driving thread.
class SimPipesTest : public KernelTest {
 protected:
  SimPipesTest() {
    g_Told.clear();
    m_Event = Os().threads.CreateEventW(TRUE, FALSE, "connect");
    m_Listen.hEvent = m_Event;
  }
  void TearDown() override {
    for (const HANDLE pipe : m_Open) Pipes().CloseHandle(pipe);
    Os().threads.CloseHandle(m_Event);
    KernelTest::TearDown();
  }

  // An instance with the client at its other end.
  HANDLE Connected(SimPipeClient& client) {
    const HANDLE pipe = m_Open.emplace_back(CreatePipe());
    EXPECT_FALSE(Pipes().ConnectNamedPipe(pipe, &m_Listen));
    EXPECT_EQ(Os().threads.GetLastError(), ERROR_IO_PENDING);
    EXPECT_TRUE(client.Connect(u"TRLSPipe"));
    return pipe;
  }
  DWORD Alert(DWORD milliseconds = 0) {
    Os().threads.ResetEvent(m_Event);
    return Pipes().WaitForMultipleObjectsEx(1, &m_Event, TRUE, milliseconds, TRUE);
  }
  bool Read(HANDLE pipe, OVERLAPPED* overlapped, DWORD size = kSize) {
    m_Buffer.resize(kSize);
    return Pipes().ReadFileEx(pipe, m_Buffer.data(), size, overlapped, Tell);
  }
  bool Write(HANDLE pipe, std::string_view bytes, OVERLAPPED* overlapped) {
    return Pipes().WriteFileEx(pipe, bytes.data(), static_cast<DWORD>(bytes.size()), overlapped,
                               Tell);
  }
  void ExpectTold(DWORD error, std::size_t bytes) {
    ASSERT_FALSE(g_Told.empty());
    EXPECT_EQ(g_Told.front().error, error);
    EXPECT_EQ(g_Told.front().bytes, bytes);
    g_Told.erase(g_Told.begin());
  }

  HANDLE m_Event;
  OVERLAPPED m_Listen, m_Read, m_Write;
  std::string m_Buffer;
  std::list<HANDLE> m_Open;
};

TEST_F(SimPipesTest, AClientIsAnnouncedByTheEventOrByTheCall) {
  SimPipeClient first(kernel.Pipes(), 77), second(kernel.Pipes(), 78);
  EXPECT_FALSE(first.Connect(u"TRLSPipe"));  // nobody serves it
  const HANDLE pipe = m_Open.emplace_back(CreatePipe());
  Os().threads.SetEvent(m_Event);
  EXPECT_FALSE(Pipes().ConnectNamedPipe(pipe, &m_Listen));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_IO_PENDING);
  EXPECT_EQ(Os().threads.WaitForSingleObject(m_Event, 0), WAIT_TIMEOUT);  // reset by the call
  DWORD bytes = 0;
  EXPECT_FALSE(Pipes().GetOverlappedResult(pipe, &m_Listen, &bytes, FALSE));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_IO_INCOMPLETE);

  EXPECT_TRUE(first.Connect(u"trlspipe"));
  EXPECT_EQ(Os().threads.WaitForSingleObject(m_Event, 0), WAIT_OBJECT_0);
  EXPECT_TRUE(Pipes().GetOverlappedResult(pipe, &m_Listen, &bytes, FALSE));
  ULONG id = 0;
  EXPECT_TRUE(Pipes().GetNamedPipeClientProcessId(pipe, &id));
  EXPECT_EQ(id, 77u);
  EXPECT_FALSE(second.Connect(u"TRLSPipe"));  // its one instance has a client

  // One that slips in between, whether it is still there or not.
  for (const bool stays : {true, false}) {
    const HANDLE other = m_Open.emplace_back(CreatePipe());
    EXPECT_TRUE(second.Connect(u"TRLSPipe"));
    if (!stays) second.Vanish();
    EXPECT_FALSE(Pipes().ConnectNamedPipe(other, &m_Listen));
    EXPECT_EQ(Os().threads.GetLastError(), ERROR_PIPE_CONNECTED);
    EXPECT_EQ(Read(other, &m_Read), stays);
  }
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_BROKEN_PIPE);
  EXPECT_EQ(kernel.Pipes().CountInstances(u"TRLSPipe"), 3u);
  EXPECT_EQ(CreatePipe(3), nullptr);
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_PIPE_BUSY);
}

TEST_F(SimPipesTest, MessagesKeepTheirBounds) {
  SimPipeClient client(kernel.Pipes(), 77);
  const HANDLE pipe = Connected(client);
  EXPECT_TRUE(Read(pipe, &m_Read));
  EXPECT_FALSE(HasOverlappedIoCompleted(m_Read));
  EXPECT_EQ(Alert(), WAIT_TIMEOUT);
  EXPECT_TRUE(client.Send(u"one"));
  EXPECT_TRUE(client.Send(u"two"));
  EXPECT_TRUE(client.SendBytes(""));
  EXPECT_TRUE(client.SendBytes("abcdef"));
  EXPECT_TRUE(g_Told.empty());  // only in the alertable wait
  EXPECT_EQ(Alert(INFINITE), WAIT_IO_COMPLETION);
  ExpectTold(ERROR_SUCCESS, 8);
  EXPECT_EQ(m_Buffer.substr(0, 8), Bytes(std::u16string_view(u"one", 4)));

  const auto next = [&](DWORD size, DWORD error, std::size_t bytes) {
    EXPECT_TRUE(Read(pipe, &m_Read, size));
    EXPECT_EQ(Alert(), WAIT_IO_COMPLETION);
    ExpectTold(error, bytes);
  };
  next(kSize, ERROR_SUCCESS, 8);
  next(kSize, ERROR_SUCCESS, 0);
  next(4, ERROR_MORE_DATA, 4);
  next(4, ERROR_SUCCESS, 2);
  EXPECT_EQ(m_Buffer.substr(0, 2), "ef");

  // What it sent before it went is read, and only then its end.
  EXPECT_TRUE(client.Send(u"last"));
  client.Vanish();
  next(kSize, ERROR_SUCCESS, 10);
  EXPECT_FALSE(Read(pipe, &m_Read));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_BROKEN_PIPE);
  EXPECT_FALSE(Write(pipe, "late", &m_Write));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_BROKEN_PIPE);
}

TEST_F(SimPipesTest, AFullBufferHoldsAWriteUntilTheClientReads) {
  SimPipeClient client(kernel.Pipes(), 77);
  const HANDLE pipe = Connected(client);
  client.Stall(true);
  const std::string half(kSize / 2, 'x');
  OVERLAPPED second, third;
  EXPECT_TRUE(Write(pipe, half, &m_Write));
  EXPECT_TRUE(Write(pipe, half, &second));
  EXPECT_TRUE(HasOverlappedIoCompleted(second));  // it fits to the byte
  EXPECT_TRUE(Write(pipe, "y", &third));
  EXPECT_FALSE(HasOverlappedIoCompleted(third));
  EXPECT_EQ(Alert(), WAIT_IO_COMPLETION);
  EXPECT_EQ(g_Told.size(), 2u);
  EXPECT_FALSE(client.Receive());

  client.Stall(false);
  EXPECT_TRUE(HasOverlappedIoCompleted(third));
  EXPECT_EQ(client.Receive()->size(), half.size() / 2);
  EXPECT_EQ(client.Receive()->size(), half.size() / 2);
  EXPECT_EQ(client.Receive(), u"");
  EXPECT_FALSE(client.Receive());

  // One that goes ends what waits for it.
  client.Stall(true);
  g_Told.clear();
  EXPECT_TRUE(Write(pipe, std::string(kSize + 1, 'z'), &second));
  EXPECT_TRUE(Read(pipe, &m_Read));
  client.Vanish();
  EXPECT_EQ(Alert(), WAIT_IO_COMPLETION);
  ASSERT_EQ(g_Told.size(), 3u);  // `third` was still to be told
  EXPECT_EQ(g_Told[1].error, ERROR_BROKEN_PIPE);
  EXPECT_EQ(g_Told[2].error, ERROR_BROKEN_PIPE);
}

TEST_F(SimPipesTest, AClosedInstanceCallsNothingAndBreaksItsClient) {
  SimPipeClient client(kernel.Pipes(), 77);
  const HANDLE pipe = Connected(client);
  EXPECT_TRUE(Write(pipe, "done", &m_Write));  // complete, and its routine still to come
  EXPECT_TRUE(Read(pipe, &m_Read));
  EXPECT_TRUE(Pipes().DisconnectNamedPipe(pipe));
  EXPECT_TRUE(client.IsBroken());
  EXPECT_FALSE(client.Send(u"nobody"));
  EXPECT_EQ(client.Receive()->size(), 2u);  // it had read that
  EXPECT_FALSE(Pipes().DisconnectNamedPipe(pipe));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_PIPE_NOT_CONNECTED);
  EXPECT_TRUE(Pipes().CloseHandle(pipe));
  m_Open.clear();
  EXPECT_EQ(Alert(), WAIT_TIMEOUT);
  EXPECT_TRUE(g_Told.empty());
  EXPECT_FALSE(Pipes().CloseHandle(pipe));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_INVALID_HANDLE);
}

namespace {

// A thread that serves one client, as the program's listener does, until it is told to stop.
struct EchoServer {
  struct Record {
    OVERLAPPED overlapped;
    HANDLE pipe;
    char text[64];
  };

  static void OnRead(DWORD error, DWORD bytes, OVERLAPPED* overlapped) {
    auto* record = reinterpret_cast<Record*>(overlapped);
    const bool answers =
        error == ERROR_SUCCESS &&
        Pipes().WriteFileEx(record->pipe, record->text, bytes, overlapped, OnWritten);
    if (!answers) End(record);
  }
  static void OnWritten(DWORD error, DWORD, OVERLAPPED* overlapped) {
    auto* record = reinterpret_cast<Record*>(overlapped);
    const bool reads =
        error == ERROR_SUCCESS &&
        Pipes().ReadFileEx(record->pipe, record->text, sizeof record->text, overlapped, OnRead);
    if (!reads) End(record);
  }
  static void End(Record* record) {
    Pipes().CloseHandle(record->pipe);
    Pipes().GlobalFree(record);
    g_pRecord = nullptr;
    --g_Records;
  }
  static DWORD Run(void* self) {
    auto& server = *static_cast<EchoServer*>(self);
    auto* record = static_cast<Record*>(Pipes().GlobalAlloc(sizeof(Record)));
    if (!record) return 0;
    ++g_Records;
    g_pRecord = record;
    record->pipe = server.pipe;
    OnWritten(ERROR_SUCCESS, 0, &record->overlapped);
    for (;;) {
      const DWORD result = Pipes().WaitForMultipleObjectsEx(1, &server.stop, TRUE, INFINITE, TRUE);
      if (result != WAIT_IO_COMPLETION) return result;
      ++server.alerts;
    }
  }

  HANDLE pipe;
  HANDLE stop;
  int alerts = 0;
  static inline int g_Records = 0;
  static inline Record* g_pRecord = nullptr;  // its owner frees what the thread has left
};

}  // namespace

class SimPipeServerTest : public SimPipesTest {
 protected:
  SimPipeServerTest() : m_Client(kernel.Pipes(), 77) {
    EchoServer::g_Records = 0;
    EchoServer::g_pRecord = nullptr;
    m_Server.pipe = Connected(m_Client);
    m_Server.stop = Os().threads.CreateEventW(TRUE, FALSE, "stop");
    m_Thread = Os().threads.CreateThread(EchoServer::Run, &m_Server, "server", nullptr);
    RunFor(1ms);
  }
  void TearDown() override {
    if (EchoServer::g_pRecord) Pipes().GlobalFree(EchoServer::g_pRecord);
    Os().threads.CloseHandle(m_Thread);
    Os().threads.CloseHandle(m_Server.stop);
    SimPipesTest::TearDown();
  }

  SimPipeClient m_Client;
  EchoServer m_Server;
  HANDLE m_Thread;
};

TEST_F(SimPipeServerTest, ServesOnItsOwnThreadInTheAlertableWaitOnly) {
  m_Client.Send(u"hello");
  EXPECT_FALSE(m_Client.Receive());
  RunFor(1ms);
  EXPECT_EQ(m_Client.Receive(), u"hello");
  m_Client.Send(u"a");
  m_Client.Send(u"b");
  RunFor(1ms);
  EXPECT_EQ(m_Client.Receive(), u"a");
  EXPECT_EQ(m_Client.Receive(), u"b");
  EXPECT_EQ(EchoServer::g_Records, 1);
  m_Client.Vanish();
  RunFor(1ms);
  EXPECT_EQ(EchoServer::g_Records, 0);
  m_Open.clear();
  Os().threads.SetEvent(m_Server.stop);
  EXPECT_EQ(Os().threads.WaitForSingleObject(m_Thread, 1000), WAIT_OBJECT_0);
}

TEST_F(SimPipeServerTest, CallsQueuedForAThreadRunInOrderAndEndWithIt) {
  std::vector<std::uintptr_t> called;
  static std::vector<std::uintptr_t>* s_pCalled;
  s_pCalled = &called;
  const PAPCFUNC note = [](std::uintptr_t data) { s_pCalled->push_back(data); };
  for (const std::uintptr_t data : {1u, 2u, 3u})
    EXPECT_NE(Pipes().QueueUserAPC(note, m_Thread, data), 0u);
  RunFor(1ms);
  EXPECT_EQ(called, (std::vector<std::uintptr_t>{1, 2, 3}));
  EXPECT_EQ(m_Server.alerts, 1);
  Os().threads.SetEvent(m_Server.stop);
  RunFor(1ms);
  EXPECT_EQ(Pipes().QueueUserAPC(note, m_Thread, 4), 0u);
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_GEN_FAILURE);
  EXPECT_EQ(Pipes().QueueUserAPC(note, m_Server.stop, 4), 0u);
}

// The owner of a thread that was given up closes and frees what that had begun.
TEST_F(SimPipeServerTest, AbandonmentEndsTheWaitAndForgetsWhatWasBegun) {
  Os().threads.TerminateThread(m_Thread, 1);
  m_Client.Send(u"hello");  // comes between giving up and unwinding
  EXPECT_TRUE(Os().threads.AwaitAbandoned(1000));
  EXPECT_EQ(EchoServer::g_Records, 1);
  EXPECT_FALSE(m_Client.Receive());
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 1u);
  m_Client.Send(u"written into memory that nobody owns, were it not forgotten");
  Pipes().CloseHandle(m_Server.pipe);
  m_Open.clear();
  EXPECT_TRUE(m_Client.IsBroken());
}

TEST_F(SimPipesTest, ARecordIsKeptWhileItsOperationIsPending) {
  SimPipeClient client(kernel.Pipes(), 77);
  const HANDLE pipe = Connected(client);
  auto* record = static_cast<EchoServer::Record*>(Pipes().GlobalAlloc(sizeof(EchoServer::Record)));
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->text[63], 0);
  EXPECT_TRUE(Pipes().ReadFileEx(pipe, record->text, 64, &record->overlapped, Tell));
  Pipes().GlobalFree(record);
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 1u);
  client.Send(u"into the record");
  Pipes().CloseHandle(pipe);
  m_Open.clear();
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u);
}

TEST_F(SimPipesTest, EveryOperationFailsAsItIsTold) {
  SimPipeClient client(kernel.Pipes(), 77);
  const HANDLE pipe = Connected(client);
  DWORD size = 0;
  ULONG id = 0;
  HANDLE token = nullptr;
  std::u16string sid;
  void* descriptor = nullptr;
  const auto fails = [&](const char* operation, auto&& call) {
    kernel.Faults().FailCall(operation, 1, 1234);
    Os().threads.SetLastError(0);
    EXPECT_FALSE(call()) << operation;
    EXPECT_EQ(Os().threads.GetLastError(), 1234u) << operation;
  };
  fails("CreateNamedPipeW", [&] { return CreatePipe() != nullptr; });
  fails("ConnectNamedPipe", [&] { return Pipes().ConnectNamedPipe(pipe, &m_Listen); });
  fails("GetOverlappedResult",
        [&] { return Pipes().GetOverlappedResult(pipe, &m_Listen, &size, FALSE); });
  fails("ReadFileEx", [&] { return Read(pipe, &m_Read); });
  fails("WriteFileEx", [&] { return Write(pipe, "x", &m_Write); });
  fails("DisconnectNamedPipe", [&] { return Pipes().DisconnectNamedPipe(pipe); });
  fails("CloseHandle", [&] { return Pipes().CloseHandle(pipe); });
  fails("GetNamedPipeClientProcessId",
        [&] { return Pipes().GetNamedPipeClientProcessId(pipe, &id); });
  fails("WaitForMultipleObjectsEx", [&] { return Alert() != WAIT_FAILED; });
  fails("QueueUserAPC", [&] { return Pipes().QueueUserAPC(nullptr, nullptr, 0); });
  fails("GlobalAlloc", [&] { return Pipes().GlobalAlloc(8) != nullptr; });
  fails("OpenThreadToken", [&] { return Pipes().OpenThreadToken(&token); });
  fails("OpenProcessToken", [&] { return Pipes().OpenProcessToken(&token); });
  fails("CloseToken", [&] { return Pipes().CloseToken(token); });
  fails("GetTokenUser", [&] { return Pipes().GetTokenUser(token, nullptr, 0, &size); });
  fails("ConvertSidToStringSidW", [&] { return Pipes().ConvertSidToStringSidW("", &sid); });
  fails("ConvertStringSecurityDescriptorToSecurityDescriptorW", [&] {
    return Pipes().ConvertStringSecurityDescriptorToSecurityDescriptorW(u"D:(A;;GA;;;AU)", 1,
                                                                        &descriptor);
  });
  fails("GetMajorVersion", [&] { return Pipes().GetMajorVersion(); });
  EXPECT_FALSE(client.IsBroken());
}

TEST_F(SimPipesTest, MakesTheSecurityOfThePipeFromTheAccount) {
  HANDLE token = nullptr;
  EXPECT_FALSE(Pipes().OpenThreadToken(&token));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_NO_TOKEN);
  ASSERT_TRUE(Pipes().OpenProcessToken(&token));
  DWORD size = 0;
  EXPECT_FALSE(Pipes().GetTokenUser(token, nullptr, 0, &size));
  EXPECT_EQ(Os().threads.GetLastError(), ERROR_INSUFFICIENT_BUFFER);
  std::vector<std::uint8_t> user(size);
  ASSERT_TRUE(Pipes().GetTokenUser(token, user.data(), size, &size));
  std::u16string sid;
  ASSERT_TRUE(Pipes().ConvertSidToStringSidW(user.data(), &sid));
  EXPECT_EQ(sid, u"S-1-5-18");
  EXPECT_TRUE(Pipes().CloseToken(token));
  EXPECT_FALSE(Pipes().GetTokenUser(token, user.data(), size, &size));

  const auto converts = [](LPCWSTR sddl, void** descriptor) {
    return Pipes().ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, 1, descriptor);
  };
  void* descriptor = nullptr;
  for (const LPCWSTR bad : {u"", u"D:", u"D:(A;;GA;;;)", u"D:(A;;GA;;AU)", u"D:(A;;GA;;;AU",
                            u"D:(A;;GA;;;AU)S:", u"D:(A;;GA;;;AU)X", u"(A;;GA;;;AU)"}) {
    EXPECT_FALSE(converts(bad, &descriptor)) << Narrow(bad);
  }
  const LPCWSTR good = u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)S:(ML;;NW;;;S-1-16-0)";
  ASSERT_TRUE(converts(good, &descriptor));
  const SECURITY_ATTRIBUTES attributes{.lpSecurityDescriptor = descriptor, .bInheritHandle = TRUE};
  m_Open.push_back(Pipes().CreateNamedPipeW(kPath, 0, 0, 255, kSize, kSize, 5000, &attributes));
  EXPECT_EQ(kernel.Pipes().SecurityOf(u"TRLSPipe"), good);
  Pipes().LocalFree(descriptor);
}

}  // namespace corvane::test
