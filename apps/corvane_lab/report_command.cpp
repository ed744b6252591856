#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/day_record.h"
#include "corvane_lab/report_page.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/simulated_user.h"
#include "corvane_lab/world_result.h"
#include "corvane_lab/world_source.h"
#include "foundation/text.h"
#include "platform/text_file.h"
#include "store/value_names.h"

namespace corvane::lab {

namespace {

using platform::sim::World;

constexpr std::uint64_t kDefaultMs = 30 * 60'000;
constexpr std::uint64_t kStepMs = 1000;

// Tells on a terminal how far long work is.
class Progress {
 public:
  ~Progress() {
    if (m_Shown > 0) std::fprintf(stderr, "\r%24s\r", "");
  }
  void Tell(std::uint64_t done, std::uint64_t all) {
    const int percent = static_cast<int>(done * 100 / std::max<std::uint64_t>(all, 1));
    if (!m_bTerminal || percent <= m_Shown) return;
    m_Shown = percent;
    std::fprintf(stderr, "\r%d %% of the run", percent);
  }

 private:
  const bool m_bTerminal = platform::ErrorOutputIsTerminal();
  int m_Shown = 0;
};

// The service over the world; the day's JSON.
std::string RunDay(const World& world, std::uint64_t ms, std::uint64_t seed, bool answers,
                   const std::string& compare) {
  DayRecord day(world);
  platform::sim::PcOptions options;
  options.seed = seed;
  options.observer = &day;
  platform::sim::SimulatedPc pc(world, options);
  day.Attach(pc);
  Progress progress;
  {
    SimulatedUser user(seed);
    ServiceRun service(pc);
    service.Start();
    for (std::uint64_t done = 0; done < ms; done += kStepMs) {
      pc.RunFor(std::chrono::milliseconds(std::min(kStepMs, ms - done)));
      if (!service.IsRunning()) throw std::runtime_error("the service ended by itself");
      day.Sample();
      if (answers) user.Look(done + kStepMs);
      progress.Tell(done, ms);
    }
    if (!service.Stop()) throw std::runtime_error("the service did not end within three minutes");
    day.PrintSummary();
  }
  day.Detach();
  return day.Json(seed, compare);
}

}  // namespace

int ReportCommand(const std::vector<std::string>& words) {
  const Arguments arguments(
      words, {"-o", "--for", "--seed", "--air", "--recording", "--mode", "--profile"},
      {"--user", "--compare"});
  const auto file = arguments.Value("-o");
  if (!file) throw UsageError("-o PAGE.html says where the page goes");
  AirReport airReport;
  World world = WorldOf(arguments, &airReport);
  if (world.name.empty()) world.name = arguments.Rest().empty() ? "captured" : arguments.Rest()[0];
  std::uint64_t ms = world.durationMs > 0 ? world.durationMs : kDefaultMs;
  if (const auto duration = arguments.Value("--for")) ms = ParseDuration(*duration);
  const std::uint64_t seed = arguments.Number("--seed", 1);
  std::string compare;
  if (arguments.Has("--compare")) {
    const ComparePlan plan{
        .profiles = {{"classic", {}}, {"balanced", {{Narrow(value::kPolicyProfile), 1}}}},
        .seed = seed};
    compare = ToJson(CompareOn(world, static_cast<std::size_t>(ms / kStepMs), plan));
  }
  const std::string json = RunDay(world, ms, seed, arguments.Has("--user"), compare);
  platform::TextFileWriter page(*file);
  page.Write(ReportPage(world.name, json));
  page.Commit();
  std::printf("%s\n", file->c_str());
  return 0;
}

}  // namespace corvane::lab
