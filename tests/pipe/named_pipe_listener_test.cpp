// The transport: clients, messages and what goes wrong with them.

#include "pipe/named_pipe_listener.h"

#include "pipe/listener_fixture.h"
#include "pipe/plain_crypto.h"

namespace corvane::test {
namespace {

using platform::ERROR_GEN_FAILURE;

TEST_F(ListenerTest, ManyClientsAreServedAtOnceEachMessageByItself) {
  Serve();
  std::vector<Client*> served;
  for (int i = 0; i < 40; ++i) served.push_back(&Connect());
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < served.size(); ++i) {
      const std::string text = "client " + std::to_string(i);
      EXPECT_EQ(Ask(*served[i], text), Echo(text));
    }
  }
  served[7]->Vanish();
  RunFor(10ms);
  EXPECT_TRUE(
      HasLog("CNamedPipeListener::CompletedReadRoutine() NOT calling GetAnswerToRequest(), "
             "dwErr=109, cbBytesRead=0"));
  EXPECT_EQ(Ask(*served[8], "still"), Echo("still"));
  EXPECT_EQ(kernel.Pipes().CountInstances(u"TRLSPipe"), 40u) << "39 clients and one that waits";
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 39u);
}

TEST_F(ListenerTest, MessagesThatComeTogetherAreAnsweredInOrder) {
  Serve();
  Client& client = Connect();
  for (const char16_t* text : {u"1", u"2", u"3"}) client.Send(text);
  RunFor(10ms);
  for (const char* text : {"1", "2", "3"}) EXPECT_EQ(Receive(client), Echo(text));
}

TEST_F(ListenerTest, WaitsAndMessagesShowOnRequest) {
  Serve();
  Client& client = Connect();
  Ask(client, "hidden");
  EXPECT_FALSE(HasLog("hidden"));
  EXPECT_FALSE(HasLog("wait: "));
  listener->SetTrace(true, true);
  Ask(client, "shown");
  EXPECT_TRUE(HasLog("CNamedPipeListener: [shown] -> [ECHO Server Got:"));
  EXPECT_TRUE(HasLog("CNamedPipeListener:StartServer() - wait: 192"));
}

// The buffers are cleared as far as they were used.
TEST_F(ListenerTest, AShortMessageBehindALongOneStandsAlone) {
  Serve();
  Client& client = Connect();
  EXPECT_EQ(Ask(client, std::string(3000, 'x')), Echo(std::string(3000, 'x')));
  client.SendBytes(std::string("a\0b\0", 4));  // without its NUL
  RunFor(10ms);
  EXPECT_EQ(Receive(client), Echo("ab"));
  client.SendBytes(std::string("a\0b", 3));  // half a character
  RunFor(10ms);
  EXPECT_EQ(Receive(client), Echo("ab"));
  client.SendBytes(std::string("c\0\0\0d\0\0\0", 8));
  RunFor(10ms);
  EXPECT_EQ(Receive(client), Echo("c")) << "the message ends at its NUL";
}

TEST_F(ListenerTest, TheLongestMessageIsAnsweredAndTheReplyIsCut) {
  Serve();
  Client& client = Connect();
  client.Send(WString(499'999, u'y'));
  RunFor(10ms);
  const auto reply = client.Receive();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->size(), 499'999u);
  EXPECT_TRUE(reply->starts_with(u"ECHO Server Got:\r\nyyy"));
  EXPECT_EQ(reply->back(), u'y') << "the tail is cut off";
  client.SendBytes(std::string(1'000'000, 'z'));  // no NUL at all
  RunFor(10ms);
  EXPECT_EQ(client.Receive()->size(), 499'999u);
  client.Send(WString(500'000, u'y'));
  RunFor(10ms);
  EXPECT_TRUE(client.IsBroken()) << "more than a message";
  EXPECT_TRUE(HasLog("dwErr=234, cbBytesRead=1000000"));
}

TEST_F(ListenerTest, AnEmptyMessageClosesItsClient) {
  Serve();
  Client& client = Connect();
  client.SendBytes("");
  RunFor(10ms);
  EXPECT_TRUE(client.IsBroken());
  EXPECT_EQ(Ask(Connect(), "next"), Echo("next"));
}

// Its buffer takes one reply of a megabyte; the others wait with it, not the other clients.
TEST_F(ListenerTest, AClientThatReadsNothingHoldsUpNobody) {
  Serve();
  Client& stalled = Connect();
  stalled.Stall(true);
  for (int i = 0; i < 4; ++i) stalled.Send(WString(400'000, u'x'));
  Client& other = Connect();
  EXPECT_EQ(Ask(other, "hello"), Echo("hello"));
  stalled.Stall(false);
  RunFor(100ms);
  int replies = 0;
  while (stalled.Receive()) ++replies;
  EXPECT_EQ(replies, 4);
}

// Between the making of an instance and the wait for its client.
TEST_F(ListenerTest, AClientThatSlipsInIsServed) {
  Serve();
  Connect();
  kernel.Faults().FailCall("ConnectNamedPipe", 1, platform::ERROR_PIPE_CONNECTED);
  // The instance that the failed call leaves behind has no client; it counts as one that has, and
  // the read on it shows that it has none.
  Connect();
  EXPECT_TRUE(HasLog("CNamedPipeListener:ConnectToNewClient() - ERROR_PIPE_CONNECTED"));
  EXPECT_EQ(Ask(Connect(), "after"), Echo("after"));
}

TEST_F(ListenerTest, FalseSignalsAreForgivenTwentyTimes) {
  Serve();
  for (int i = 1; i <= 20; ++i) {
    kernel.Faults().FailCall("GetOverlappedResult", static_cast<std::uint64_t>(i),
                             platform::ERROR_IO_INCOMPLETE);
  }
  EXPECT_EQ(Ask(Connect(), "late"), Echo("late"));
  EXPECT_TRUE(
      HasLog("GetOverlappedResult() failed[ERROR_IO_INCOMPLETE]: 996, "
             "falseSignalCounter=20, go back and wait !!!"));
  EXPECT_FALSE(HasLog("___FORCE EVENT RESET___"));
  for (int i = 1; i <= 21; ++i) {
    kernel.Faults().FailCall("GetOverlappedResult", static_cast<std::uint64_t>(i),
                             platform::ERROR_IO_INCOMPLETE);
  }
  Connect();
  EXPECT_TRUE(
      HasLog("CNamedPipeListener:StartServer: [ERROR_IO_INCOMPLETE]: ___FORCE EVENT "
             "RESET___"));
  EXPECT_TRUE(listener->IsRunning());
}

TEST_F(ListenerTest, AFailureOfOneClientIsTheEndOfThatClient) {
  struct Case {
    const char* operation;
    bool whileConnecting;
    const char* line;
  };
  const Case cases[] = {
      {"ReadFileEx", true, ""},
      {"ReadFileEx", false, ""},
      {"WriteFileEx", false, "CompletedReadRoutine() GetAnswerToRequest() returned 0 [FAILED!]"}};
  Serve();
  for (const Case& one : cases) {
    for (const platform::DWORD code : {ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
      kernel.Faults().Clear();
      if (one.whileConnecting) kernel.Faults().FailCall(one.operation, 1, code);
      Client& client = Connect();
      if (!one.whileConnecting) kernel.Faults().FailCall(one.operation, 1, code);
      client.Send(u"hello");
      RunFor(10ms);
      EXPECT_TRUE(client.IsBroken()) << one.operation << code;
      EXPECT_TRUE(HasLog(one.line));
      EXPECT_EQ(Ask(Connect(), "next"), Echo("next")) << one.operation << code;
    }
  }
}

// What it closes with may fail, too.
TEST_F(ListenerTest, AClientIsForgottenThoughDisconnectingFails) {
  Serve();
  for (const platform::DWORD code : {ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
    Client& client = Connect();
    kernel.Faults().FailCall("DisconnectNamedPipe", 1, code);
    client.Vanish();
    RunFor(10ms);
    EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u);
  }
  EXPECT_TRUE(HasLog("CNamedPipeListener:DisconnectAndClose() - DisconnectNamedPipe() failed: 31"));
  CNamedPipeListener::DisconnectAndClose(nullptr);
  EXPECT_TRUE(HasLog("CNamedPipeListener:DisconnectAndClose() - lpPipeInst is NULL!"));
}

TEST_F(ListenerTest, WhatCannotBeGivenBackCostsNobodyElse) {
  constexpr std::uintptr_t kFirstHandle = 0x900000, kHandles = 0x1000;
  for (const char* operation : {"CloseHandle", "GlobalFree", "CloseToken", "LocalFree"}) {
    for (const platform::DWORD code : {ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
      Serve();
      Client& leaving = Connect();
      Client& staying = Connect();
      const auto before = kernel.Faults().Injected();
      kernel.Faults().FailCall(operation, 1, code);
      leaving.Vanish();
      RunFor(10ms);
      EXPECT_EQ(Ask(Connect(), "next"), Echo("next")) << operation << code;
      EXPECT_EQ(Ask(Connect(), "and next"), Echo("and next")) << operation << code;
      EXPECT_EQ(kernel.Faults().Injected(), before + 1) << operation;
      EXPECT_EQ(Ask(staying, "still"), Echo("still")) << operation << code;
      listener->Shutdown();
      clients.clear();
      EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u) << operation << code;
    }
  }
  // What the platform would not take then.
  for (auto handle = kFirstHandle; handle < kFirstHandle + kHandles; handle += 4) {
    Os().pipes.CloseHandle(reinterpret_cast<platform::HANDLE>(handle));
    Os().pipes.CloseToken(reinterpret_cast<platform::HANDLE>(handle));
  }
}

TEST_F(ListenerTest, WhatItCannotLiveWithoutEndsItsThread) {
  struct Case {
    const char* operation;
    const char* line;
    const char* thrown;
  };
  const Case cases[] = {
      {"GetOverlappedResult", "CNamedPipeListener:StartServer: GetOverlappedResult() failed: 31",
       "CNamedPipeListener::StartServer: GetOverlappedResult() failed 31"},
      {"GlobalAlloc", "CNamedPipeListener:StartServer() - GlobalAlloc failed: 31",
       "CNamedPipeListener::StartServer: GlobalAlloc failed 31"},
      {"WaitForMultipleObjectsEx",
       "CNamedPipeListener:StartServer() - WaitForSingleObjectEx failed: 31",
       "CNamedPipeListener::StartServer: WaitForSingleObjectEx failed 31"}};
  for (const Case& one : cases) {
    Serve();
    Client& client = Connect();
    kernel.Faults().FailCall(one.operation, 1, ERROR_GEN_FAILURE);
    Connect();
    EXPECT_FALSE(listener->IsRunning()) << one.operation;
    EXPECT_TRUE(HasLog(one.line));
    EXPECT_TRUE(HasLog("CNamedPipeListener::RunThreadLoop: Exception: " + std::string(one.thrown)));
    EXPECT_FALSE(client.IsBroken()) << "its record stays until the stop";
    listener->Shutdown();
    EXPECT_TRUE(client.IsBroken());
    kernel.Faults().Clear();
  }
}

TEST_F(ListenerTest, WithoutAnInstanceNobodyConnectsAndTheOthersGoOn) {
  for (const char* operation :
       {"CreateNamedPipeW", "OpenThreadToken", "OpenProcessToken", "GetTokenUser",
        "ConvertSidToStringSidW", "ConvertStringSecurityDescriptorToSecurityDescriptorW"}) {
    Serve();
    Client& client = Connect();
    kernel.Faults().FailCall(operation, 1, ERROR_GEN_FAILURE);
    Connect();
    EXPECT_TRUE(
        HasLog("CNamedPipeListener:CreateAndConnectInstance() - CreateNamedPipe() failed: "))
        << operation;
    EXPECT_EQ(Ask(client, "hello"), Echo("hello")) << operation;
    Client late(kernel.Pipes(), pid);
    EXPECT_FALSE(late.Connect(u"TRLSPipe")) << operation;
    listener->Shutdown();
    clients.clear();
    kernel.Faults().Clear();
  }
}

TEST_F(ListenerTest, AConnectThatFailsLeavesTheListenerWaiting) {
  Serve();
  Client& client = Connect();
  kernel.Faults().FailCall("ConnectNamedPipe", 1, ERROR_GEN_FAILURE);
  Connect();
  EXPECT_TRUE(HasLog("CNamedPipeListener:ConnectToNewClient() - ConnectNamedPipe() failed: 31"));
  EXPECT_EQ(Ask(client, "hello"), Echo("hello"));
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 2u) << "no record without a client";
}

TEST_F(ListenerTest, ThePipeIsOpenToUsersAndOnTheListOnce) {
  constexpr char16_t kKey[] = u"SYSTEM\\CurrentControlSet\\Services\\lanmanserver\\parameters";
  const auto list = [&] {
    platform::HKEY key = nullptr;
    Os().registry.RegCreateKeyExW(platform::HKEY_LOCAL_MACHINE, kKey, platform::KEY_ALL_ACCESS,
                                  &key);
    WString text(100, u'\0');
    platform::DWORD type = 0, size = 200;
    if (Os().registry.RegQueryValueExW(key, u"NullSessionPipes", &type,
                                       reinterpret_cast<platform::BYTE*>(text.data()),
                                       &size) != 0) {
      size = 0;
    }
    Os().registry.RegCloseKey(key);
    text.resize(size / 2);
    return text;
  };
  using namespace std::string_view_literals;
  Serve();
  EXPECT_TRUE(list().empty()) << "a list that is not there is not made";
  EXPECT_EQ(kernel.Pipes().SecurityOf(u"TRLSPipe"),
            u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)S:(ML;;NW;;;S-1-16-0)");
  kernel.Faults().FailCall("GetMajorVersion", 1, ERROR_GEN_FAILURE);
  Connect();
  EXPECT_EQ(kernel.Pipes().SecurityOf(u"TRLSPipe"), u"D:(A;;GA;;;S-1-5-18)(A;;GWGR;;;AU)")
      << "a system of no known version has no integrity levels";
  platform::HKEY key = nullptr;
  Os().registry.RegCreateKeyExW(platform::HKEY_LOCAL_MACHINE, kKey, platform::KEY_ALL_ACCESS, &key);
  constexpr WStringView kOld = u"netlogon\0\0"sv;
  Os().registry.RegSetValueExW(key, u"NullSessionPipes", platform::REG_MULTI_SZ,
                               reinterpret_cast<const platform::BYTE*>(kOld.data()),
                               static_cast<platform::DWORD>(kOld.size() * 2));
  Os().registry.RegCloseKey(key);
  Connect();
  Connect();
  EXPECT_EQ(list(), u"netlogon\0TRLSPipe\0\0"sv);
  listener->Shutdown();
  Serve();
  EXPECT_EQ(list(), u"netlogon\0TRLSPipe\0\0"sv);
  for (const char* operation : {"RegCreateKeyExW", "RegQueryValueExW", "RegSetValueExW"}) {
    kernel.Faults().FailCall(operation, 1, ERROR_GEN_FAILURE);
    EXPECT_EQ(Ask(Connect(), "hello"), Echo("hello")) << operation;
  }
}

// Nothing wakes a listener but a client.
TEST_F(ListenerTest, TheStopTakesItsTimeAndLeavesNothing) {
  Serve();
  std::vector<Client*> served;
  for (int i = 0; i < 5; ++i) served.push_back(&Connect());
  served[0]->Stall(true);
  served[0]->Send(WString(400'000, u'x'));
  served[0]->Send(WString(400'000, u'x'));
  RunFor(10ms);
  const auto before = kernel.Now();
  listener->Shutdown();
  EXPECT_GE(kernel.Now() - before, 2000ms);
  EXPECT_LT(kernel.Now() - before, 3100ms);
  EXPECT_TRUE(HasLog("CNamedPipeListener::Shutdown:[TRLSPipe] m_mapPipeInstanceCtxs.size() = 5"));
  for (const Client* client : served) EXPECT_TRUE(client->IsBroken());
  EXPECT_EQ(kernel.Pipes().OpenHandles(), 0u);
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u);
}

// Throws what no answer should.
class FailingListener : public SmartObjEx<FailingListener, CNamedPipeListener> {
 public:
  WString RespondToPipeMessage(WStringView request, PipeInstanceCtx&) override {
    if (request == u"fault") throw platform::PlatformFault{0xC0000005};
    throw std::runtime_error("no memory");
  }
};

TEST_F(ListenerTest, AnAnswerThatThrowsCostsItsClientAlone) {
  Serve<FailingListener>();
  for (const char16_t* text : {u"fault", u"other"}) {
    Client& client = Connect();
    client.Send(text);
    RunFor(10ms);
    EXPECT_TRUE(client.IsBroken());
  }
  EXPECT_TRUE(HasLog("CNamedPipeListener::Answer: std:exception: no memory"));
  EXPECT_TRUE(listener->IsRunning());
}

// The lock of the configuration keeps the thread inside its answer: the record must outlive it.
TEST_F(ListenerTest, ARecordOutlivesAThreadThatIsStuckInItsAnswer) {
  Serve<CNamedPipeListenerJson>();
  Client& client = Connect();
  CCritSecLock lock(CGlobalConfigContainer::GetInstance().GetLock());
  client.Send(u"{}");
  RunFor(10ms);
  listener->Shutdown();
  listener.reset();
  EXPECT_TRUE(client.IsBroken());
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 1u);
  lock.Leave();
  RunFor(100ms);
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 0u) << "the thread has let it go";
}

// ---- the request pipe

TEST_F(ListenerTest, ARequestIsAnsweredOverThePipe) {
  Serve<CNamedPipeListenerJson>();
  Client& client = Connect();
  const std::string request = Request(R"("cmd":"Nonsense")");
  EXPECT_EQ(Ask(client, request).find(R"({ "status":"error", "code":6, "request":"{\"art\":)"), 0u);
  EXPECT_EQ(Ask(client, "{}"), R"({ "status":"error", "code":1000 })");
  EXPECT_EQ(Ask(client, "{"), R"({ "status":"error", "code":1, "request":"{" })");
  EXPECT_EQ(Ask(client, R"({"art":"QUJD"})"), R"({ "status":"error", "code":1002 })");
  EXPECT_FALSE(client.IsBroken()) << "a refused client may try again";
}

// A token is good on the pipe of its process only, where the platform tells whose it is.
TEST_F(ListenerTest, NobodyGoesByAnothersProcess) {
  Serve<CNamedPipeListenerJson>();
  Client thief(kernel.Pipes(), kernel.Session().StartProcess(u"NudgeDialog.exe"));
  ASSERT_TRUE(thief.Connect(u"TRLSPipe"));
  RunFor(10ms);
  EXPECT_EQ(Ask(thief, Request(R"("cmd":"Nonsense")")), R"({ "status":"error", "code":1005 })");
  kernel.Faults().FailCall("GetNamedPipeClientProcessId", 1, platform::ERROR_NOT_SUPPORTED);
  EXPECT_NE(Ask(thief, Request(R"("cmd":"Nonsense")")).find("\"code\":6"), std::string::npos)
      << "a platform that can't tell";
}

TEST_F(ListenerTest, WithoutItsKeyNoTokenCanBeRead) {
  struct Case {
    const char* operation;
    std::uint64_t call;
    const char* line;
  };
  const Case cases[] = {
      {"ReadClientKey", 1, "PrepDec: Failed DCPK. Error0x0000001f"},
      {"CryptStringToBinaryA", 1, "PrepDec: Failed to convert BASE64 private key. Error 0x"},
      {"CryptStringToBinaryA", 2, "PrepDec: Failed to convert BASE64 private key. Error 0x"},
      {"CryptDecodeObjectEx", 1, "PrepDec: Failed to initial-parse ASN binary. Error 0x"},
      {"CryptDecodeObjectEx", 2, "PrepDec: Failed to parse ASN binary. Error 0x"},
      {"BCryptOpenAlgorithmProvider", 1, "PrepDec: BCryptOpenAlgorithmProvider Failed. Error 0x"},
      {"BCryptImportKeyPair", 1, "PrepDec: BCryptImportKeyPair Failed. Error 0x"}};
  for (const Case& one : cases) {
    kernel.Faults().FailCall(one.operation, one.call, ERROR_GEN_FAILURE);
    Serve<CNamedPipeListenerJson>();
    EXPECT_EQ(Ask(Connect(), Request(R"("cmd":"x")")), R"({ "status":"error", "code":1002 })")
        << one.operation;
    EXPECT_TRUE(HasLog(std::string("CAPISessionSecuritySingleton::") + one.line)) << one.operation;
    listener->Shutdown();
    listener.reset();
    kernel.Faults().Clear();
    singletons::DropAll();
  }
}

TEST_F(ListenerTest, ABlockThatCannotBeDecryptedIsNoToken) {
  Serve<CNamedPipeListenerJson>();
  Client& client = Connect();
  for (const std::uint64_t call : {1u, 2u}) {
    for (const platform::DWORD code : {ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
      kernel.Faults().FailCall("BCryptDecrypt", call, code);
      EXPECT_EQ(Ask(client, Request(R"("cmd":"x")")), R"({ "status":"error", "code":1002 })");
      kernel.Faults().Clear();
    }
  }
  EXPECT_NE(Ask(client, Request(R"("cmd":"x")")).find("\"code\":6"), std::string::npos);
  EXPECT_EQ(Ask(client, R"({"art":")" + std::string(344, 'A') + R"("})"),
            R"({ "status":"error", "code":1002 })")
      << "bad padding";
}

// Refuses to close what it has opened.
class StubbornCrypto : public PlainCrypto {
 public:
  platform::NTSTATUS BCryptDestroyKey(platform::BCRYPT_KEY_HANDLE) override {
    calls += "key ";
    return -1;
  }
  platform::NTSTATUS BCryptCloseAlgorithmProvider(platform::BCRYPT_ALG_HANDLE) override {
    calls += "algorithm ";
    return -1;
  }
  std::string calls;
};

TEST_F(ListenerTest, KeyAndAlgorithmAreClosedOnceWhateverComesOfIt) {
  auto& crypto = Install<StubbornCrypto>();
  CAPISessionSecuritySingleton::Instance();
  singletons::DropAll();
  EXPECT_EQ(crypto.calls, "key algorithm ");
}

}  // namespace
}  // namespace corvane::test
