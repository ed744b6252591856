#include <cstdio>
#include <string>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/engine_run.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "platform/text_file.h"

namespace corvane::lab {

namespace {

using platform::sim::PcOptions;
using platform::sim::World;

int RunEngineSeeds(const World& world, PcOptions options, std::uint64_t ms, std::uint64_t first,
                   std::uint64_t last) {
  std::uint64_t bad = 0, walks = 0, heard = 0;
  for (options.seed = first; options.seed <= last; ++options.seed) {
    EngineView view;
    const std::string trouble = RunEngine(world, options, ms, &view);
    walks += view.driver.walks;
    heard += view.driver.heard.size();
    if (trouble.empty()) continue;
    ++bad;
    std::printf("seed %llu: %s\n", static_cast<unsigned long long>(options.seed), trouble.c_str());
    std::fflush(stdout);
  }
  std::printf("%s\n", FormatA("%llu seeds, %llu bad; the driver heard %llu notifications and "
                              "looked at the tables %llu times",
                              last - first + 1, bad, heard, walks)
                          .c_str());
  return bad == 0 ? 0 : 1;
}

}  // namespace

int EngineCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {"--at", "--seed", "--dump", "--faults", "--seeds"},
                            {"--json", "--interleave"});
  const auto at = arguments.Value("--at");
  if (!at) throw UsageError("--at TIME says when to look");
  const std::uint64_t ms = ParseDuration(*at);
  AirReport airReport;
  const World world = WorldOf(arguments, &airReport);
  PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  options.faultRate = static_cast<double>(arguments.Number("--faults", 0)) / 100.0;
  options.interleave = options.faultRate > 0.0 || arguments.Has("--interleave");
  if (const auto seeds = arguments.Value("--seeds")) {
    if (arguments.Has("--json") || arguments.Value("--dump")) {
      throw UsageError("--json and --dump go with one seed");
    }
    std::uint64_t first = 0, last = 0;
    ParseSeeds(*seeds, &first, &last);
    return RunEngineSeeds(world, options, ms, first, last);
  }
  EngineView view;
  const std::string trouble = RunEngine(world, options, ms, &view);
  std::printf(
      "%s", arguments.Has("--json") ? (EngineJson(view) + "\n").c_str() : EngineText(view).c_str());
  if (const auto dump = arguments.Value("--dump")) {
    if (!view.runs) throw std::runtime_error("the engine does not run: there is no table");
    platform::TextFileWriter file(*dump);
    file.Write({reinterpret_cast<const char*>(view.engine.table.get()), sizeof(LBEngineTable)});
    file.Commit();
  }
  if (trouble.empty()) return 0;
  std::fflush(stdout);
  std::fprintf(stderr, "corvane-lab engine: %s\n", trouble.c_str());
  return 1;
}

}  // namespace corvane::lab
