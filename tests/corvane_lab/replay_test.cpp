#include "corvane_lab/replay.h"

#include <gtest/gtest.h>

#include <chrono>

#include "corvane_lab/anonymise.h"
#include "corvane_lab/recorded_switches.h"
#include "corvane_lab/recorded_track.h"
#include "corvane_lab/recorded_world.h"
#include "corvane_lab/recording_files.h"
#include "corvane_lab/round_record.h"
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
std::vector<RecordingPart> PartsOf(World world, std::chrono::milliseconds length) {
  SetRecording(&world, 1);
  platform::sim::SimulatedPc pc(world, {});
  ServiceRun service(pc);
  service.Start();
  pc.RunFor(length);
  EXPECT_TRUE(service.Stop());
  return RecordingOf(pc);
}
Recording Record(World world, std::chrono::milliseconds length) {
  return ReadRecording(PartsOf(std::move(world), length)).at(0);
}

// When each round of a run ended, and how it decided.
std::string StoryOf(World world, unsigned megabytes) {
  SetRecording(&world, megabytes);
  platform::sim::SimulatedPc pc(world, {});
  std::string story;
  const RoundRecorder recorder(
      pc, world, false,
      [](const RoundRecord& round, void* text) {
        *static_cast<std::string*>(text) += RoundJson(round, RoundDetail::kJudged) + "\n";
      },
      &story);
  ServiceRun service(pc);
  service.Start();
  pc.RunFor(10min);
  EXPECT_TRUE(service.Stop());
  EXPECT_EQ(RecordingOf(pc).empty(), megabytes == 0);
  return story;
}

TEST(Recording, HoldsNoRoundUpAndChangesNone) {
  const std::string file = "worlds/two-hours.json";
  const World world = platform::sim::ParseWorld(platform::ReadTextFile(file), file);
  const std::string off = StoryOf(world, 0);
  EXPECT_GT(off.size(), 10'000u);
  EXPECT_EQ(StoryOf(world, 1), off);
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

TEST(Anonymised, HoldsNoNameAndIsDecidedUponAsBefore) {
  for (const char* name : {"two-hours", "two-adapters"}) {
    const std::string file = std::string("worlds/") + name + ".json";
    const auto parts =
        PartsOf(platform::sim::ParseWorld(platform::ReadTextFile(file), file), 20min);
    const std::vector<RecordingPart> shown = {{"shown", Anonymised(parts)}};
    const auto original = ReadRecording(parts), other = ReadRecording(shown);
    EXPECT_EQ(FindLeftover(original, other), "") << name;
    EXPECT_NE(FindLeftover(original, original), "") << name;
    const SameRounds same = CompareReplays(LongestOf(original), LongestOf(other));
    EXPECT_EQ(same.unlike, "") << name;
    EXPECT_GT(same.scores, 500u) << name;
  }
}

// What is not in a world: names in odd places, and elements that tell of more than a score reads.
TEST(Anonymised, TakesNamesOutOfWhereverTheyStand) {
  const std::string text =
      "{\"t\":0,\"begin\":{\"form\":1,\"utc\":\"u\",\"up\":0,\"goes_on\":false}}\n"
      "{\"t\":0,\"values\":[0,{\"DenylistJson\":\"[[\\\"Smith "
      "family\\\",\\\"AC-DE-48-00-00-01\\\"]]\","
      "\"Note\":\"seen Smith family at ac:de:48:00:00:01\"}]}\n"
      // An SSID, and elements of vendors: WPA, which a score reads, and another one's with the
      // name.
      "{\"t\":0,\"element\":[0,\"AAxTbWl0aCBmYW1pbHk=\"]}\n"
      "{\"t\":0,\"element\":[1,\"3QcAUPIBAQAA\"]}\n"
      "{\"t\":0,\"element\":[2,\"3Q8AEBhTbWl0aCBmYW1pbHk=\"]}\n"
      "{\"t\":0,\"ap\":[0,0,\"ac-de-48-00-00-01\",\"536d6974682066616d696c79\",2437000,7,1,1,100,"
      "[0,1,2]]}\n"
      "{\"t\":0,\"ap\":[1,0,\"ac-de-48-00-00-02\",\"5a20477565737420\",2437000,7,1,1,100,[]]}\n"
      "{\"t\":0,\"heard\":[0,true,[[0,-50,100],[1,-50,100]],[]]}\n"
      "{\"t\":0,\"known\":[[\"Smith family 2\",1,64]]}\n"
      "{\"t\":0,\"order\":{\"cmd\":\"ConnectAP\",\"ssid\":\"Smith family\",\"bssid\":"
      "\"AC-DE-48-00-00-01\"}}\n";
  const std::vector<RecordingPart> parts = {{"own", text}};
  const std::string shown = Anonymised(parts);
  const Recording run = ReadRecording(std::vector<RecordingPart>{{"shown", shown}}).at(0);
  EXPECT_EQ(run.accessPoints[0].ssid, "net-000");
  EXPECT_EQ(run.accessPoints[1].ssid, "net-001-guest");
  EXPECT_EQ(run.accessPoints[0].bssid, (MacAddress{2, 0xA0, 0, 0, 0, 1}));
  EXPECT_EQ(run.accessPoints[1].bssid, (MacAddress{2, 0xA0, 0, 0, 0, 2}));
  EXPECT_EQ(run.known[0].networks[0].name, "net-000 2");
  EXPECT_EQ(std::get<std::string>(run.values[0].what), R"([["net-000","02-a0-00-00-00-01"]])");
  EXPECT_EQ(std::get<std::string>(run.values[1].what), "seen net-000 at 02:a0:00:00:00:01");
  EXPECT_EQ(run.orders[0].json,
            R"({"cmd":"ConnectAP","ssid":"net-000","bssid":"02-a0-00-00-00-01"})");
  using namespace std::string_literals;
  EXPECT_EQ(run.elementBytes[run.readings[0].heard[0].elements],
            "\x00\x07net-000\xDD\x07\x00\x50\xF2\x01\x01\x00\x00\xDD\x0F\x00\x10\x18"s +
                std::string(12, '\0'));
  EXPECT_EQ(FindLeftover(ReadRecording(parts), {run}), "");
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

TEST(RecordedSwitches, LieBetweenTheRoundsThatSawThem) {
  Recording run;
  const auto round = [&run](std::uint64_t began, std::uint64_t took, const char* step,
                            bool weighed) {
    Recording::Round one;
    one.ms = began + took;
    one.tookMs = took;
    one.steps = {{step, {}}};
    one.weighed = weighed;
    run.rounds.push_back(one);
  };
  round(10'000, 3000, "on-best", true);
  round(20'000, 5000, "vpn", false);
  round(21'000, 1000, "inhibited", false);  // did not look
  round(25'000, 5000, "airplane-mode", false);
  round(31'000, 3000, "stale", true);
  run.machine = {{20'000, true, false}, {31'500, false, false}};
  EXPECT_EQ(VpnSwitches(run), (RecordedSwitches{{15'000, true}, {25'500, false}}));
  EXPECT_EQ(AirplaneSwitches(run), (RecordedSwitches{{23'000, true}, {28'000, false}}));
  EXPECT_EQ(WiredSwitches(run), RecordedSwitches());
}

}  // namespace
}  // namespace corvane::lab
