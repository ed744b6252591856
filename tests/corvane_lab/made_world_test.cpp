#include "corvane_lab/made_world.h"

#include <gmock/gmock.h>

#include <set>

#include "corvane_lab/air_truth.h"
#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "platform/sim/world/world_loader.h"

namespace corvane::lab {
namespace {

using platform::sim::World;

World Made(const std::string& kind, std::uint64_t seed, const MadeOptions& options = {}) {
  return platform::sim::ParseWorld(MadeWorldText(kind, seed, options),
                                   kind + "-" + std::to_string(seed));
}

// A place to choose an access point in, for as long as somebody stays: something of its own is
// heard for most of the time, and there is traffic, but not all the time.
void ExpectAStory(const World& world) {
  constexpr std::uint64_t kMinuteMs = 60'000;
  EXPECT_GE(world.durationMs, 20 * kMinuteMs);
  EXPECT_LE(world.durationMs, 60 * kMinuteMs);
  const Truth truth = LookAhead(world, 1, world.durationMs / 1000);
  for (const AdapterTruth& adapter : truth.adapters) {
    std::size_t heard = 0, busy = 0, choices = 0;
    for (std::size_t second = 0; second < truth.seconds; ++second) {
      std::size_t usable = 0;
      for (std::size_t ap = 0; ap < truth.accessPoints; ++ap) usable += adapter.letsIn[ap][second];
      heard += usable > 0;
      choices += usable > 1;
      busy += adapter.busy[second];
    }
    EXPECT_GT(heard, truth.seconds * 8 / 10) << world.name;
    EXPECT_GT(choices, truth.seconds / 2) << world.name;
    EXPECT_GT(busy, truth.seconds / 20) << world.name;
    EXPECT_LT(busy, truth.seconds * 9 / 10) << world.name;
  }
}

TEST(MadeWorldTest, EveryKindIsAStoryThatTheReaderAccepts) {
  EXPECT_GE(MadeKinds().size(), 12u);
  std::set<std::string> bssids;
  for (const MadeKind& kind : MadeKinds()) {
    for (const std::uint64_t seed : {0u, 1u, 2u, 77u}) {
      SCOPED_TRACE(std::string(kind.name) + " " + std::to_string(seed));
      const World world = Made(kind.name, seed);
      EXPECT_EQ(world.name, kind.name + std::string("-") + std::to_string(seed));
      ExpectAStory(world);
      // The air is drawn by BSSID: no two worlds have the same.
      const auto& bssid = world.accessPoints[0].bssid;
      EXPECT_TRUE(bssids.insert(std::string(bssid.begin(), bssid.end())).second);
    }
  }
}

TEST(MadeWorldTest, IsAFunctionOfItsWords) {
  EXPECT_EQ(MadeWorldText("office", 4, {}), MadeWorldText("office", 4, {}));
  EXPECT_NE(MadeWorldText("office", 4, {}), MadeWorldText("office", 6, {}));
}

TEST(MadeWorldTest, OptionsGoWithEveryKind) {
  for (const MadeKind& kind : MadeKinds()) {
    SCOPED_TRACE(kind.name);
    const MadeOptions all{true, true, true, true};
    const World world = Made(kind.name, 5, all);
    ASSERT_EQ(world.adapters.size(), 2u);
    for (const auto& adapter : world.adapters) {
      EXPECT_TRUE(adapter.roaming.enabled);
      EXPECT_EQ(adapter.connectedTo, platform::sim::Mac{});
    }
    const AirTruth air(world, 1);
    EXPECT_GT(air.TrafficMbps(1), 0.05);
    EXPECT_LT(air.TrafficMbps(1), kPhaseMbps) << "a trickle is no phase";
    // What an option asks for changes nothing else.
    EXPECT_EQ(world.accessPoints.size(), Made(kind.name, 5).accessPoints.size());
  }
}

TEST(MadeWorldTest, KindsBringTheirOwnTrouble) {
  EXPECT_EQ(Made("cold", 1).adapters[0].connectedTo, platform::sim::Mac{});
  EXPECT_NE(Made("flat", 1).adapters[0].connectedTo, platform::sim::Mac{});
  EXPECT_TRUE(Made("driver", 1).adapters[0].roaming.enabled);
  EXPECT_EQ(Made("pair", 1).adapters.size(), 2u);
  EXPECT_GT(AirTruth(Made("background", 1), 1).TrafficMbps(0), 0.05);
  const World bands = Made("bands", 1);
  EXPECT_TRUE(std::ranges::any_of(bands.accessPoints,
                                  [](const auto& ap) { return ap.frequencyMhz > 5925; }));
}

TEST(MadeWorldTest, TheCommandTellsWhatIsWrong) {
  EXPECT_THROW(MakeWorldCommand({"castle", "--seed", "1"}), UsageError);
  EXPECT_THROW(MakeWorldCommand({"flat"}), UsageError) << "a seed is chosen, not assumed";
  testing::internal::CaptureStdout();
  EXPECT_EQ(MakeWorldCommand({"flat", "--seed", "1"}), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), MadeWorldText("flat", 1, {}));
}

}  // namespace
}  // namespace corvane::lab
