#include "foundation/log_lines.h"
#include "notify/notification_manager.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_console.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

// Keeps what it is told, and can take its time over it.
class Subscriber : public SmartObjEx<Subscriber, SmartObj<>>, public INotificationProvider {
 public:
  std::uint32_t AddRef() override { return SmartObj<>::AddRef(); }
  void SendNotification(CNotificationEvent* event) override {
    if (delayMs != 0) Os().threads.Sleep(delayMs);
    if (fails) throw Exception("the pipe broke");
    types.push_back(event->m_Type);
  }

  std::vector<WString> types;
  std::uint32_t delayMs = 0;
  bool fails = false;
};

class NotificationTest : public KernelTest {
 protected:
  static CNotificationManagerSingleton& Manager() {
    return CNotificationManagerSingleton::GetInstance();
  }
  static CSmartPointer<Subscriber> Subscribe() {
    auto subscriber = Subscriber::CreateObject();
    Manager().AddProvider(subscriber.get());
    return subscriber;
  }
  static void Queue(WStringView type) { QueueNotification(u"Corvane", u"System", type); }
};

TEST_F(NotificationTest, EventReadsOnTheWireAsOneLineOfItsMembers) {
  kernel.Clock().SetWallOffset(0);
  const auto event = CNotificationEvent::CreateObject();
  event->Set(u"Corvane", u"Suggestion", u"AP", true);
  event->m_Timestamp = u"03/11/2026T8:04:20.07Z";
  event->m_Data1 = u"one";
  event->m_Data5 = u"five";
  EXPECT_EQ(WideToUtf8(event->GetJson()),
            R"({ "evtNamespace":"Corvane", "evtCategory":"Suggestion", "evtType":"AP", )"
            R"("evtTimestamp":"03/11/2026T8:04:20.07Z", "evtState":"true", )"
            R"("evtData1":"one", "evtData2":"", )"
            R"("evtData3":"", "evtData4":"", "evtData5":"five" })");
  event->m_bState = false;
  EXPECT_NE(event->GetJson().find(u"\"evtState\":\"false\""), WString::npos)
      << "a string, no JSON bool";
}

// 2026-11-03 08:04:20.007: the day comes first, the hour is not padded, milliseconds to two digits.
class FixedClock : public platform::ClockApi {
 public:
  platform::ULONGLONG GetTickCount64() override { return 1; }
  void GetSystemTimeAsFileTime(platform::FILETIME* now) override {
    platform::SystemTimeToFileTime({2026, 11, 2, 3, 8, 4, 20, 7}, now);
  }
};

TEST_F(NotificationTest, TimeStampHasTheDayFirst) {
  Install<FixedClock>();
  const auto event = CNotificationEvent::CreateObject();
  event->Set(u"Corvane", u"Suggestion", u"AP", true);
  EXPECT_EQ(WideToUtf8(event->m_Timestamp), "03/11/2026T8:04:20.07Z");
}

TEST_F(NotificationTest, EverySubscriberGetsEachEventInOrder) {
  const auto first = Subscribe();
  const auto second = Subscribe();
  second->delayMs = 30;  // events pile up meanwhile
  Queue(u"before the start");
  ASSERT_EQ(Manager().BeginThread(), 0);
  Queue(u"2");
  Queue(u"3");
  RunFor(1s);
  const std::vector<WString> all = {u"before the start", u"2", u"3"};
  EXPECT_EQ(first->types, all);
  EXPECT_EQ(second->types, all);
  Manager().Shutdown(1000);
}

TEST_F(NotificationTest, WithoutASubscriberEventsAreDropped) {
  ASSERT_EQ(Manager().BeginThread(), 0);
  Queue(u"nobody");
  RunFor(1s);
  const auto late = Subscribe();
  Queue(u"heard");
  RunFor(1s);
  EXPECT_EQ(late->types, std::vector<WString>{u"heard"});
  Manager().Shutdown(1000);
}

TEST_F(NotificationTest, ShutdownEndsAtOnceAndLaterEventsGoNowhere) {
  const auto subscriber = Subscribe();
  ASSERT_EQ(Manager().BeginThread(), 0);
  RunFor(1s);
  const auto before = kernel.Now();
  Manager().Shutdown(1000);
  EXPECT_LT(kernel.Now() - before, 100ms) << "the exit signal ends the wait, not the time-out";
  EXPECT_EQ(kernel.GetScheduler().LiveThreads(), 0);
  EXPECT_EQ(subscriber->GetRefCount(), 1u) << "the provider list is cleared";
  Queue(u"late");
  RunFor(1s);
  EXPECT_TRUE(subscriber->types.empty());
}

TEST_F(NotificationTest, ShutdownReturnsThoughADeliveryHangs) {
  const auto subscriber = Subscribe();
  subscriber->delayMs = 3'600'000;
  ASSERT_EQ(Manager().BeginThread(), 0);
  Queue(u"stuck");
  RunFor(1s);
  const auto before = kernel.Now();
  Manager().Shutdown(1000);
  EXPECT_GE(kernel.Now() - before, 1000ms);
  EXPECT_LT(kernel.Now() - before, 1500ms);
}

// The thread dies, producers do not.
TEST_F(NotificationTest, AFailingSubscriberEndsTheThreadAndIsLogged) {
  const auto subscriber = Subscribe();
  subscriber->fails = true;
  ASSERT_EQ(Manager().BeginThread(), 0);
  Queue(u"bad");
  RunFor(1s);
  EXPECT_FALSE(Manager().IsRunning());
  Queue(u"still queued");
  EXPECT_TRUE(subscriber->types.empty());
  EXPECT_NE(kernel.Console().Text().find(
                "CNotificationManagerSingleton::RunThreadLoop: Exception: the pipe broke"),
            std::string::npos);
  subscriber->fails = false;
  Manager().Shutdown(1000);
}

// Clients can post events faster than a slow subscriber takes them.
TEST_F(NotificationTest, TheQueueIsBoundedAndDropsTheOldest) {
  for (int n = 0; n < 1002; ++n) Queue(Format(u"%i", n));
  const auto subscriber = Subscribe();
  ASSERT_EQ(Manager().BeginThread(), 0);
  RunFor(1s);
  ASSERT_EQ(subscriber->types.size(), 1000u);
  EXPECT_EQ(subscriber->types.front(), u"2");
  EXPECT_EQ(subscriber->types.back(), u"1001");
  Manager().Shutdown(1000);
}

TEST_F(NotificationTest, LargeEventsAreBoundedByTheirText) {
  const WString large(499'000, u'x');
  for (int n = 0; n < 20; ++n) {
    QueueNotification(u"Corvane", u"System", Format(u"%i", n), large);
  }
  const auto subscriber = Subscribe();
  ASSERT_EQ(Manager().BeginThread(), 0);
  RunFor(1s);
  ASSERT_EQ(subscriber->types.size(), 16u) << "eight million characters";
  EXPECT_EQ(subscriber->types.front(), u"4");
  Manager().Shutdown(1000);
}

TEST_F(NotificationTest, ALostWakeCostsNoEventAndNoProducer) {
  const auto subscriber = Subscribe();
  ASSERT_EQ(Manager().BeginThread(), 0);
  RunFor(1s);
  kernel.Faults().FailCall("SetEvent", 1, platform::ERROR_GEN_FAILURE);
  Queue(u"first");
  RunFor(1s);
  EXPECT_TRUE(subscriber->types.empty());
  Queue(u"second");
  RunFor(1s);
  EXPECT_EQ(subscriber->types, (std::vector<WString>{u"first", u"second"}));
  Manager().Shutdown(1000);
}

}  // namespace
}  // namespace corvane::test
