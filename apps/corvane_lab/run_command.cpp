#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/run_recording.h"
#include "corvane_lab/run_report.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/simulated_user.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "foundation/smart_obj.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/simulated_pc.h"
#include "platform/text_file.h"

namespace corvane::lab {

namespace {

using platform::sim::PcOptions;
using platform::sim::SimulatedPc;
using platform::sim::World;

constexpr std::uint64_t kDefaultMs = 30 * 60'000;
constexpr std::uint64_t kSampleMs = 1000;
constexpr std::uint64_t kReadRecordingMs = 5 * 60'000;
constexpr unsigned kRecordMB = 1000;  // the largest there may be

// Where the lines go: standard output, and a file of JSON.
struct Output {
  bool quiet = false;
  std::optional<platform::TextFileWriter> json;
  static void Print(const std::string& text, const std::string& json, void* context) {
    auto& self = *static_cast<Output*>(context);
    if (!self.quiet && !text.empty()) std::printf("%s\n", text.c_str());
    if (self.json && !json.empty()) self.json->WriteLine(json);
  }
};

struct RunPlan {
  World world;
  PcOptions options;
  std::uint64_t ms = kDefaultMs;
  bool user = false;      // somebody answers the suggestions
  std::string words;      // of the command line, without seeds
  unsigned recordMB = 0;  // how large the service's recording may grow; 0: there is none
  std::string recordTo;   // file that it goes to at the end; empty: nowhere
};

// What a run must not do.
struct Trouble {
  std::string report;
  static void Note(const std::string& text, void* context) {
    auto& self = *static_cast<Trouble*>(context);
    if (self.report.empty()) self.report = text;
  }
};

// What the driver of the load-balance engine did in all runs.
struct DriverSummary {
  bool installed = false;
  std::uint64_t heard = 0, walks = 0;
  void Add(const platform::sim::SimDriver::Report& told) {
    installed = installed || told.installed;
    heard += told.heard.size();
    walks += told.walks;
  }
  std::string Text() const {
    if (!installed) return {};
    return FormatA("; the driver heard %llu notifications and looked at the tables %llu times",
                   heard, walks);
  }
};

// What of the clients' side is not given back after the stop; empty when all is.
std::string LeftOver(platform::sim::SimKernel& kernel) {
  const auto pipes = kernel.Pipes().OpenHandles(), records = kernel.Pipes().OpenRecords(),
             keys = kernel.Crypto().OpenHandles();
  if (pipes + records + keys == 0) return {};
  return FormatA("%u pipes, %u records of clients and %u keys are left over", pipes, records, keys);
}

// One run; empty when all is well, else what went wrong.
std::string RunOnce(const RunPlan& plan, Output* output, RunSummary* summary,
                    DriverSummary* driver = nullptr) {
  RunReport report(&Output::Print, output, output->json.has_value());
  PcOptions watched = plan.options;
  watched.observer = &report;
  watched.faultRate = 0.0;
  Trouble trouble;
  {
    SimulatedPc pc(plan.world, watched);
    pc.SetReportHandler(&Trouble::Note, &trouble);
    report.Attach(pc, plan.world);
    SimulatedUser user(watched.seed);
    ServiceRun service(pc);
    service.Start();
    for (std::uint64_t done = 0; done < plan.ms && trouble.report.empty(); done += kSampleMs) {
      pc.RunFor(std::chrono::milliseconds(std::min(kSampleMs, plan.ms - done)));
      // Faults begin once the service is up: a start that fails ends it, as it should.
      if (done == 0 && plan.options.faultRate > 0.0) {
        pc.Faults().FailRandomly(plan.options.faultRate, plan.options.seed);
      }
      if (!service.IsRunning()) {
        Trouble::Note(FormatA("the service ended by itself, exit code %i", service.ExitCode()),
                      &trouble);
        break;
      }
      report.Sample();
      if (plan.recordMB != 0) {
        const std::string wrong = RecordingTrouble(
            pc, plan.recordMB, done % kReadRecordingMs == 0 || done + kSampleMs >= plan.ms);
        if (!wrong.empty()) Trouble::Note(wrong, &trouble);
      }
      if (plan.user) user.Look(done + kSampleMs);
    }
    if (!service.Stop()) Trouble::Note("the service did not end within three minutes", &trouble);
    const std::string left = LeftOver(pc.Kernel());
    if (!left.empty()) Trouble::Note(left, &trouble);
    const auto told = pc.Devices().Driver().Tell();
    for (const std::string& finding : told.findings)
      Trouble::Note("the driver: " + finding, &trouble);
    if (driver) driver->Add(told);
    report.PrintSummary();
    report.Detach();
    if (!plan.recordTo.empty()) {
      platform::TextFileWriter file(plan.recordTo);
      for (const RecordingPart& part : RecordingOf(pc)) file.Write(part.text);
      file.Commit();
    }
  }
  if (trouble.report.empty() && LiveObjectCount() != 0) {
    Trouble::Note(FormatA("%u objects are left over", LiveObjectCount()), &trouble);
  }
  *summary = report.Summary();
  if (trouble.report.empty() && !summary->brokenRule.empty()) {
    Trouble::Note("a decision breaks a rule: " + summary->brokenRule, &trouble);
  }
  return trouble.report;
}

// A range of seeds: only those that go wrong are told.
int RunSeeds(RunPlan plan, std::uint64_t first, std::uint64_t last) {
  std::uint64_t bad = 0, rounds = 0, moves = 0, messages = 0;
  Output output;
  DriverSummary driver;
  output.quiet = true;
  for (std::uint64_t seed = first; seed <= last; ++seed) {
    plan.options.seed = seed;
    RunSummary summary;
    const std::string trouble = RunOnce(plan, &output, &summary, &driver);
    rounds += summary.rounds;
    moves += summary.moves;
    messages += summary.clientMessages;
    if (!trouble.empty()) {
      ++bad;
      std::printf("seed %llu: %s\n  again: corvane-lab run%s --seed %llu\n",
                  static_cast<unsigned long long>(seed), trouble.c_str(), plan.words.c_str(),
                  static_cast<unsigned long long>(seed));
      std::fflush(stdout);
    }
    if (seed % 25 == 0 || seed == last) {
      std::fprintf(stderr, "%llu of %llu seeds done, %llu bad\n",
                   static_cast<unsigned long long>(seed - first + 1),
                   static_cast<unsigned long long>(last - first + 1),
                   static_cast<unsigned long long>(bad));
    }
  }
  const std::string served =
      messages == 0 ? std::string() : FormatA(", %llu messages read by clients", messages);
  std::printf("%llu seeds, %llu bad; %llu rounds, %llu moves by the service's own decision%s%s\n",
              static_cast<unsigned long long>(last - first + 1),
              static_cast<unsigned long long>(bad), static_cast<unsigned long long>(rounds),
              static_cast<unsigned long long>(moves), served.c_str(), driver.Text().c_str());
  return bad == 0 ? 0 : 1;
}

std::string WordsWithoutSeeds(const std::vector<std::string>& words) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] == "--seed" || words[i] == "--seeds") {
      ++i;
    } else {
      text += " " + words[i];
    }
  }
  return text;
}

}  // namespace

int RunCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words,
                            {"--for", "--seed", "--json", "--air", "--recording", "--mode",
                             "--profile", "--faults", "--seeds", "--record", "--record-mb"},
                            {"--interleave", "--user"});
  AirReport airReport;
  RunPlan plan;
  plan.world = WorldOf(arguments, &airReport);
  if (plan.world.durationMs > 0) plan.ms = plan.world.durationMs;
  if (const auto duration = arguments.Value("--for")) plan.ms = ParseDuration(*duration);
  plan.user = arguments.Has("--user");
  plan.recordMB = static_cast<unsigned>(arguments.Number("--record-mb", 0));
  plan.words = WordsWithoutSeeds(words);
  plan.options.seed = arguments.Number("--seed", 1);
  plan.options.faultRate = static_cast<double>(arguments.Number("--faults", 0)) / 100.0;
  plan.options.interleave = arguments.Has("--interleave") || plan.options.faultRate > 0.0;

  if (const auto seeds = arguments.Value("--seeds")) {
    if (arguments.Has("--json") || arguments.Has("--record"))
      throw UsageError("--json and --record go with one seed");
    if (plan.recordMB != 0) SetRecording(&plan.world, plan.recordMB);
    std::uint64_t first = 0, last = 0;
    ParseSeeds(*seeds, &first, &last);
    return RunSeeds(std::move(plan), first, last);
  }
  if (const auto file = arguments.Value("--record")) {
    plan.recordTo = *file;
    if (plan.recordMB == 0) plan.recordMB = kRecordMB;
  }
  if (plan.recordMB != 0) SetRecording(&plan.world, plan.recordMB);
  Output output;
  if (const auto json = arguments.Value("--json")) output.json.emplace(*json);
  RunSummary summary;
  const std::string trouble = RunOnce(plan, &output, &summary);
  if (output.json) output.json->Commit();
  if (trouble.empty()) return 0;
  std::fflush(stdout);
  std::fprintf(stderr, "corvane-lab run: %s\n", trouble.c_str());
  return 1;
}

}  // namespace corvane::lab
