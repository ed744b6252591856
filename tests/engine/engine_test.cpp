// Start, stop and the link to the driver, on real threads whose waits take a hundredth.

#include "engine/engine.h"

#include <chrono>
#include <thread>

#include "engine/discovery_thread.h"
#include "engine/driver_link.h"
#include "engine/engine_bits.h"
#include "engine/engine_snapshot.h"
#include "engine/fake_machine.h"
#include "support/platform_test.h"

namespace corvane::engine_test {
namespace {

using namespace platform;

class EngineTest : public test::PlatformTest {
 protected:
  EngineTest() : machine(std::make_unique<FakeMachine>()) {
    g_DebugMask = 0;
    machine->ipHelper.adapters = {{u"Realtek PCIe GbE", {2, 0, 0, 0, 0, 1}}};
    machine->ipHelper.adapters[0].addresses = {"192.168.1.5/24"};
  }
  void TearDown() override {
    LB_StopEngine();
    os.threads.JoinAll();
    singletons::DropAll();
    EXPECT_EQ(machine->Open(), 0);
    machine.reset();
    PlatformTest::TearDown();
  }

  template <class Condition>
  static bool Await(Condition&& condition) {
    for (int i = 0; i < 2000; ++i) {
      if (condition()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
  }
  // A thread that is slow to end is given up, and lets go a moment later.
  bool LetsGo() {
    return Await([&] { return machine->Open() == 0; });
  }
  static std::uint32_t StateWord() {
    LBEngineSnapshot snapshot;
    return LB_SnapshotEngine(&snapshot) ? snapshot.stateWord : 0;
  }
  static bool Runs() {
    LBEngineSnapshot snapshot;
    return LB_SnapshotEngine(&snapshot);
  }
  FakeDriver& Driver() { return machine->driver; }

  LBEngineInfo info;
  std::unique_ptr<FakeMachine> machine;
};

TEST_F(EngineTest, HandsItsTablesOverAndStarts) {
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  EXPECT_EQ(LB_InitializeEngine(&info), ERROR_ALREADY_INITIALIZED);
  EXPECT_TRUE(Await([] { return StateWord() == 24; }));  // the device held, the driver ready
  EXPECT_EQ(Driver().Count(control::kStart), 1);
  EXPECT_EQ(machine->services.starts, 0);
  for (const FakeDriver::Call& call : Driver().Calls()) {
    if (call.code == control::kOpened) {
      EXPECT_EQ(call.input, Bytes(8));
    }
    if (call.code != control::kHandshake) continue;
    ASSERT_EQ(call.input.size(), 40u);
    std::uint32_t words[10];
    std::memcpy(words, call.input.data(), sizeof(words));
    EXPECT_EQ(words[0], 0xFEEDF00Du);
    EXPECT_EQ(words[1], 2u);
    EXPECT_EQ(words[2], 112704u);
    EXPECT_EQ(std::memcmp(&words[4], &info.table, 8), 0);
    EXPECT_EQ(words[6], 0x1000000u);
    const auto* link = reinterpret_cast<const std::uint16_t*>(std::uintptr_t{words[8]} |
                                                              std::uintptr_t{words[9]} << 32);
    for (const std::size_t at : {0ul, 1048575ul * 8}) {
      EXPECT_EQ(link[at], 0);
      EXPECT_EQ(link[at + 1], 0xFFFF);
    }
  }
  EXPECT_TRUE(Await([&] { return !Driver().TakeNotifications().empty(); }));
  LB_StopEngine();
  EXPECT_EQ(Driver().Count(control::kStop), 1);
  EXPECT_FALSE(Runs());
  LB_StopEngine();
  EXPECT_EQ(Driver().Count(control::kStop), 1);
}

// Before the tables are made: the driver has the time they take to come up.
TEST_F(EngineTest, StartsTheServiceOfTheDriverWhereItIsDown) {
  machine->services.state = SERVICE_STOPPED;
  machine->heap.failingAlloc = 0;
  EXPECT_EQ(LB_InitializeEngine(&info), ERROR_OUTOFMEMORY);
  EXPECT_EQ(machine->services.starts, 1);
  EXPECT_EQ(machine->services.open, 0);
  machine->heap.createFails = true;
  EXPECT_EQ(LB_InitializeEngine(&info), ERROR_OUTOFMEMORY);
  EXPECT_EQ(machine->services.starts, 1) << "without a heap nothing is begun";
}

TEST_F(EngineTest, LeavesNothingRunningWithoutItsDriver) {
  Driver().present = false;
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  EXPECT_FALSE(Runs());
  EXPECT_EQ(info.table, 0u);
  EXPECT_TRUE(LetsGo());
  EXPECT_EQ(LoadBalanceConfig(2, 1), ERROR_DEVICE_UNREACHABLE);
}

TEST_F(EngineTest, LeavesNothingRunningWhenItCannotStart) {
  const auto fails = [&](DWORD code, const char* what) {
    EXPECT_EQ(LB_InitializeEngine(&info), code) << what;
    EXPECT_FALSE(Runs()) << what;
    EXPECT_TRUE(LetsGo()) << what;
  };
  Driver().answer = 3;
  fails(ERROR_REVISION_MISMATCH, "another revision");
  Driver().answer = 4;
  fails(ERROR_INVALID_PARAMETER, "a bad record");
  Driver().answer = 1;
  machine->heap.createFails = true;
  fails(ERROR_OUTOFMEMORY, "no heap");
  machine->heap.createFails = false;
  machine->heap.failingAlloc = machine->heap.Allocs();
  fails(ERROR_OUTOFMEMORY, "no room for the first table");
  machine->heap.failingAlloc = machine->heap.Allocs() + 1;
  fails(ERROR_OUTOFMEMORY, "no room for the second table");
  machine->heap.failingAlloc = -1;
  os.failures.Fail("CreateEventW");
  fails(ERROR_NOT_READY, "no events");
  os.failures.Pass("CreateEventW");
  os.failures.Fail("CreateThread");
  fails(ERROR_INVALID_HANDLE, "no threads");
  os.failures.Pass("CreateThread");
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
}

TEST_F(EngineTest, OwesTheStartToADriverThatIsNotReadyYet) {
  Driver().answer = 5;
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  LBEngineSnapshot snapshot;
  ASSERT_TRUE(LB_SnapshotEngine(&snapshot));
  EXPECT_EQ(snapshot.stateWord & ~engine_state::kDeviceHeld, engine_state::kNotYet);
  EXPECT_EQ(snapshot.owedWord, kStartOwed);
  EXPECT_EQ(Driver().Count(control::kStart), 0);
  Driver().answer = 1;
  EXPECT_TRUE(Await([&] { return Driver().Count(control::kStart) == 1; }));
  ASSERT_TRUE(LB_SnapshotEngine(&snapshot));
  EXPECT_EQ(snapshot.stateWord, engine_state::kDeviceHeld | engine_state::kDriverReady);
  EXPECT_EQ(snapshot.owedWord, 0u);
}

// The thread of the start is held up behind the handshake for so long that the discovery thread
// makes the next one meanwhile, and comes to owe the start while the driver is answering that.
TEST_F(EngineTest, SendsAStartThatCameToBeOwedDuringTheHandshake) {
  const auto state = CLBEngineState::CreateObject();
  ASSERT_EQ(state->LBBuildTables(), ERROR_INVALID_HANDLE);
  ASSERT_EQ(state->CreateHeap(), 0u);
  ASSERT_EQ(state->LBBuildTables(), 0u);
  ASSERT_EQ(state->CreateEvents(), 0u);
  state->SetState(engine_state::kDeviceHeld | engine_state::kNotYet);
  state->SetBuilt();
  Driver().onControl = [&](std::uint32_t code) {
    if (code == control::kHandshake) LBSendStart(*state);
  };
  const auto discovery = CLBDiscoveryThread::CreateObject(state);
  ASSERT_EQ(discovery->BeginThread(), 0);
  EXPECT_TRUE(Await([&] { return Driver().Count(control::kStart) == 1; }));
  EXPECT_EQ(state->m_OwedWord, 0u);
  state->RaiseStop();
  state->WakeThreads();
  discovery->Stop(100'000);
}

// A fault of an event costs a wake-up or a turn, never a thread.
TEST_F(EngineTest, LivesThroughFaultsOfItsEvents) {
  struct Row {
    const char* operation;
    DWORD code;
  };
  for (const Row& row : {Row{"SetEvent", test::FailureSwitch::kFault}, Row{"SetEvent", 6},
                         Row{"ResetEvent", test::FailureSwitch::kFault}, Row{"ResetEvent", 6}}) {
    os.failures.Fail(row.operation, row.code);
    EXPECT_EQ(LB_InitializeEngine(&info), 0u) << row.operation;
    const int before = machine->ipHelper.lists;
    EXPECT_TRUE(Await([] { return StateWord() == 24; })) << row.operation;
    EXPECT_TRUE(Await([&] { return machine->ipHelper.lists > before + 2; })) << row.operation;
    LB_StopEngine();
    EXPECT_FALSE(Runs());
    os.failures.Pass(row.operation);
    EXPECT_TRUE(Await([&] { return machine->Open() == 0 && os.threads.OpenHandles() == 0; }))
        << row.operation;
  }
}

// The link thread waits already, and a failed wait would end that one.
TEST_F(EngineTest, PassesGoOnThoughTheirWaitsFail) {
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  ASSERT_TRUE(Await([&] { return StateWord() == 24 && machine->ipHelper.lists > 0; }));
  os.failures.Fail("WaitForSingleObject");
  const int before = machine->ipHelper.lists;
  EXPECT_TRUE(Await([&] { return machine->ipHelper.lists > before + 5; }));
  EXPECT_LT(machine->ipHelper.lists, before + 50) << "without a pause";
  os.failures.Pass("WaitForSingleObject");
}

// Every step is told once, and nothing while nothing changes; without the setting nothing at all.
// (The link thread opens the device before or after the settings are read: its line may come.)
TEST_F(EngineTest, TellsWhatItDoesWhereTheSettingAsksForIt) {
  const std::vector<std::string> lines = {
      "LBEngine: handshake: err=0, answer=5, result=0",
      "LBEngine: start: owed",
      "LBEngine: handshake: err=0, answer=1, result=0",
      "LBEngine: start: err=0",
      "LBEngine: slot 0: taken by Realtek PCIe GbE",
      "LBEngine: adapters: 1 steerable, 0 of the maker's, 1 steerable now",
      "LBEngine: notification: DevId=-1, kind=1, value=0x0, err=0"};
  for (const std::uint32_t trace : {0u, 1u}) {
    machine->registry.Set(kEngineSettings, u"SvcLib_TraceEnabled", trace);
    Driver().answer = 5;
    Driver().onControl = [this, handshakes = 0](std::uint32_t code) mutable {
      if (code == control::kHandshake && ++handshakes == 2) Driver().answer = 1;
    };
    EXPECT_EQ(LB_InitializeEngine(&info), 0u);
    const int before = machine->ipHelper.lists;
    std::string told;
    const auto isTold = [&](const std::string& line) { return told.find(line) != told.npos; };
    EXPECT_TRUE(Await([&] {
      told += os.console.Output();
      return machine->ipHelper.lists > before + 10 &&
             (trace == 0 || std::all_of(lines.begin(), lines.end(), isTold));
    }));
    LB_StopEngine();
    told += os.console.Output();
    for (const std::string& line : lines) {
      const std::size_t at = told.find(line);
      EXPECT_EQ(at != std::string::npos, trace != 0) << line << "\n" << told;
      EXPECT_EQ(at == std::string::npos ? at : told.find(line, at + 1), std::string::npos) << line;
    }
  }
}

TEST_F(EngineTest, RemembersAHandshakeThatDidNotGetThrough) {
  Driver().failCode = control::kHandshake;
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  EXPECT_TRUE(Await([] { return (StateWord() & ~engine_state::kDeviceHeld) == 2; }));
  Driver().failCode = 0;
  EXPECT_TRUE(Await([&] { return Driver().Count(control::kStart) == 1; }));
}

TEST_F(EngineTest, HoldsNoDeviceThatDoesNotTakeTheFirstCall) {
  Driver().failCode = control::kOpened;
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  EXPECT_TRUE(Await([] { return (StateWord() & engine_state::kControlFailed) != 0; }));
  EXPECT_EQ(StateWord() & engine_state::kDeviceHeld, 0u);
  std::this_thread::sleep_for(std::chrono::milliseconds(150));
  EXPECT_EQ(machine->ipHelper.lists, 0);  // no pass without the device
  Driver().failCode = 0;
  EXPECT_TRUE(Await([] { return (StateWord() & engine_state::kDeviceHeld) != 0; }));
}

TEST_F(EngineTest, SteersThroughTheDriver) {
  EXPECT_EQ(LoadBalanceConfig(1, 2), 0u);
  const auto calls = Driver().Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].code, 0x120420u);
  EXPECT_EQ(calls[0].input, (Bytes{0x0D, 0xF0, 0xED, 0xFE, 1, 0, 0, 0, 2, 0, 0, 0}));
  Driver().failCode = control::kSteer;
  EXPECT_EQ(LoadBalanceConfig(2, 2), ERROR_GEN_FAILURE);
}

TEST_F(EngineTest, GivesEverythingBackAHundredTimes) {
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(LB_InitializeEngine(&info), 0u);
    if (i % 4 == 1) Driver().present = false;  // it vanishes in the middle
    LB_StopEngine();
    Driver().present = true;
    // A thread that a busy machine holds up is given up, and gives back when it has its turn.
    ASSERT_TRUE(Await([&] { return machine->Open() == 0 && os.threads.OpenHandles() == 0; })) << i;
  }
  EXPECT_EQ(os.threads.OpenSections(), 1);  // of the entry points themselves
}

TEST_F(EngineTest, GivesUpAThreadThatIsStuckInTheDriver) {
  std::atomic<bool> stuck{false}, hold{true};
  Driver().onControl = [&](std::uint32_t code) {
    if (code != control::kNotify) return;
    stuck = true;
    while (hold) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  };
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  ASSERT_TRUE(Await([&] { return stuck.load(); }));
  LB_StopEngine();
  EXPECT_FALSE(Runs());
  EXPECT_EQ(machine->heap.OpenHeaps(), 1);  // the driver may still look at the table
  hold = false;
  EXPECT_TRUE(LetsGo());
}

TEST_F(EngineTest, StopsThoughNobodyCanBeWoken) {
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  ASSERT_TRUE(Await([] { return StateWord() == 24; }));
  os.failures.Fail("SetEvent", test::FailureSwitch::kFault);
  LB_StopEngine();
  os.failures.Pass("SetEvent");
  EXPECT_FALSE(Runs());
  EXPECT_TRUE(LetsGo());
}

TEST_F(EngineTest, GoesWithoutAWordToItsDriver) {
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  LB_ReleaseEngine();
  EXPECT_FALSE(Runs());
  EXPECT_TRUE(LetsGo());
  EXPECT_EQ(Driver().Count(control::kStop), 0);
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
}

TEST_F(EngineTest, StopsInTheMiddleOfAPass) {
  std::atomic<bool> inPass{false};
  machine->ipHelper.onList = [&] { inPass = true; };
  EXPECT_EQ(LB_InitializeEngine(&info), 0u);
  ASSERT_TRUE(Await([&] { return inPass.load(); }));
  LB_StopEngine();
  EXPECT_TRUE(LetsGo());
}

TEST(HandshakeOutcome, FollowsFromTheAnswer) {
  EXPECT_EQ(OutcomeOf(1), (LBHandshakeOutcome{16, 0}));
  EXPECT_EQ(OutcomeOf(2), (LBHandshakeOutcome{16, 0}));
  EXPECT_EQ(OutcomeOf(3), (LBHandshakeOutcome{32, 1306}));
  EXPECT_EQ(OutcomeOf(4), (LBHandshakeOutcome{32, 87}));
  EXPECT_EQ(OutcomeOf(5), (LBHandshakeOutcome{64, 0}));
}

}  // namespace
}  // namespace corvane::engine_test
