// The hidden window: what the machine says of sleep reaches the subscribers, and a system that
// refuses any of it leaves nothing behind.

#include "monitors/power_window.h"

#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_windows.h"
#include "platform/sim/kernel/fault_plan.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"

namespace corvane::test {

using platform::sim::FaultPlan;

namespace {

class Sleeper : public SmartObjEx<Sleeper, SmartObj<>>, public IPowerSubscriber {
 public:
  explicit Sleeper(std::string* told, char name = 'a') : m_pTold(told), m_Name(name) {}
  void OnResume() override { *m_pTold += {m_Name, 'R', ' '}; }
  void OnSuspend() override { *m_pTold += {m_Name, 'S', ' '}; }

 private:
  std::string* m_pTold;
  const char m_Name;
};

}  // namespace

class PowerWindowTest : public PcTest {
 protected:
  void SetUp() override { Boot(WorldBuilder().Adapter().Build()); }
  void TearDown() override {
    CPowerWindow::s_bTrace = false;
    CPowerWindow::GetInstance().Shutdown();
    EXPECT_EQ(Windows().OpenWindows(), 0u);
    PcTest::TearDown();
  }
  platform::sim::SimWindows& Windows() { return Pc().Devices().Windows(); }
  CPowerWindow& Open() {
    auto& window = CPowerWindow::GetInstance();
    EXPECT_TRUE(window.Initialize(10, 10));
    RunFor(10ms);
    return window;
  }
  void Broadcast(std::initializer_list<platform::WPARAM> events) {
    for (const auto event : events) Windows().TellPower(event);
    RunFor(10ms);
  }
  std::string TakeTold() { return std::exchange(told, {}); }

  std::string told;
};

TEST_F(PowerWindowTest, AStopBeforeTheWindowIsThereLeavesNone) {
  EXPECT_TRUE(CPowerWindow::GetInstance().Initialize(10, 10));
  CPowerWindow::GetInstance().Shutdown();
  EXPECT_EQ(Windows().OpenWindows(), 0u);
}

TEST_F(PowerWindowTest, TellsEachSleepAndOneWakingInTheOrderOfSubscription) {
  CPowerWindow& window = Open();
  window.AddSubscriber(Sleeper::CreateObject(&told).get());
  window.AddSubscriber(Sleeper::CreateObject(&told, 'b').get());
  Broadcast({18, 7});
  EXPECT_EQ(TakeTold(), "") << "a resume without a suspend, as after a hybrid boot";
  Broadcast({4, 4, 10, 99});
  EXPECT_EQ(TakeTold(), "aS bS aS bS ");
  Broadcast({18, 7, 8});
  EXPECT_EQ(TakeTold(), "aR bR ") << "a waking that is announced twice";
  for (const platform::WPARAM waking : {7u, 8u, 18u}) {
    Broadcast({4, waking});
    EXPECT_EQ(TakeTold(), "aS bS aR bR ") << waking;
  }
  const auto again = Sleeper::CreateObject(&told, 'c');
  window.AddSubscriber(again.get());
  window.AddSubscriber(again.get());
  Broadcast({4});
  EXPECT_EQ(TakeTold(), "aS bS cS cS ");
  window.Shutdown();
  EXPECT_EQ(Pc().LiveThreads(), 0) << "the thread is gone without a further message";
  EXPECT_EQ(Windows().OpenWindows(), 0u);
  EXPECT_EQ(again->GetRefCount(), 1u) << "the subscribers are not let go";
  Broadcast({18});
  EXPECT_EQ(TakeTold(), "");
}

// A subscription may come from any thread, the window's own among them.
TEST_F(PowerWindowTest, SubscribesWhileOthersAreTold) {
  class Inviter : public SmartObjEx<Inviter, SmartObj<>>, public IPowerSubscriber {
   public:
    explicit Inviter(std::string* told) : m_pTold(told) {}
    void OnResume() override {}
    void OnSuspend() override {
      CPowerWindow::GetInstance().AddSubscriber(Sleeper::CreateObject(m_pTold).get());
    }

   private:
    std::string* m_pTold;
  };
  Open().AddSubscriber(Inviter::CreateObject(&told).get());
  Broadcast({4});
  EXPECT_EQ(TakeTold(), "");
  Broadcast({18});
  EXPECT_EQ(TakeTold(), "aR ");
}

TEST_F(PowerWindowTest, ASubscriberThatThrowsDoesNotEndTheWindow) {
  class Thrower : public SmartObjEx<Thrower, SmartObj<>>, public IPowerSubscriber {
   public:
    void OnResume() override { throw std::bad_alloc(); }
    void OnSuspend() override { throw Exception("no"); }
  };
  CPowerWindow& window = Open();
  const auto thrower = Thrower::CreateObject();
  window.AddSubscriber(thrower.get());
  Broadcast({4, 18});
  window.AddSubscriber(thrower.get());
  window.RemoveSubscriber(thrower.get());
  EXPECT_EQ(thrower->GetRefCount(), 1u);
  window.AddSubscriber(Sleeper::CreateObject(&told).get());
  Broadcast({4, 18});
  EXPECT_EQ(TakeTold(), "aS aR ");
}

TEST_F(PowerWindowTest, TracesOnDemandOnly) {
  CPowerWindow& window = Open();
  const auto changeUser = [&](bool loggedOn) {
    Pc().Devices().Do(loggedOn ? R"({"do": "session", "loggedOn": true, "sessionId": 3})"
                               : R"({"do": "session", "loggedOn": false, "sessionId": 3})");
    RunFor(10ms);
  };
  changeUser(false);
  Broadcast({4});
  EXPECT_EQ(Pc().ConsoleText().find("[PWRW]"), std::string::npos);
  CPowerWindow::s_bTrace = true;
  changeUser(true);
  changeUser(true);
  Broadcast({4, 10});
  const std::string text = Pc().ConsoleText();
  const auto count = [&](const std::string& line) {
    std::size_t found = 0, at = 0;
    for (; (at = text.find(line, at)) != text.npos; at += line.size()) ++found;
    return found;
  };
  EXPECT_EQ(count("[PWRW]WM_WTSSESSION_CHANGE --> WTS_SESSION_LOGON, session=3\n"), 1u) << text;
  EXPECT_EQ(count("[PWRW]WM_POWERBROADCAST --> wParam=4\n"), 1u);
  EXPECT_EQ(count("[PWRW]WM_POWERBROADCAST --> wParam=10\n"), 1u);
  window.Shutdown();
}

// Each operation fails, faults or lacks memory on its first call or on every one. A class stays
// registered, so what fails before it is first.
TEST_F(PowerWindowTest, ARefusalCostsNoMoreThanItsMessages) {
  struct Case {
    const char* operation;
    bool always;
    bool hears;  // of sleep and waking all the same
  };
  const Case cases[] = {{"GetModuleHandleW", true, false},
                        {"RegisterClassExW", true, false},
                        {"CreateWindowExW", true, false},
                        {"ShowWindow", true, true},
                        {"UpdateWindow", true, true},
                        {"WTSRegisterSessionNotification", true, true},
                        {"RegisterSuspendResumeNotification", true, false},
                        {"GetMessageW", false, true},
                        {"GetMessageW", true, false},
                        {"TranslateMessage", true, true},
                        {"DispatchMessageW", true, false},
                        {"DefWindowProcW", true, true},
                        {"PostQuitMessage", true, true},
                        {"GetSystemPowerStatus", true, true},
                        {"SendMessageW", true, true},
                        {"UnregisterSuspendResumeNotification", true, true}};
  for (const Case& one : cases) {
    for (const platform::DWORD code :
         {platform::ERROR_GEN_FAILURE, FaultPlan::kFault, FaultPlan::kNoMemory}) {
      SCOPED_TRACE(std::string(one.operation) + " " + std::to_string(code));
      if (one.always) {
        Pc().Faults().FailAlways(one.operation, code);
      } else {
        Pc().Faults().FailCall(one.operation, 1, code);
      }
      CPowerWindow& window = Open();
      window.AddSubscriber(Sleeper::CreateObject(&told).get());
      Broadcast({10, 4, 18});
      RunFor(3s);
      EXPECT_EQ(TakeTold(), one.hears ? "aS aR " : "");
      window.Shutdown();
      RunFor(3s);
      EXPECT_EQ(Pc().LiveThreads(), 0);
      EXPECT_EQ(Windows().OpenWindows(), 0u);
      EXPECT_EQ(LiveObjectCount(), 0u);
      Pc().Faults().Clear();
    }
  }
}

TEST_F(PowerWindowTest, SaysWhenThereIsNoModuleAndNoThread) {
  Pc().Faults().FailCall("GetModuleHandleW", 1, platform::ERROR_GEN_FAILURE);
  Open().Shutdown();
  EXPECT_NE(Pc().ConsoleText().find(
                "]CPowerWindow::create_window: GetModuleHandle() failed, aborting....\n"),
            std::string::npos);
  for (const platform::DWORD code :
       {platform::ERROR_NOT_ENOUGH_MEMORY, FaultPlan::kFault, FaultPlan::kNoMemory}) {
    Pc().Faults().FailCall("CreateThread", 1, code);
    EXPECT_FALSE(CPowerWindow::GetInstance().Initialize(10, 10)) << code;
    EXPECT_FALSE(CPowerWindow::GetInstance().IsRunning()) << code;
  }
}

}  // namespace corvane::test
