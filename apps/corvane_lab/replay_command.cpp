#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/recorded_world.h"
#include "corvane_lab/recording_files.h"
#include "corvane_lab/replay.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "foundation/text.h"

namespace corvane::lab {

namespace {

std::string TimeText(std::uint64_t ms) {
  constexpr std::uint64_t kSecond = 1000, kMinute = 60'000, kHour = 3'600'000;
  return FormatA("%02llu:%02llu:%02llu.%03llu", ms / kHour, ms % kHour / kMinute,
                 ms % kMinute / kSecond, ms % kSecond);
}

void PrintShare(const char* what, std::uint64_t same, std::uint64_t all) {
  const double percent =
      all == 0 ? 100.0 : 100.0 * static_cast<double>(same) / static_cast<double>(all);
  std::printf("  %-30s %llu of %llu, %.1f %%\n", what, static_cast<unsigned long long>(same),
              static_cast<unsigned long long>(all), percent);
}

}  // namespace

int ReplayCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {"--seed", "--profile", "--mode", "--show"}, {});
  if (arguments.Rest().size() != 1) throw UsageError("one recording");
  const std::string& file = arguments.Rest()[0];
  const Recording run = LoadRecording(file);
  platform::sim::World world = WorldOfRecording(run);
  if (const auto mode = arguments.Value("--mode")) SetMode(&world, *mode);
  if (const auto profile = arguments.Value("--profile")) SetProfile(&world, *profile);
  constexpr std::uint64_t kShown = 10;
  const std::uint64_t shown = arguments.Number("--show", kShown);
  const ReplayResult result = Replay(run, world, arguments.Number("--seed", 1));

  std::printf("%s: from %s, %s long, %zu adapters, %zu access points\n", file.c_str(),
              run.utc.c_str(), TimeText(run.lengthMs - run.beginMs).c_str(), run.adapters.size(),
              world.accessPoints.size());
  if (run.goesOn) std::printf("  what came before is not in it any more\n");
  if (run.lost != 0)
    std::printf("  %llu facts were not recorded\n", static_cast<unsigned long long>(run.lost));
  PrintShare("scores the same", result.scoresSame, result.scores);
  PrintShare("decisions the same", result.roundsSame, result.rounds);
  if (result.unmatched != 0)
    std::printf("  no round of the replay near %llu recorded ones\n",
                static_cast<unsigned long long>(result.unmatched));
  std::uint64_t printed = 0;
  for (const ReplayDifference& one : result.differences) {
    if (printed++ == shown) {
      std::printf("  and %zu more\n", result.differences.size() - static_cast<std::size_t>(shown));
      break;
    }
    std::printf("  %s [%d] recorded %s\n  %*s replayed %s\n", TimeText(one.ms).c_str(), one.adapter,
                one.recorded.c_str(), 16, "", one.replayed.c_str());
    if (!one.why.empty()) std::printf("  %*s %s\n", 16, "", one.why.c_str());
  }
  return 0;
}

}  // namespace corvane::lab
