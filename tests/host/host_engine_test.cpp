// The load-balance engine where there is no driver for it.

#include <gtest/gtest.h>
#include <signal.h>

#include <thread>

#include "any_host/temp_directory.h"
#include "host/program.h"
#include "platform/linux/host_heap.h"
#include "platform/types.h"

namespace corvane::test {

using namespace platform;

TEST(HostHeap, GivesZeroedBlocksAndTakesThemBack) {
  linux_host::HostHeap heaps;
  HANDLE const heap = heaps.HeapCreate(0, 0x200000, 0);
  ASSERT_TRUE(heap);
  auto* const first = static_cast<char*>(heaps.HeapAlloc(heap, HEAP_ZERO_MEMORY, 0x1000000));
  ASSERT_TRUE(first);
  EXPECT_EQ(first[0] + first[0xFFFFFF], 0);
  void* const second = heaps.HeapAlloc(heap, HEAP_ZERO_MEMORY, 16);
  EXPECT_TRUE(heaps.HeapFree(heap, 0, second));
  EXPECT_FALSE(heaps.HeapFree(heap, 0, &heaps)) << "a block of somebody else";
  EXPECT_TRUE(heaps.HeapDestroy(heap));  // the first block goes along
}

TEST(HostEngine, IsMissedInOneLineAndTheServiceGoesOn) {
  using namespace std::chrono_literals;
  const TempDirectory directory;
  const std::string home = directory / "home";
  const std::string store = "sqlite3 " + home + "/registry.db \"";
  const std::map<std::string, std::string> environment = {{"CORVANE_HOME", home},
                                                          {"CORVANE_SPEED", "50"}};
  const auto awaitOutput = [](const Program& program, const char* text) {
    for (int i = 0; i < 600 && program.Output().find(text) == std::string::npos; ++i)
      std::this_thread::sleep_for(100ms);
    return program.Output().find(text);
  };
  constexpr char kMissed[] = "corvane: the load-balance driver is not there";
  constexpr char kWorks[] = "Currently Connected to";

  Program first(directory / "first", environment);
  ASSERT_NE(awaitOutput(first, kWorks), std::string::npos) << first.Output();
  EXPECT_EQ(first.Output().find(kMissed), std::string::npos) << "nobody has asked for it";
  first.Signal(SIGTERM);
  ASSERT_EQ(first.Wait(60s), 0);
  const std::string enable =
      store + "UPDATE registry SET value = 1 WHERE name = 'LBPaused'; INSERT INTO registry " +
      "SELECT key, 'LBEnabled', type, 1 FROM registry WHERE name = 'LBPaused'\"";
  ASSERT_EQ(std::system(enable.c_str()), 0);

  Program second(directory / "second", environment);
  ASSERT_NE(awaitOutput(second, kWorks), std::string::npos) << second.Output();
  const std::size_t missed = second.Output().find(kMissed);
  EXPECT_NE(missed, std::string::npos) << second.Output();
  EXPECT_EQ(second.Output().find(kMissed, missed + 1), std::string::npos) << "it is said twice";
  EXPECT_NE(second.Output().find("LoadBalanceConfig(2,2) FAILED! rc=321"), std::string::npos);
  second.Signal(SIGTERM);
  EXPECT_EQ(second.Wait(60s), 0);
}

}  // namespace corvane::test
