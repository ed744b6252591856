// Subscribers and what they are told.

#include "pipe/listener_fixture.h"

namespace corvane::test {
namespace {

class NotificationPipeTest : public ListenerTest {
 protected:
  void SetUp() override { ServeNotifications(); }
  static void Post(WStringView type, WStringView data = {}) {
    QueueNotification(u"Corvane", u"System", type, data);
  }
  // Types of the events that have come, in order.
  static std::string Types(Client& client) {
    std::string types;
    while (const auto text = client.Receive()) {
      rapidjson::Document json;
      json.Parse(WideToUtf8(*text).c_str());
      types += json.IsObject() && json.HasMember("evtType") ? json["evtType"].GetString() : "?";
    }
    return types;
  }
};

TEST_F(NotificationPipeTest, EverySubscriberGetsEveryEvent) {
  Client& first = Subscribe();
  Post(u"a");
  RunFor(10ms);
  Client& second = Subscribe();
  for (const char16_t* type : {u"b", u"c", u"d"}) Post(type);
  RunFor(10ms);
  EXPECT_EQ(Types(first), "abcd");
  EXPECT_EQ(Types(second), "bcd") << "what was before it is gone";
  first.Vanish();
  Post(u"e");
  Post(u"f");
  RunFor(10ms);
  EXPECT_EQ(Types(second), "ef");
  EXPECT_EQ(kernel.Pipes().OpenRecords(), 1u) << "the next event found it gone";
}

TEST_F(NotificationPipeTest, TheFirstMessageMakesASubscriberWhateverItsAnswer) {
  struct Case {
    const char* text;
    std::uint32_t code;
  };
  for (const Case& one : {Case{"{", 1},
                          {"{}", 5},
                          {"[]", 5},
                          {R"({"cmd":7})", 5},
                          {R"({"cmd":"subscribe"})", 6},
                          {R"({"cmd":"AppLog","art":""})", 6},
                          {R"({"cmd":"Subscribe","guid":"x","idx":0,"filter":"nothing"})", 0}}) {
    Client& client = Connect(u"TRLSPipe_N");
    Post(u"early");
    RunFor(10ms);
    EXPECT_FALSE(client.Receive()) << "before its first message it gets nothing";
    EXPECT_NE(Ask(client, one.text).find("\"code\":" + std::to_string(one.code) + ","),
              std::string::npos)
        << one.text;
    Post(u"x");
    RunFor(10ms);
    EXPECT_EQ(Types(client), "x") << one.text;
    EXPECT_EQ(Ask(client, R"({"cmd":"Subscribe"})"), "(none)") << "nothing more is read";
  }
  EXPECT_TRUE(HasLog("\nGot json with parse error, in pipe:\n"));
}

TEST_F(NotificationPipeTest, ANewSubscriberAsksTheFirstTwoWorkersForTheirState) {
  auto& global = CGlobalConfigContainer::GetInstance();
  global.Initialize(false);
  for (const char16_t* guid : {u"{A}", u"{B}", u"{C}"}) global.AddIFConfig(guid, u"", u"");
  Client& client = Connect(u"TRLSPipe_N");
  Ask(client, "{}");
  EXPECT_FALSE(global.GetIFConfig(0)->m_bReportStatusPending);
  Subscribe();
  EXPECT_TRUE(global.GetIFConfig(0)->m_bReportStatusPending);
  EXPECT_TRUE(global.GetIFConfig(1)->m_bReportStatusPending);
  EXPECT_FALSE(global.GetIFConfig(2)->m_bReportStatusPending);
  global.Shutdown(false);
}

TEST_F(NotificationPipeTest, AnEventJustFitsOrIsDroppedForAll) {
  Client& client = Subscribe();
  const auto event = CNotificationEvent::CreateObject();
  event->Set(u"Corvane", u"System", u"x", true);
  event->m_Data1.assign(499'999 - event->GetJson().size(), u'd');
  ASSERT_EQ(event->GetJson().size(), 499'999u);
  auto& manager = CNotificationManagerSingleton::GetInstance();
  manager.QueueNotification(event.get());
  RunFor(10ms);
  const auto text = client.Receive();
  ASSERT_TRUE(text);
  EXPECT_EQ(text->size(), 499'999u);
  const auto longer = CNotificationEvent::CreateObject();
  *&longer->m_Data1 = event->m_Data1 + u"d";
  longer->m_Namespace = event->m_Namespace;
  longer->m_Category = event->m_Category;
  longer->m_Type = event->m_Type;
  longer->m_Timestamp = event->m_Timestamp;
  longer->m_bState = true;
  manager.QueueNotification(longer.get());
  RunFor(10ms);
  EXPECT_FALSE(client.Receive());
  EXPECT_TRUE(HasLog("SendNotification: abort due to reply.length() = 500000 being too big"));
  EXPECT_FALSE(client.IsBroken());
}

// A NUL in a text would cut the message in two.
TEST_F(NotificationPipeTest, ANulEndsAnEvent) {
  Client& client = Subscribe();
  Post(u"x", WStringView(u"a\0b", 3));
  Post(u"y");
  RunFor(10ms);
  const auto text = client.Receive();
  ASSERT_TRUE(text);
  EXPECT_TRUE(text->ends_with(u"\"evtData1\":\"a"));
  EXPECT_EQ(Types(client), "y");
}

TEST_F(NotificationPipeTest, OneThatDoesNotReadIsClosedWhenItsBufferIsFull) {
  Client& stalled = Subscribe();
  Client& reader = Subscribe();
  stalled.Stall(true);
  const WString half(240'000, u'x');  // two of them fit
  for (const char16_t* type : {u"a", u"b"}) {
    Post(type, half);
    RunFor(10ms);
  }
  Post(u"c", half);
  RunFor(10ms);
  EXPECT_FALSE(stalled.IsBroken()) << "the write waits until the next event";
  Post(u"d");
  RunFor(10ms);
  EXPECT_TRUE(stalled.IsBroken());
  EXPECT_EQ(Types(reader), "abcd");
  EXPECT_TRUE(HasLog("calling DisconnectAndClose()"));
}

// Two events in one breath: the second finds the first one's write undone.
TEST_F(NotificationPipeTest, ABurstClosesTheStalledAndReachesTheOthers) {
  Client& stalled = Subscribe();
  Client& reader = Subscribe();
  stalled.Stall(true);
  const WString large(450'000, u'x');
  for (const char16_t* type : {u"a", u"b", u"c", u"d", u"e"}) Post(type, large);
  RunFor(10ms);
  EXPECT_TRUE(stalled.IsBroken());
  EXPECT_EQ(Types(reader), "abcde");
}

// Each write is finished with before the next begins, however fast the events come.
TEST_F(NotificationPipeTest, ASlowReaderOutlivesABurstThatEndsInAFullBuffer) {
  Client& client = Subscribe();
  client.Stall(true);
  const WString half(240'000, u'x');  // two of them fit
  for (const char16_t* type : {u"a", u"b", u"c"}) Post(type, half);
  RunFor(10ms);
  client.Stall(false);
  RunFor(10ms);
  EXPECT_FALSE(client.IsBroken());
  Post(u"d");
  RunFor(10ms);
  EXPECT_EQ(Types(client), "abcd");
}

TEST_F(NotificationPipeTest, AWriteThatFailsClosesThatSubscriber) {
  for (const platform::DWORD code :
       {platform::ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
    Subscribe();
    Subscribe();
    Subscribe();
    kernel.Faults().FailCall("WriteFileEx", 2, code);
    Post(u"a");
    RunFor(10ms);
    EXPECT_TRUE(
        HasLog("CNamedPipeListenerNotificationsJson::SendNotification: calling "
               "DisconnectAndClose()"));
    Post(u"b");
    RunFor(10ms);
    int broken = 0;
    for (const auto& client : clients) {
      broken += client->IsBroken() ? 1 : 0;
      if (!client->IsBroken()) {
        EXPECT_EQ(Types(*client), "ab");
      }
    }
    EXPECT_EQ(broken, 1) << code;
    clients.clear();
  }
}

TEST_F(NotificationPipeTest, ALostCallCostsNoEvent) {
  Client& client = Subscribe();
  kernel.Faults().FailCall("QueueUserAPC", 1, platform::ERROR_GEN_FAILURE);
  Post(u"a");
  RunFor(10ms);
  EXPECT_EQ(Types(client), "");
  Post(u"b");
  RunFor(10ms);
  EXPECT_EQ(Types(client), "ab");
  EXPECT_TRUE(HasLog("SendNotification: QueueUserAPC() failed: 31"));
}

TEST_F(NotificationPipeTest, WhatWaitsForTheListenerIsBounded) {
  Client& client = Subscribe();
  kernel.Faults().FailAlways("QueueUserAPC", platform::ERROR_GEN_FAILURE);
  for (int n = 0; n < 1001; ++n) Post(n == 0 ? u"first" : u"x");
  RunFor(10ms);
  kernel.Faults().Clear();
  Post(u"last");
  RunFor(10ms);
  const std::string types = Types(client);
  EXPECT_EQ(types.size(), 999u + 4u);
  EXPECT_TRUE(types.starts_with("x") && types.ends_with("xlast"));
}

TEST_F(NotificationPipeTest, AListenerThatEndedTakesNoEvents) {
  Client& client = Subscribe();
  kernel.Faults().FailCall("GlobalAlloc", 1, platform::ERROR_NOT_ENOUGH_MEMORY);
  Connect(u"TRLSPipe_N");
  EXPECT_FALSE(notifications->IsRunning());
  Post(u"a");
  RunFor(1s);
  EXPECT_EQ(Types(client), "");
  EXPECT_FALSE(HasLog("QueueUserAPC() failed")) << "nobody is asked to write it";
}

}  // namespace
}  // namespace corvane::test
