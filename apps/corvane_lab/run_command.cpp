#include <algorithm>
#include <cstdio>
#include <string>

#include "core/foundation/format.h"
#include "core/foundation/smart_obj.h"
#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/run_report.h"
#include "corvane_lab/service_run.h"
#include "platform/linux/host_text_file.h"
#include "platform/sim/fault_plan.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world.h"
#include "platform/sim/world_loader.h"

namespace corvane::lab {

namespace {

using platform::sim::PcOptions;
using platform::sim::SimulatedPc;
using platform::sim::World;

constexpr std::uint64_t kDefaultMs = 30 * 60'000;
constexpr std::uint64_t kSampleMs = 1000;

// Where the lines go: standard output, and a JSON text that is kept until the end.
struct Output {
  bool quiet = false;
  std::string json;
  static void Print(const std::string& text, const std::string& json, void* context) {
    auto& self = *static_cast<Output*>(context);
    if (!self.quiet) std::printf("%s\n", text.c_str());
    self.json += json + "\n";
  }
};

// What a run must not do.
struct Trouble {
  std::string report;
  static void Note(const std::string& text, void* context) {
    auto& self = *static_cast<Trouble*>(context);
    if (self.report.empty()) self.report = text;
  }
};

// One run; empty when all is well, else what went wrong.
std::string RunOnce(const World& world, const PcOptions& options, std::uint64_t ms, Output* output,
                    RunSummary* summary) {
  RunReport report(&Output::Print, output);
  PcOptions watched = options;
  watched.observer = &report;
  watched.faultRate = 0.0;
  Trouble trouble;
  {
    SimulatedPc pc(world, watched);
    pc.SetReportHandler(&Trouble::Note, &trouble);
    report.Attach(&pc);
    ServiceRun service(pc);
    service.Start();
    for (std::uint64_t done = 0; done < ms && trouble.report.empty(); done += kSampleMs) {
      pc.RunFor(std::chrono::milliseconds(std::min(kSampleMs, ms - done)));
      // Faults begin once the service is up: a start that fails ends it, as it should.
      if (done == 0 && options.faultRate > 0.0) pc.Faults().FailRandomly(options.faultRate, options.seed);
      if (!service.IsRunning()) {
        Trouble::Note(FormatA("the service ended by itself, exit code %i", service.ExitCode()), &trouble);
        break;
      }
      report.Sample();
    }
    if (!service.Stop()) Trouble::Note("the service did not end within three minutes", &trouble);
    report.PrintSummary();
    report.Attach(nullptr);
  }
  if (trouble.report.empty() && LiveObjectCount() != 0) {
    Trouble::Note(FormatA("%u objects are left over", LiveObjectCount()), &trouble);
  }
  *summary = report.Summary();
  return trouble.report;
}

// A range of seeds: only those that go wrong are told.
int RunSeeds(const World& world, PcOptions options, std::uint64_t ms, std::uint64_t first, std::uint64_t last) {
  std::uint64_t bad = 0;
  for (std::uint64_t seed = first; seed <= last; ++seed) {
    options.seed = seed;
    Output output;
    output.quiet = true;
    RunSummary summary;
    const std::string trouble = RunOnce(world, options, ms, &output, &summary);
    if (!trouble.empty()) {
      ++bad;
      std::printf("seed %llu: %s\n", static_cast<unsigned long long>(seed), trouble.c_str());
    }
    if (seed % 25 == 0 || seed == last) {
      std::fprintf(stderr, "%llu of %llu seeds done, %llu bad\n", static_cast<unsigned long long>(seed - first + 1),
                   static_cast<unsigned long long>(last - first + 1), static_cast<unsigned long long>(bad));
    }
  }
  std::printf("%llu seeds, %llu bad\n", static_cast<unsigned long long>(last - first + 1),
              static_cast<unsigned long long>(bad));
  return bad == 0 ? 0 : 1;
}

void ParseSeeds(const std::string& text, std::uint64_t* first, std::uint64_t* last) {
  const std::size_t dash = text.find('-');
  const auto number = [&](const std::string& part) {
    return Arguments({"--seed", part}, {"--seed"}, {}).Number("--seed", 0);
  };
  *first = number(text.substr(0, dash));
  *last = dash == std::string::npos ? *first : number(text.substr(dash + 1));
  if (*last < *first) throw UsageError("--seeds needs a rising range such as 1-200");
}

}  // namespace

int RunCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {"--for", "--seed", "--json", "--air", "--faults", "--seeds"}, {"--interleave"});
  const auto air = arguments.Value("--air");
  if (arguments.Rest().size() != (air ? 0u : 1u)) throw UsageError("one world, or --air and a file");
  const World world = air ? platform::sim::WorldFromAir(platform::linux_host::ReadTextFile(*air), *air)
                          : platform::sim::ParseWorld(platform::linux_host::ReadTextFile(arguments.Rest()[0]),
                                                      arguments.Rest()[0]);
  const auto duration = arguments.Value("--for");
  const std::uint64_t ms = duration ? ParseDuration(*duration) : world.durationMs > 0 ? world.durationMs : kDefaultMs;

  PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  options.faultRate = static_cast<double>(arguments.Number("--faults", 0)) / 100.0;
  options.interleave = arguments.Has("--interleave") || options.faultRate > 0.0;

  if (const auto seeds = arguments.Value("--seeds")) {
    std::uint64_t first = 0, last = 0;
    ParseSeeds(*seeds, &first, &last);
    return RunSeeds(world, options, ms, first, last);
  }
  Output output;
  RunSummary summary;
  const std::string trouble = RunOnce(world, options, ms, &output, &summary);
  if (const auto json = arguments.Value("--json")) platform::linux_host::WriteTextFile(*json, output.json);
  if (trouble.empty()) return 0;
  std::fflush(stdout);
  std::fprintf(stderr, "corvane-lab run: %s\n", trouble.c_str());
  return 1;
}

}  // namespace corvane::lab
