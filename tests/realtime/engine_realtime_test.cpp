// The load-balance engine on real threads with a fast clock: its link and discovery threads, the
// command worker, and a driver that reads the tables all the while.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "any_host/temp_directory.h"
#include "engine/engine.h"
#include "engine/engine_snapshot.h"
#include "foundation/log_lines.h"
#include "foundation/singleton.h"
#include "foundation/smart_obj.h"
#include "lb/lb_config.h"
#include "platform/clock_api.h"
#include "platform/linux/host_threads.h"
#include "platform/linux/linux_host.h"
#include "platform/platform.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using namespace std::chrono_literals;
using platform::linux_host::LinuxHost;
using platform::sim::SimDevices;
using platform::sim::SimDriver;

constexpr double kSpeed = 20.0;

platform::sim::World Desk() {
  const std::string path = SourceDir() + "/worlds/desk-with-cables.json";
  return platform::sim::ParseWorld(platform::ReadTextFile(path), path);
}

// What clients order and the main loop does, one thing every few seconds.
void Order(std::size_t turn) {
  CLBConfig& engine = CLBConfig::GetInstance();
  switch (turn % 7) {
    case 0:
      EXPECT_TRUE(engine.Pause());
      break;
    case 1:
      EXPECT_TRUE(engine.Resume());
      break;
    case 2:
    case 3:
      EXPECT_TRUE(engine.SetLBWeightMode(turn % 2 + 1));
      break;
    case 4:
      engine.EnableLBEngine(2, false);  // fails while the driver is gone
      break;
    case 5:
      EXPECT_TRUE(engine.DisableLBEngine(true, true));
      break;
    default:
      EXPECT_TRUE(engine.EnableLBEngine(1, true));
      break;
  }
}

}  // namespace

TEST(EngineRealtime, LivesThroughADeskBesideADriverThatReads) {
  const TempDirectory directory;
  const std::uint64_t maskBefore = g_DebugMask.exchange(0);
  {
    LinuxHost host({.home = directory / "home", .speed = kSpeed}, Desk());
    SimDriver& driver = host.Devices().Driver();
    CLBConfig& engine = CLBConfig::GetInstance();
    bool created = false;
    EXPECT_TRUE(engine.Initialize(&created, true, false));
    ASSERT_EQ(engine.BeginThread(), 0);

    std::atomic<bool> stop{false};
    std::thread reader([&] {
      for (int i = 0; !stop; ++i) {
        driver.Glance();
        if (i % 100 == 0) driver.Tell();
        std::this_thread::sleep_for(50us);
      }
    });
    LBEngineSnapshot seen;
    const auto duration = platform::ULONGLONG{7 * 60'000};
    const auto begin = Os().clock.GetTickCount64();
    for (std::size_t turn = 0; Os().clock.GetTickCount64() - begin < duration; ++turn) {
      std::this_thread::sleep_for(9s / kSpeed);
      LB_SnapshotEngine(&seen);
      Order(turn);
    }
    engine.Stop(20'000);
    LB_StopEngine();
    stop = true;
    reader.join();

    const SimDriver::Report told = driver.Tell();
    for (const std::string& finding : told.findings) ADD_FAILURE() << finding;
    EXPECT_GT(told.walks, 1000u);
    EXPECT_GT(told.heard.size(), 10u);
    EXPECT_GT(told.handshakes, 3u);
    EXPECT_TRUE(host.Threads().AwaitAbandoned(10'000));
    singletons::DropAll();
    EXPECT_EQ(host.Devices().CountOutstanding(), SimDevices::Outstanding{});
  }
  EXPECT_EQ(LiveObjectCount(), 0u);
  g_DebugMask = maskBefore;
}

}  // namespace corvane::test
