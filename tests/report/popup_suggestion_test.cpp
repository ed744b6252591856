#include "report/popup_suggestion.h"

#include "launch/launcher.h"
#include "notify/notification_manager.h"
#include "platform/sim/kernel/sim_clock.h"
#include "platform/sim/kernel/sim_session.h"
#include "support/report_fixture.h"

namespace corvane::test {
namespace {

constexpr std::uint64_t kDayMs = 86'400'000;
constexpr std::uint64_t kDaySecs = 86'400;

TEST(PopupRule, OnePopupAndOneRepeatAfterADay) {
  const struct {
    const char* name;
    PopupQuestion question;
    bool allow, stamp;
  } kCases[] = {
      {"first of its network", {.known = false, .nowTick = 5, .nowUnixTime = 5}, true, true},
      {"at once", {true, 1000, 1000, 1001, 1000}, false, false},
      {"a millisecond before the day",
       {true, 1000, 1000, 1000 + kDayMs - 1, 1000 + kDaySecs - 1},
       false,
       false},
      {"after the day", {true, 1000, 1000, 1000 + kDayMs, 1000 + kDaySecs}, true, false},
      {"the machine slept: only wall time ran on",
       {true, 1000, 1000, 2000, 1000 + kDaySecs},
       true,
       false},
      {"the clock was moved back", {true, 1000, 9'000'000, 1000 + kDayMs - 1, 5}, false, false},
      {"moved back, the ticks decide", {true, 1000, 9'000'000, 1000 + kDayMs, 5}, true, false},
      {"no stamp: silent for ever", {true, 0, 0, 40 * kDayMs, 40 * kDaySecs}, false, false},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.name);
    const PopupVerdict verdict = DecidePopup(one.question);
    EXPECT_EQ(verdict.allow, one.allow);
    EXPECT_EQ(verdict.stamp, one.stamp);
  }
}

class PopupTest : public ReportTest {
 protected:
  PopupTest() { popup.Start(1, &config, u"{guid}"); }
  bool Suggest(const WString& ssid, const WString& bssid = u"02-00-00-00-00-01",
               std::int32_t percent = 25, std::uint32_t lq = 80, std::uint32_t threshold = 70) {
    return popup.PopupSuggestAP(Ap(ssid, bssid), percent, lq, threshold, u"new one", u"old one");
  }

  CPopupSuggestion popup;
};

TEST_F(PopupTest, SuggestionIsWrittenAndTheDialogStarts) {
  EXPECT_TRUE(Suggest(u"Office"));
  EXPECT_EQ(config.numbers[u"SuggestCount"], 1u);
  EXPECT_EQ(config.texts[u"SuggestedNetwork"], u"Office [02-00-00-00-00-01] [Channel 36] [5Ghz]");
  EXPECT_EQ(config.texts[u"SuggestedNetworkSSID"], u"Office");
  EXPECT_EQ(config.texts[u"SuggestedNetworkBSSID"], u"02-00-00-00-00-01");
  const auto launches = kernel.Session().TakeLaunches();
  ASSERT_EQ(launches.size(), 1u);
  EXPECT_EQ(launches[0].commandLine, u"NudgeDialog.exe 1");
  EXPECT_FALSE(Suggest(u"Office", u"02-00-00-00-00-02")) << "the same network";
  EXPECT_TRUE(popup.GetMemo().HasAp(u"Office", u"02-00-00-00-00-01"));
  EXPECT_FALSE(popup.GetMemo().HasAp(u"Office", u"02-00-00-00-00-02"));
  EXPECT_TRUE(
      HasLog("[1]CPopupSuggestion::PopupSuggestAP: skip repeat: Office, 02-00-00-00-00-02 "
             "[m_consec_repeats = 1]"));
}

// Per network: stamped by its first popup; another network's popup, or the one repeat, ends its
// day.
TEST_F(PopupTest, OnlyTheNetworkSuggestedLastHasARunningDay) {
  EXPECT_TRUE(Suggest(u"Office"));
  RunFor(24h);
  EXPECT_TRUE(Suggest(u"Office"));
  EXPECT_TRUE(HasLog("ALLOW 24-HR REPEAT:[s "));
  RunFor(25h);
  EXPECT_FALSE(Suggest(u"Office")) << "the repeat was made";

  EXPECT_TRUE(Suggest(u"Home"));
  RunFor(1h);
  EXPECT_TRUE(Suggest(u"Guest")) << "a new network at any time";
  RunFor(25h);
  EXPECT_FALSE(Suggest(u"Home"));
  EXPECT_TRUE(Suggest(u"Guest"));
}

TEST_F(PopupTest, AResolvedSuggestionCountsAsAFirstOneAgain) {
  EXPECT_TRUE(Suggest(u"Office"));
  popup.ClearPopupSuggestedAP_If_Equal(u"", u"02-00-00-00-00-01");
  popup.ClearPopupSuggestedAP_If_Equal(u"Office", u"02-00-00-00-00-09");
  EXPECT_TRUE(HasLog("ClearPopupSuggestedAP_If_Equal: AP not found: Office [02-00-00-00-00-09]"));
  EXPECT_NE(config.texts[u"SuggestedNetwork"], u"");
  popup.ClearPopupSuggestedAP_If_Equal(u"Office", u"02-00-00-00-00-01");
  EXPECT_TRUE(
      HasLog("ClearPopupSuggestedAP_If_Equal: found & removed AP: Office [02-00-00-00-00-01]"));
  EXPECT_EQ(config.texts[u"SuggestedNetwork"], u"") << "the text of what was resolved goes";
  EXPECT_TRUE(Suggest(u"Office"));

  EXPECT_TRUE(Suggest(u"Home", u"02-00-00-00-00-05"));
  popup.ClearPopupSuggestedAP_If_Equal(u"Office", u"");
  EXPECT_TRUE(HasLog("ClearPopupSuggestedAP_If_Equal: found & removed Network: Office"));
  EXPECT_NE(config.texts[u"SuggestedNetwork"], u"") << "another network's text stays";
}

TEST_F(PopupTest, TheReasonPrefersAWeakSignal) {
  const struct {
    std::int32_t percent;
    std::uint32_t lq, threshold;
    std::int32_t reason;
  } kCases[] = {{30, 40, 70, 112}, {30, 70, 70, -30}, {0, 80, 70, 103},
                {30, 0, 70, -30},  {30, 40, 0, -30},  {0, 0, 0, 103}};
  int n = 0;
  for (const auto& one : kCases) {
    EXPECT_TRUE(
        Suggest(Format(u"net %i", n++), u"02-00-00-00-00-01", one.percent, one.lq, one.threshold));
    EXPECT_EQ(config.reason, one.reason) << "case " << n;
  }
}

class Listener : public SmartObjEx<Listener, SmartObj<>>, public INotificationProvider {
 public:
  void SendNotification(CNotificationEvent* event) override { lines.push_back(event->GetJson()); }
  std::vector<WString> lines;
};

TEST_F(PopupTest, TheOemSuiteIsToldInsteadOfTheUser) {
  config.optimizer = true;
  auto& manager = CNotificationManagerSingleton::GetInstance();
  const auto listener = Listener::CreateObject();
  manager.AddProvider(listener.get());
  manager.BeginThread();
  EXPECT_TRUE(Suggest(u"O\""));
  RunFor(1s);
  EXPECT_TRUE(kernel.Session().TakeLaunches().empty());
  EXPECT_EQ(config.texts[u"SuggestedNetworkSSID"], u"O\"");
  ASSERT_EQ(listener->lines.size(), 1u);
  EXPECT_NE(
      listener->lines[0].find(
          u"\"evtData1\":\"\\u004F\\u0022\", \"evtData2\":\"new one\", \"evtData3\":\"old one\", "
          u"\"evtData4\":\"{guid}\", \"evtData5\":\"Radio 7 of the registry\""),
      WString::npos);
  manager.Shutdown(1000);
}

TEST_F(PopupTest, ADialogThatDoesNotStartGoesToTheInterpreter) {
  kernel.Session().Uninstall(u"NudgeDialog.exe");
  kernel.Session().SetCommandResult(4);
  EXPECT_TRUE(Suggest(u"Office")) << "the suggestion stays in the registry";
  EXPECT_EQ(kernel.Session().TakeCommands(),
            std::vector<WString>{u"start /B cmd.exe /c NudgeDialog.exe 1"});
  EXPECT_TRUE(HasLog("CPopupSuggestion::DoNudgeDialog: system(...NudgeDialog.exe) FAILED, rc=4"));
}

}  // namespace
}  // namespace corvane::test
