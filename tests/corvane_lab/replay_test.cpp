#include "corvane_lab/replay.h"

#include <gtest/gtest.h>

#include <chrono>

#include "corvane_lab/recorded_track.h"
#include "corvane_lab/recorded_world.h"
#include "corvane_lab/run_recording.h"
#include "corvane_lab/service_run.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"

namespace corvane::lab {
namespace {

using namespace std::chrono_literals;
using platform::sim::World;

// What the service records of a world, from its start to its orderly stop.
Recording Record(World world, std::chrono::milliseconds length) {
  SetRecording(&world, 1);
  platform::sim::SimulatedPc pc(world, {});
  ServiceRun service(pc);
  service.Start();
  pc.RunFor(length);
  EXPECT_TRUE(service.Stop());
  return ReadRecording(RecordingOf(pc)).at(0);
}

TEST(Replay, DecidesAndScoresAsTheRecordedRunDid) {
  for (const char* name : {"home", "office-walk", "two-adapters", "trickle", "driver-roams"}) {
    const std::string file = std::string("worlds/") + name + ".json";
    const World world = platform::sim::ParseWorld(platform::ReadTextFile(file), file);
    const Recording run = Record(world, std::chrono::milliseconds(world.durationMs));
    const ReplayResult result = Replay(run, WorldOfRecording(run), 1);
    EXPECT_GT(result.rounds, 50u) << name;
    EXPECT_EQ(result.unmatched, 0u) << name;
    const auto share = [](std::uint64_t same, std::uint64_t all) {
      return static_cast<double>(same) / static_cast<double>(all);
    };
    EXPECT_GE(share(result.roundsSame, result.rounds), 0.95) << name;
    EXPECT_GE(share(result.scoresSame, result.scores), 0.9) << name;
    EXPECT_EQ(result.differences.size(), result.rounds - result.roundsSame) << name;
  }
}

TEST(Replay, AnotherDecisionIsToldWithWhatWasUnlike) {
  const std::string file = "worlds/home.json";
  const World world = platform::sim::ParseWorld(platform::ReadTextFile(file), file);
  Recording run = Record(world, 2min);
  Recording::Round& round = run.rounds.at(4);
  round.steps = {{"wired-lan", {}}};
  ASSERT_FALSE(run.rounds.back().scores.empty());
  const ReplayResult result = Replay(run, WorldOfRecording(run), 1);
  ASSERT_EQ(result.differences.size(), 1u);
  EXPECT_EQ(result.differences[0].ms, round.ms);
  EXPECT_EQ(result.differences[0].recorded, "wired-lan");
}

// On the simulated PC the strength shows as both numbers, where they are of one scale.
TEST(RecordedSignal, ShowsAsItWasRecorded) {
  for (double dbm = -99.5; dbm <= -50.0; dbm += 0.05) {
    const auto rssi = static_cast<std::int32_t>(dbm - 0.5);
    const auto quality = platform::sim::LinkQualityOf(dbm);
    const double again = DbmOf(rssi, quality);
    EXPECT_EQ(platform::sim::LinkQualityOf(again), quality) << dbm;
    EXPECT_EQ(static_cast<std::int32_t>(again - 0.5), rssi) << dbm;
  }
  EXPECT_EQ(DbmOf(-40, 100), -40.0);
  EXPECT_EQ(DbmOf(-70, 100), -50.0) << "another scale: scores go by the quality";
  EXPECT_EQ(DbmOf(-105, 0), -105.0);
}

Recording Heard(std::vector<Recording::Reading> readings) {
  Recording run;
  run.adapters.push_back({0, "", "Wi-Fi", "", "", "ax"});
  run.accessPoints.push_back({0, {2, 0, 0, 0, 0, 1}, "x", 5180000, 8, 1, 17, 100});
  run.elementBytes = {
      "\x0b\x05"
      "12345",
      "\x0b\x05"
      "54321"};
  run.readings = std::move(readings);
  run.lengthMs = 100'000;
  return run;
}

TEST(RecordedTrack, HasGapsWhereAScanMissedIt) {
  const World world = WorldOfRecording(Heard({{10'000, 0, true, {{0, -60, 80, 0}}, {}},
                                              {20'000, 0, true, {{0, -70, 60, 1}}, {}},
                                              {30'000, 0, true, {}, {}},
                                              {40'000, 0, false, {}, {}},
                                              {50'000, 0, true, {{0, -80, 40, 1}}, {}}}));
  ASSERT_EQ(world.accessPoints.size(), 1u);
  const auto& ap = world.accessPoints[0];
  const auto at = [&](std::uint64_t ms) {
    return platform::sim::HeardDbm(world, world.adapters[0], ap, std::nullopt, {}, ms, 1);
  };
  EXPECT_EQ(at(1000), -60.0) << "before the first reading as in it";
  EXPECT_EQ(at(10'400), -60.0);
  EXPECT_NEAR(at(15'000).value_or(0), -65.0, 0.01);
  EXPECT_EQ(at(24'000), -70.0);
  EXPECT_EQ(at(26'000), std::nullopt);
  EXPECT_EQ(at(39'000), std::nullopt);
  EXPECT_EQ(at(41'000), -80.0) << "from the middle between the scan that missed it";
  EXPECT_EQ(at(90'000), -80.0);
  ASSERT_EQ(ap.sent.size(), 2u);
  EXPECT_EQ(ap.sent[1].atMs, 15'000u);
  EXPECT_EQ(*platform::sim::SentAt(ap, 14'999), ap.sent[0].bytes);
  EXPECT_EQ(*platform::sim::SentAt(ap, 15'000), ap.sent[1].bytes);
}

}  // namespace
}  // namespace corvane::lab
