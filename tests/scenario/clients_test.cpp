// Client programs at the pipes of the running service.

#include <memory>

#include "foundation/log_lines.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "scenario/service_fixture.h"
#include "settings/global_config_container.h"
#include "store/base64_text.h"
#include "web/statistics_post.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {

using platform::sim::SimCrypto;
using platform::sim::SimPipeClient;

// A companion program: it asks on one pipe and listens on the other.
class Companion {
 public:
  explicit Companion(platform::sim::SimulatedPc& pc)
      : m_Pid(pc.Kernel().Session().StartProcess(u"corvane-client")),
        asks(pc.Kernel().Pipes(), m_Pid),
        hears(pc.Kernel().Pipes(), m_Pid) {}

  bool Connect() { return asks.Connect(u"TRLSPipe"); }
  bool Subscribe() { return hears.Connect(u"TRLSPipe_N") && hears.Send(uR"({"cmd":"Subscribe"})"); }
  // With a token of its own.
  void Send(const std::string& members) {
    const std::string token = "companion " + std::to_string(m_Pid) + "," + std::to_string(m_Pid) +
                              "," + std::to_string(++m_Nonce) + ",test";
    asks.Send(Utf8ToWide("{\"art\":\"" + SimCrypto::EncryptToken(token) + "\"," + members + "}"));
  }
  // What has come since the last call.
  std::string Reply() {
    const auto text = asks.Receive();
    return text ? WideToUtf8(*text) : "(none)";
  }
  std::string Events() {
    std::string all;
    while (const auto text = hears.Receive()) all += WideToUtf8(*text) + "\n";
    return all;
  }

 private:
  platform::DWORD m_Pid;
  int m_Nonce = 0;

 public:
  SimPipeClient asks;
  SimPipeClient hears;
};

class ClientsScenario : public ServiceTest {
 protected:
  // Starts the service and a companion that is connected to both pipes.
  void StartWithCompanion(const WorldBuilder& world) {
    Start(world);
    RunUntil(10'000);
    companion = std::make_unique<Companion>(Pc());
    ASSERT_TRUE(companion->Connect());
    ASSERT_TRUE(companion->Subscribe());
    RunFor(20s);
    companion->Events();
  }
  void TearDown() override {
    companion.reset();
    ServiceTest::TearDown();
  }
  std::string Ask(const std::string& members) {
    companion->Send(members);
    RunUntilTrue([&] { return !companion->asks.IsBroken() && Take(); }, 10s);
    return std::exchange(m_Reply, "(none)");
  }
  std::string AskAdapter(const std::string& members) {
    return Ask("\"guid\":\"" + WideToUtf8(Config()->GetGuidText()) + "\"," + members);
  }
  static bool IsOk(const std::string& reply) {
    return reply.starts_with("{ \"status\":\"ok\", \"code\":0");
  }
  static std::string Order(const std::string& ssid, int accessPoint) {
    return "\"cmd\":\"ConnectAP\",\"ssid\":\"" + ssid + "\",\"bssid\":\"" + ApText(accessPoint) +
           "\"";
  }
  static std::string Audio(const std::string& state) {
    return R"("cmd":"EventRouter","type":"json1","event":{"evtNamespace":"Corvane",)"
           R"("evtCategory":"StreamDetect","evtType":"RTAudio","evtTimestamp":"now",)"
           R"("evtState":")" +
           state + R"(","evtData1":"","evtData2":"","evtData3":"","evtData4":"","evtData5":""})";
  }

  std::unique_ptr<Companion> companion;

 private:
  bool Take() {
    const std::string reply = companion->Reply();
    if (reply == "(none)") return false;
    m_Reply = reply;
    return true;
  }

  std::string m_Reply = "(none)";
};

TEST_F(ClientsScenario, OrdersAConnectAndWatchesItSucceedAndFail) {
  StartWithCompanion(
      OfficeWorld(-50.0).Ap(LabBeacon(149), 2, -50.0).Profile("Lab").Network("Lab", 1));
  EXPECT_TRUE(IsOk(AskAdapter(Order("Lab", 2))));
  EXPECT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"connecting"; }, 5s));
  EXPECT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"connected"; }, 30s));
  EXPECT_TRUE(IsOn(2));
  RunFor(30s);
  EXPECT_EQ(HistoryRows(",connected,Lab,").size(), 1u);

  Do(R"({"do": "refuse", "bssid": "02-50-00-00-00-01", "reason": 229377})");
  EXPECT_TRUE(IsOk(AskAdapter(Order("Office", 1))));
  EXPECT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"error"; }, 120s));
  EXPECT_TRUE(IsOk(AskAdapter(Order("Ghost", 99))));
  EXPECT_EQ(Text(value::kConnectStatus), u"pending");
  EXPECT_TRUE(RunUntilTrue([&] { return Text(value::kConnectStatus) == u"error"; }, 30s));
}

TEST_F(ClientsScenario, IsToldWhyAConnectIsRefused) {
  WorldBuilder world = OfficeWorld(-50.0).Ap(OfficeBeacon(149), 2, -50.0);
  platform::sim::OtherAdapter vpn;
  vpn.description = u"TAP-Windows Adapter V9";
  vpn.friendlyName = u"Work VPN";
  vpn.ifIndex = 110;
  vpn.ifType = 53;
  world->otherAdapters.push_back(vpn);
  StartWithCompanion(
      world.At(20'000, R"({"do": "interface", "interface": "Work VPN", "on": true})"));
  RunFor(30s);
  EXPECT_TRUE(AskAdapter(Order("Office", 2))
                  .starts_with(R"({ "status":"error", "code":14, "reason":"vpn", "request":)"));
  RunFor(60s);
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  EXPECT_NE(Text(value::kConnectStatus), u"pending");
}

TEST_F(ClientsScenario, AcceptsASuggestion) {
  StartWithCompanion(BetterLabWorld(1));
  // The suite hears of suggestions by the pipe.
  EXPECT_TRUE(IsOk(Ask(R"("cmd":"MiscCommand","name":"PalisadeOptimizer","value":1)")));
  ASSERT_TRUE(RunUntilTrue([&] { return Number(u"SuggestCount") == 1; }, 200s));
  RunFor(20s);
  const std::string events = companion->Events();
  EXPECT_NE(events.find(R"("evtCategory":"Suggestion", "evtType":"AP")"), std::string::npos);
  EXPECT_NE(events.find("02-50-00-00-00-02"), std::string::npos) << events;
  EXPECT_TRUE(
      IsOk(AskAdapter(R"("cmd":"UICommand","idx":0,"name":"AcceptAPSuggestion","value":1)")));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 30s));
  RunFor(30s);
  EXPECT_NE(companion->Events().find(R"("evtType":"SuggestionAccepted")"), std::string::npos);
}

// The hour counts from the event, and ends with the next request.
TEST_F(ClientsScenario, RealTimeAudioHoldsASwitchForItsHour) {
  StartWithCompanion(
      OfficeWorld(-70.0).Ap(OfficeBeacon(149), 2, -95.0).Signal(HeardFrom(100'000, -45.0)));
  EXPECT_TRUE(IsOk(Ask(Audio("true"))));
  const std::uint64_t begun = Now();
  RunFor(1s);
  EXPECT_NE(companion->Events().find(R"("evtType":"RTAudio", "evtTimestamp":"now")"),
            std::string::npos)
      << "told to the subscribers, too";
  RunUntil(begun + 3'590'000);
  Ask(R"("cmd":"ClientDir","path":"")");
  EXPECT_EQ(Count(AirEvent::kConnectStarted), 0u);
  RunUntil(begun + 3'601'000);
  EXPECT_TRUE(IsOk(Ask(R"("cmd":"ClientDir","path":"")")));
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 120s)) << "the hour is over";
}

TEST_F(ClientsScenario, ANewSubscriberLearnsTheConnectionAtOnce) {
  StartWithCompanion(OfficeWorld(-50.0));
  Companion late(Pc());
  ASSERT_TRUE(late.Subscribe());
  RunFor(1s);
  EXPECT_TRUE(
      late.Events().starts_with(R"({ "status":"ok", "code":0, "request":{"cmd":"Subscribe"} })"));
  RunFor(12s);  // a round
  const std::string event = late.Events();
  EXPECT_NE(event.find(R"("evtCategory":"ConnectionStatus", "evtType":"Connected")"),
            std::string::npos)
      << event;
  EXPECT_NE(event.find(ApText(1)), std::string::npos);
}

TEST_F(ClientsScenario, AnAccessPointThatAClientDeniesIsLeft) {
  StartWithCompanion(OfficeWorld(-50.0).Ap(OfficeBeacon(149), 2, -60.0));
  ASSERT_TRUE(IsOn(1));
  EXPECT_TRUE(IsOk(AskAdapter(R"("cmd":"WriteRegString","name":"DenylistJson",)"
                              R"("value":"[[\"Office\", \"02-50-00-00-00-01\"]]")")));
  EXPECT_TRUE(RunUntilTrue([&] { return Count(AirEvent::kDisconnected) > 0; }, 5s))
      << "the client woke the adapter";
  EXPECT_TRUE(RunUntilTrue([&] { return IsOn(2); }, 90s));
}

TEST_F(ClientsScenario, WithoutAnAdapterClientsAreAnswered) {
  WorldBuilder world;
  world.Adapter();
  world->adapters[0].present = false;
  StartWithCompanion(world);
  EXPECT_TRUE(IsOk(Ask(R"("cmd":"MiscCommand","name":"IDET","value":1)")));
  EXPECT_EQ(HomeNumber(u"IDET"), 1u);
  EXPECT_NE(Ask(R"("cmd":"MiscCommand","name":"Diag1","value":0)").find("\"code\":12"),
            std::string::npos);
}

TEST_F(ClientsScenario, StayConnectedWhileTheAdaptersAreBuiltAnew) {
  WorldBuilder world = OfficeWorld(-50.0);
  world.Adapter();
  StartWithCompanion(world.At(60'000, R"({"do": "adapter", "adapter": 1, "on": false})"));
  RunUntil(120'000);
  ASSERT_EQ(CWifiClientContainer::GetInstance().GetCount(), 1);
  EXPECT_TRUE(IsOk(AskAdapter(R"("cmd":"UICommand","idx":0,"name":"NoDelay","value":0)")));
  RunFor(1s);
  EXPECT_NE(companion->Events().find(R"("evtNamespace":"Dummy")"), std::string::npos);
  EXPECT_FALSE(companion->asks.IsBroken() || companion->hears.IsBroken());
}

TEST_F(ClientsScenario, TheServiceStopsInOrderWithTwentyClients) {
  StartWithCompanion(OfficeWorld(-50.0));
  std::vector<std::unique_ptr<Companion>> many;
  for (int i = 0; i < 20; ++i) {
    many.push_back(std::make_unique<Companion>(Pc()));
    ASSERT_TRUE(many.back()->Connect());
    RunFor(10ms);
    ASSERT_TRUE(many.back()->Subscribe());
    RunFor(10ms);
  }
  many[3]->hears.Stall(true);
  many[4]->asks.Stall(true);
  many[4]->Send(R"("cmd":"AppLog")");
  many[5]->asks.Vanish();
  g_DebugMask |= DBG(9);
  ASSERT_TRUE(Stop());
  EXPECT_EQ(ExitCode(), 0);
  EXPECT_FALSE(Printed("EXIT - ERROR"));
  EXPECT_EQ(LiveObjectCount(), 0u);
  for (const auto& one : many) {
    EXPECT_TRUE(one->asks.IsBroken());
    EXPECT_TRUE(one->hears.IsBroken());
  }
  const std::string log = Pc().ConsoleText();
  const auto requests = log.find("CNamedPipeListener::Shutdown:[TRLSPipe] ");
  const auto events = log.find("CNamedPipeListener::Shutdown:[TRLSPipe_N] ");
  EXPECT_LT(log.find("Main:[exit] KillTrayApp()"), requests);
  EXPECT_LT(requests, events);
  EXPECT_NE(events, std::string::npos);
}

TEST_F(ClientsScenario, AServerStopsThePostUntilAClientTurnsItOn) {
  StartWithCompanion(OfficeWorld());
  const auto answer = [&](const char* status) {
    Do((R"({"do": "web", "host": "stats.corvane.example", )" + std::string(status) + "}").c_str());
    return ProxySend("figures", false);
  };
  EXPECT_TRUE(answer(R"("body": "")"));
  EXPECT_EQ(HomeNumber(u"EnablePost"), 1u);
  EXPECT_FALSE(answer(R"("status": 401, "reason": "Unauthorized")"));
  EXPECT_EQ(HomeNumber(u"EnablePost"), 0u);
  RunFor(60s);
  EXPECT_EQ(HomeNumber(u"EnablePost"), 0u);
  EXPECT_TRUE(IsOk(Ask(R"("cmd":"MiscCommand","name":"POSTMode","value":1)")));
  EXPECT_EQ(HomeNumber(u"EnablePost"), 1u);
}

}  // namespace corvane::test
