// The clients of a world at the program's listeners.

#include <algorithm>

#include "device_story.h"
#include "notify/notification_manager.h"
#include "pipe/named_pipe_listener_notifications_json.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "platform/sim/kernel/sim_session.h"

namespace corvane::test {
namespace {

class SimClientsTest : public DeviceTest {
 protected:
  void SetUp() override {
    World world = TwoNetworks();
    world.clients = {{"tray"}, {"suite", u"PalisadeOptimizer.exe"}};
    Start(world);
  }
  void TearDown() override {
    Stop();
    DeviceTest::TearDown();
  }
  void Serve() {
    m_pRequests.CreateObject();
    m_pRequests->Initialize(u"TRLSPipe", false);
    ASSERT_EQ(m_pRequests->BeginThread(), 0);
    m_pEvents.CreateObject();
    m_pEvents->Initialize(u"TRLSPipe_N", true);
    ASSERT_EQ(m_pEvents->BeginThread(), 0);
    auto& manager = CNotificationManagerSingleton::GetInstance();
    manager.AddProvider(m_pEvents.get());
    ASSERT_EQ(manager.BeginThread(), 0);
  }
  void Stop() {
    if (!m_pRequests) return;
    CNotificationManagerSingleton::GetInstance().Shutdown(1000);
    m_pEvents->Shutdown();
    m_pRequests->Shutdown();
    m_pEvents.reset();
    m_pRequests.reset();
  }
  void Do(const std::string& members) {
    Pc().Devices().Do((R"({"do": "client", )" + members + "}").c_str());
  }
  void Post(const WString& type) {
    auto event = CNotificationEvent::CreateObject();
    event->Set(u"Corvane", u"Test", type, true);
    CNotificationManagerSingleton::GetInstance().QueueNotification(event.get());
    RunFor(2s);
  }
  // Messages that a client has read which hold `part`.
  std::size_t CountRead(const std::string& client, const std::string& part) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(story.clientLines, [&](const std::string& line) {
          return line.starts_with(client + ": ") && line.find(part) != std::string::npos;
        }));
  }
  std::size_t Connected(const char16_t* pipe) {
    return Pc().Kernel().Pipes().CountInstances(pipe) - 1;  // one waits
  }

 private:
  CSmartPointer<CNamedPipeListenerJson> m_pRequests;
  CSmartPointer<CNamedPipeListenerNotificationsJson> m_pEvents;
};

// A request that passes the token's checks is refused for its command alone.
TEST_F(SimClientsTest, AskWithTokensThatPass) {
  Serve();
  for (int i = 0; i < 3; ++i) Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"})");
  Do(R"("client": "suite", "act": "send", "request": {"cmd": "x"})");
  Do(R"("client": "suite", "act": "send", "request": {})");
  Do(R"("client": "suite", "act": "send", "request": {"cmd": "x", "art": "QUJD"})");
  Do(R"("client": "suite", "act": "send", "text": "hello")");
  RunFor(2s);
  EXPECT_EQ(CountRead("tray", "\"code\":6"), 3u);
  EXPECT_EQ(CountRead("suite", "\"code\":6"), 1u);
  EXPECT_EQ(CountRead("suite", "\"code\":5"), 1u);
  EXPECT_EQ(CountRead("suite", "\"code\":1002"), 1u);
  EXPECT_EQ(CountRead("suite", "\"code\":1,"), 1u);
  EXPECT_EQ(Connected(u"TRLSPipe"), 2u) << "one connection each";
}

TEST_F(SimClientsTest, TryAPipeAgainThatNobodyServesYet) {
  Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"})");
  Do(R"("client": "suite", "act": "subscribe")");
  RunFor(3s);
  Serve();
  RunFor(2s);
  EXPECT_EQ(CountRead("tray", "\"code\":6"), 1u);
  EXPECT_EQ(CountRead("suite", "\"code\":0"), 1u);
}

TEST_F(SimClientsTest, GiveUpAfterAWhileAndComeWithTheNextAct) {
  Do(R"("client": "tray", "act": "connect")");
  RunFor(6s);
  Serve();
  RunFor(10s);
  EXPECT_EQ(Connected(u"TRLSPipe"), 0u);
  Do(R"("client": "tray", "act": "connect")");
  RunFor(1s);
  EXPECT_EQ(Connected(u"TRLSPipe"), 1u);
}

TEST_F(SimClientsTest, SubscribeStallReadAndVanish) {
  Serve();
  RunFor(10ms);
  Do(R"("client": "tray", "act": "subscribe")");
  RunFor(1s);
  Post(u"first");
  EXPECT_EQ(CountRead("tray", "\"code\":0"), 1u);
  EXPECT_EQ(CountRead("tray", "\"first\""), 1u);
  Do(R"("client": "tray", "act": "stall")");
  Post(u"second");
  EXPECT_EQ(CountRead("tray", "\"second\""), 0u);
  Do(R"("client": "tray", "act": "read")");
  RunFor(2s);
  EXPECT_EQ(CountRead("tray", "\"second\""), 1u);
  Do(R"("client": "tray", "act": "stall")");
  Do(R"("client": "tray", "act": "vanish")");
  Post(u"third");  // shows that it went
  EXPECT_EQ(Connected(u"TRLSPipe_N"), 0u);
  Do(R"("client": "tray", "act": "subscribe")");
  RunFor(1s);
  Post(u"fourth");
  EXPECT_EQ(CountRead("tray", "\"third\""), 0u);
  EXPECT_EQ(CountRead("tray", "\"fourth\""), 1u) << "it stalls no more";
}

TEST_F(SimClientsTest, RepeatAnActAllDay) {
  Serve();
  Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"}, "every": "10m")");
  RunFor(2s);
  Do(R"("client": "tray", "act": "vanish", "every": "17m")");
  RunFor(60min + 5s);
  EXPECT_EQ(CountRead("tray", "\"code\":6"), 7u);
}

// Its session was another process's.
TEST_F(SimClientsTest, AreAnotherProcessAfterTheirsHasEnded) {
  Serve();
  RunFor(10ms);
  Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"})");
  Do(R"("client": "suite", "act": "connect")");
  RunFor(2s);
  Pc().Kernel().Session().EndProcesses(u"Corvane_ConfigApp.exe");
  RunFor(2s);
  EXPECT_EQ(Connected(u"TRLSPipe"), 1u) << "its pipes broke with it";
  Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"})");
  RunFor(2s);
  EXPECT_EQ(CountRead("tray", "\"code\":6"), 2u);
}

TEST_F(SimClientsTest, OutliveTheServiceAndMeetTheNext) {
  Serve();
  Do(R"("client": "tray", "act": "send", "request": {"cmd": "x"}, "every": "1m")");
  RunFor(10s);
  Stop();
  RunFor(1h);
  Serve();
  RunFor(90s);
  EXPECT_GE(CountRead("tray", "\"code\":6"), 3u);
  EXPECT_EQ(CountRead("tray", "\"code\":1"), 0u);
}

}  // namespace
}  // namespace corvane::test
