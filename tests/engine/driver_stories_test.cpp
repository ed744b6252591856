#include <cstring>

#include "engine/driver_records.h"
#include "engine/engine.h"
#include "engine/engine_snapshot.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/devices/sim_driver_table.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "support/pc_fixture.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using namespace platform;
using namespace platform::sim;

World Desk() {
  const std::string path = SourceDir() + "/worlds/desk-with-cables.json";
  return ParseWorld(ReadTextFile(path), path);
}

// The engine and the simulated driver, on a desk with everything that can be plugged in.
class DriverStory : public PcTest {
 protected:
  DWORD Start(const World& world, const PcOptions& options = {}) {
    Boot(world, options);
    RunFor(1s);
    return LB_InitializeEngine(&info);
  }
  void TearDown() override {
    LB_StopEngine();
    for (const std::string& finding : Told().findings) ADD_FAILURE() << finding;
    Pc().EndThreads();
    ResetProcessState();
    EXPECT_EQ(Pc().Devices().CountOutstanding(), SimDevices::Outstanding{});
    PcTest::TearDown();
  }
  void RunTo(std::chrono::milliseconds at) { RunFor(at - Pc().Now()); }
  SimDriver::Report Told() { return Pc().Devices().Driver().Tell(); }
  void Look() { ASSERT_TRUE(LB_SnapshotEngine(&seen)); }
  // The slot of the adapter whose description begins so; 99 for none.
  std::size_t Find(const std::u16string& description) {
    for (std::size_t i = 0; i < kAdapterSlots; ++i) {
      const LBAdapterSlot& slot = seen.table->slots[i];
      const std::u16string_view text(slot.description, std::size(slot.description));
      if (slot.index != kNoIndex && text.starts_with(description)) return i;
    }
    return 99;
  }
  const LBAdapterSlot& Slot(const std::u16string& description) {
    return seen.table->slots[Find(description)];
  }
  // What was heard of a device since, "kind:value" with a blank between them.
  std::string Heard(DWORD device, std::chrono::milliseconds from) {
    std::string text;
    for (const SimDriver::Heard& one : Told().heard) {
      if (one.device != device || one.atMs < static_cast<std::uint64_t>(from.count())) continue;
      text +=
          (text.empty() ? "" : " ") + std::to_string(one.kind) + ":" + std::to_string(one.value);
    }
    return text;
  }

  LBEngineInfo info;
  LBEngineSnapshot seen;
};

TEST_F(DriverStory, CableAndRadioBehindOneRouterShareAGatewaySlot) {
  EXPECT_EQ(Start(Desk()), 0u);
  RunTo(38s);
  Look();
  ASSERT_NE(Find(u"Vantor Gale G2"), 99u);
  ASSERT_NE(Find(u"Vantor Breeze W1"), 99u);
  const std::uint8_t gateway = Slot(u"Vantor Gale G2").gateway;
  ASSERT_LT(gateway, kGatewaySlots);
  EXPECT_EQ(Slot(u"Vantor Breeze W1").gateway, gateway);
  EXPECT_EQ(seen.table->gateways[gateway].adapters, 2);
  EXPECT_EQ(Told().steered.size(), 2u);
  EXPECT_EQ(Slot(u"Vantor Gale G2").networkFlags, 0xAu);  // private, Internet
  EXPECT_EQ(Find(u"Software Loopback"), 99u);
}

TEST_F(DriverStory, HearsOfACableThatIsPulledAndPutBack) {
  EXPECT_EQ(Start(Desk()), 0u);
  RunTo(50s);
  Look();
  const auto cable = static_cast<DWORD>(Find(u"Vantor Gale G2"));
  EXPECT_EQ(seen.table->slots[cable].gateway, kNoIndex);
  EXPECT_EQ(seen.table->Header().steerable, 1u);
  EXPECT_NE(Heard(cable, 40s).find(":2"), std::string::npos) << Heard(cable, 40s);
  RunTo(75s);
  Look();
  EXPECT_LT(seen.table->slots[cable].gateway, kGatewaySlots);
  EXPECT_EQ(seen.table->Header().steerable, 2u);
  EXPECT_NE(Heard(cable, 60s), "");
}

TEST_F(DriverStory, HearsOfTheTunnelOnceAsItComesAndOnceAsItGoes) {
  EXPECT_EQ(Start(Desk()), 0u);
  RunTo(78s);
  EXPECT_EQ(Heard(kAllDevices, 70s), "");
  RunTo(95s);
  Look();
  EXPECT_EQ(seen.tunnelWord, 1u);
  EXPECT_EQ(seen.table->Header().steerable, 2u);
  EXPECT_EQ(seen.table->Header().steerableNow, 1u);
  EXPECT_EQ(Heard(kAllDevices, 70s), "8:1");
  RunTo(108s);
  EXPECT_EQ(Heard(kAllDevices, 70s), "8:1 8:2");
}

TEST_F(DriverStory, AThirdAddressOfAGatewayTakesTheSecondPlace) {
  EXPECT_EQ(Start(Desk()), 0u);
  RunTo(160s);
  Look();
  const LBGatewaySlot& gateway = seen.table->gateways[Slot(u"Vantor Gale G2").gateway];
  EXPECT_EQ(gateway.ip4Count, 2u);
  EXPECT_EQ(gateway.ip4[0], 0x0101A8C0u);
  EXPECT_EQ(gateway.ip4[1], 0x0301A8C0u);
  EXPECT_EQ(Slot(u"Vantor Gale G2").ip4, 0x0B01A8C0u);
}

TEST_F(DriverStory, TheSeventeenthAdapterIsNotInThePicture) {
  World world = Desk();
  OtherAdapter cable = world.otherAdapters[1];
  world.timeline.clear();
  world.adapters.clear();
  world.profiles.clear();
  world.otherAdapters.clear();
  for (int i = 0; i < 17; ++i) {
    cable.friendlyName = std::u16string(1, static_cast<char16_t>(u'a' + i));
    cable.ifIndex = static_cast<DWORD>(200 + i);
    cable.guid.Data1 = static_cast<DWORD>(i + 1);
    cable.mac[5] = static_cast<BYTE>(i);
    cable.ip.unicast.resize(1);
    cable.ip.unicast[0].bytes[3] = static_cast<BYTE>(100 + i);
    world.otherAdapters.push_back(cable);
  }
  EXPECT_EQ(Start(world), 0u);
  RunTo(20s);
  Look();
  EXPECT_EQ(seen.table->Header().steerable, 16u);
  EXPECT_EQ(seen.table->slots[15].ip4 >> 24, 115u);
}

// A wait that fails ends the link thread, and the passes with it, so few calls do.
TEST_F(DriverStory, LivesThroughAllOfTheDeskWithFaults) {
  PcOptions options;
  options.seed = 3;
  options.interleave = true;
  Boot(Desk(), options);
  RunFor(1s);
  Pc().Faults().FailRandomly(0.005, options.seed);
  LB_InitializeEngine(&info);
  RunTo(420s);
  Pc().Faults().Clear();
  EXPECT_GT(Told().walks, 100u);
}

// A driver that finds nothing in a torn table would prove nothing.
TEST_F(DriverStory, FindsWhatIsTorn) {
  EXPECT_EQ(Start(Desk()), 0u);
  RunTo(30s);
  const auto torn = [&](std::size_t slot, auto&& spoil) {
    auto* const table = reinterpret_cast<LBEngineTable*>(info.table);
    std::vector<std::uint32_t> words(SimDriverTable::WordsToCopy());
    auto copy = std::make_unique<LBEngineTable>();
    std::memcpy(copy.get(), table, sizeof(LBEngineTable));
    std::memcpy(words.data(), copy.get(), words.size() * 4);
    EXPECT_EQ(SimDriverTable(words).CheckSettled(), "");
    spoil(&copy->slots[slot], copy.get());
    std::memcpy(words.data(), copy.get(), words.size() * 4);
    return !SimDriverTable(words).CheckSettled().empty();
  };
  Look();
  const std::size_t cable = Find(u"Vantor Gale G2");
  using S = LBAdapterSlot;
  using T = LBEngineTable;
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->index = kNoIndex; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->index = 14; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->gateway = kNoIndex; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->moreGlobalCount = 11; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->moreGlobalCount = 1; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->moreGlobal[1][0] = 1; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->ip4Count = 2; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T*) { slot->upWord = 0; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T* t) { ++t->gateways[slot->gateway].adapters; }));
  EXPECT_TRUE(torn(cable, [](S* slot, T* t) { t->gateways[slot->gateway].state = 1; }));
  EXPECT_TRUE(torn(cable, [](S*, T* t) { ++t->Header().steerable; }));
  EXPECT_TRUE(torn(cable, [](S*, T* t) { ++t->Header().ownAdapters; }));
  EXPECT_TRUE(torn(cable, [](S*, T* t) { --t->Header().steerableNow; }));
}

// Records that the engine never makes.
class StrictDriver : public PcTest {
 protected:
  bool Finds(DWORD code, std::vector<std::uint8_t> in, bool answers) {
    SimDriver& driver = Pc().Devices().Driver();
    const std::size_t before = driver.Tell().findings.size();
    HANDLE const device = driver.CreateFileW(u"\\\\.\\FlowSplitDrv", 0xC0000000, 3);
    const auto size = static_cast<DWORD>(in.size());
    driver.DeviceIoControl(device, code, in.empty() ? nullptr : in.data(), size,
                           answers ? in.data() : nullptr, answers ? size : 0, nullptr);
    driver.CloseHandle(device);
    return driver.Tell().findings.size() > before;
  }
};

TEST_F(StrictDriver, FindsRecordsThatAreNotItsOwn) {
  Boot(Desk());
  const std::vector<std::uint8_t> steer = {0x0D, 0xF0, 0xED, 0xFE, 2, 0, 0, 0, 1, 0, 0, 0};
  EXPECT_FALSE(Finds(0x120420, steer, true));
  EXPECT_TRUE(Finds(0x120420, steer, false));
  std::vector<std::uint8_t> bad = steer;
  bad[4] = 3;
  EXPECT_TRUE(Finds(0x120420, bad, true));
  bad = steer;
  bad[0] = 0;
  EXPECT_TRUE(Finds(0x120420, bad, true));
  EXPECT_FALSE(Finds(0x120260, std::vector<std::uint8_t>(8), false));
  EXPECT_TRUE(Finds(0x120260, std::vector<std::uint8_t>(4), false));
  EXPECT_TRUE(Finds(0x120004, std::vector<std::uint8_t>(40), true));  // no magic, no tables
  EXPECT_TRUE(Finds(0x120448, std::vector<std::uint8_t>(16), false));
  EXPECT_TRUE(Finds(0x12000C, {}, false));
  EXPECT_FALSE(Finds(0x120008, {}, false));
}

}  // namespace

}  // namespace corvane::test
