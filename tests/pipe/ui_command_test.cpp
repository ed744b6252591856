// What a user interface sends while it is on screen.

#include "notify/notification_manager.h"
#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class Heard : public SmartObjEx<Heard, SmartObj<>>, public INotificationProvider {
 public:
  void SendNotification(CNotificationEvent* event) override { events.push_back(event->GetJson()); }
  std::vector<WString> events;
};

class UICommandTest : public CommandTest {
 protected:
  std::string Members(int idx, const std::string& of, const std::string& rest) {
    return "\"cmd\":\"UICommand\",\"idx\":" + std::to_string(idx) + ",\"guid\":\"" + of + "\"," +
           rest;
  }
  std::string NoDelay(int value) {
    return "\"name\":\"NoDelay\",\"value\":" + std::to_string(value);
  }
  std::string Accept(int value) {
    return "\"name\":\"AcceptAPSuggestion\",\"value\":" + std::to_string(value);
  }
  static std::string PointsOf(const std::string& ssid) {
    return "\"name\":\"GetAPsForNetwork\",\"value\":\"" + ssid + "\"";
  }
};

TEST_F(UICommandTest, WrongMembersHaveTheirCodesInOrder) {
  const std::string cmd = "\"cmd\":\"UICommand\"";
  EXPECT_EQ(Code(cmd), 3u);
  for (const char* idx : {"\"0\"", "1.5", "2147483648", "null"}) {
    EXPECT_EQ(Code(cmd + ",\"idx\":" + idx + ",\"guid\":\"x\""), 3u) << idx;
  }
  EXPECT_EQ(Code(cmd + ",\"idx\":0"), 1u);
  EXPECT_EQ(Code(Members(2, "x", NoDelay(1))), 10u);
  EXPECT_EQ(Code(Members(-1, "x", NoDelay(1))), 10u);
  EXPECT_EQ(Code(Members(0, "x", "\"a\":1")), 7u);
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"NoDelay\"")), 7u);
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"NoDelay\",\"value\":-1")), 7u);
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"Other\",\"value\":-1")), 7u);
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"Other\",\"value\":1")), 8u);
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"NoDelay\",\"value\":\"1\"")), 8u)
      << "a text belongs to the other sub-command";
  EXPECT_EQ(Code(Members(0, "x", "\"name\":\"GetAPsForNetwork\",\"value\":1")), 8u);
  EXPECT_EQ(WindowMs(), 0u);
}

TEST_F(UICommandTest, NoDelayOpensOneWindowUntilItIsArmedAgain) {
  EXPECT_TRUE(IsEcho(Ask(Members(7, guid, NoDelay(1))))) << "a known guid needs no index";
  EXPECT_EQ(WindowMs(), 15'000u);
  EXPECT_TRUE(HasLog("SET UI NODELAY: CFG-index = 0, USE guid = " + guid));
  RunFor(5s);
  EXPECT_TRUE(IsEcho(Ask(Members(0, guid, NoDelay(1)))));
  EXPECT_EQ(WindowMs(), 10'000u) << "a repeated request stretched it";
  EXPECT_TRUE(HasLog("IGNORE UI NODELAY"));
  EXPECT_EQ(Code(Members(1, "x", NoDelay(1))), 0u);
  EXPECT_EQ(WindowMs(1), 0u) << "one arm for the whole process";

  EXPECT_TRUE(IsEcho(Ask(Members(0, guid, NoDelay(0)))));
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_EQ(config->m_NoDelayExpiry, 0u);
  EXPECT_EQ(Code(Members(1, "x", NoDelay(2))), 0u);
  EXPECT_EQ(WindowMs(1), 15'000u) << "by index";
  EXPECT_TRUE(HasLog("SET UI NODELAY: [ONLY] index = 1"));
  EXPECT_FALSE(WasWoken(0) || WasWoken(1));
}

TEST_F(UICommandTest, TheGuidGoesBeforeTheIndex) {
  EXPECT_EQ(Code(Members(1, guid, NoDelay(1))), 0u);
  EXPECT_EQ(WindowMs(0), 15'000u);
  EXPECT_EQ(WindowMs(1), 0u);
}

TEST_F(UICommandTest, ClosingTellsTheSubscribers) {
  auto& manager = CNotificationManagerSingleton::GetInstance();
  const auto heard = Heard::CreateObject();
  manager.AddProvider(heard.get());
  ASSERT_EQ(manager.BeginThread(), 0);
  Ask(Members(0, guid, NoDelay(1)));
  Ask(Members(0, guid, NoDelay(0)));
  RunFor(1s);
  ASSERT_EQ(heard->events.size(), 1u);
  EXPECT_EQ(heard->events[0].find(u"{ \"evtNamespace\":\"Dummy\", \"evtCategory\":\"Dummy\", "
                                  u"\"evtType\":\"Dummy\", \"evtTimestamp\":\""),
            0u);
  EXPECT_NE(heard->events[0].find(u"\"evtState\":\"true\", \"evtData1\":\"\""), WString::npos);
  manager.Shutdown(1000);
}

TEST_F(UICommandTest, ASuggestionIsAcceptedForAKnownAdapter) {
  EXPECT_EQ(Code(Members(0, "x", Accept(1))), 2u) << "the index alone will not do";
  EXPECT_TRUE(IsEcho(Ask(Members(0, guid, Accept(0)))));
  EXPECT_FALSE(config->m_accept_suggestion);
  EXPECT_EQ(WindowMs(), 0u);
  EXPECT_TRUE(IsEcho(Ask(Members(0, guid, Accept(1)))));
  EXPECT_TRUE(config->m_accept_suggestion);
  EXPECT_EQ(WindowMs(), 15'000u);
  EXPECT_FALSE(WasWoken());
}

TEST_F(UICommandTest, AccessPointsOfANetworkAreListedByPosition) {
  Add("Office", 0xAB, 50);
  Add("OFFICE", 1, 50);
  Add("Office", 2, 50);
  Add("Lab", 3, 50);
  Add("Office", 4, 50, 80, 1);
  const auto list = [](const std::string& items) {
    return "{ \"status\":\"ok\", \"code\":0, \"response\":[" + items + "] }";
  };
  const std::string second = WideToUtf8(adapters[1]->Config()->GetGuidText());
  EXPECT_EQ(Ask(Members(0, second, PointsOf("oFFice"))),
            list("\"02:00:00:00:00:01\",\"02:00:00:00:00:02\",\"02:00:00:00:00:ab\""))
      << "the position counts, not the guid";
  EXPECT_EQ(Ask(Members(1, "x", PointsOf("Office"))), list("\"02:00:00:00:00:04\""));
  EXPECT_EQ(Ask(Members(0, guid, PointsOf("Offic"))), list(""));
  EXPECT_EQ(Ask(Members(7, guid, PointsOf("Office"))), list(""));
  EXPECT_EQ(Ask(Members(-1, guid, PointsOf("Office"))), list(""));
}

// The letter as it is and its escape name the same network.
TEST_F(UICommandTest, ANetworkIsFoundByAnySpellingOfItsName) {
  Add("B\xC3\xBCro", 5, 50);
  const std::string found =
      "{ \"status\":\"ok\", \"code\":0, \"response\":[\"02:00:00:00:00:05\"] }";
  EXPECT_EQ(Ask(Members(0, guid, PointsOf("B\\u00fcro"))), found);
  EXPECT_EQ(Ask(Members(0, guid, PointsOf("B\xC3\xBCro"))), found);
}

}  // namespace
}  // namespace corvane::test
