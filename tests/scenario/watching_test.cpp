// Whoever opens the log to look at a run sees that run, and not another one.

#include <gtest/gtest.h>

#include "corvane_lab/run_report.h"
#include "corvane_lab/service_run.h"
#include "foundation/smart_obj.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "store/registry.h"
#include "support/pc_fixture.h"
#include "support/source_dir.h"

namespace corvane::test {
namespace {

using platform::sim::World;

// What of a run is logged.
struct Logged {
  std::uint64_t mask;  // of debug lines
  std::uint32_t toFile;
};

struct Watched {
  std::vector<std::string> events;  // and rounds, as the laboratory tells them
  std::uint64_t fingerprint = 0;    // who ran when
  std::uint64_t calls = 0;
  std::uint64_t faults = 0;
  std::size_t printed = 0;

  static void Note(const std::string&, const std::string& json, void* context) {
    static_cast<Watched*>(context)->events.push_back(json);
  }
};

World LoggedWorld(World world, const Logged& logged) {
  world.registry.push_back({.key = kHomeKeyPath,
                            .name = u"DebugMask",
                            .type = platform::REG_QWORD,
                            .number = logged.mask,
                            .text = {}});
  world.registry.push_back({.key = kHomeKeyPath,
                            .name = u"EnableFileLogging",
                            .type = platform::REG_DWORD,
                            .number = logged.toFile,
                            .text = {}});
  return world;
}

// Some minutes of the service, from its start to its stop.
Watched Watch(const World& world, PcOptions options) {
  Watched seen;
  lab::RunReport report(&Watched::Note, &seen, true);
  options.observer = &report;
  {
    platform::sim::SimulatedPc pc(world, options);
    ResetProcessState();  // the first lines come before the settings are read
    report.Attach(pc, world);
    lab::ServiceRun service(pc);
    service.Start();
    for (int second = 0; second < 15 * 60; ++second) {
      pc.RunFor(1s);
      if (second == 0) pc.Faults().FailRandomly(0.05, options.seed);
      report.Sample();
    }
    EXPECT_TRUE(service.IsRunning());
    EXPECT_TRUE(service.Stop());
    report.PrintSummary();
    report.Detach();
    seen.fingerprint = pc.Kernel().GetScheduler().Fingerprint();
    seen.calls = pc.SeamCalls();
    seen.faults = pc.InjectedFaults();
    seen.printed = pc.ConsoleText().size();
    ResetProcessState();
  }
  return seen;
}

class Watching : public testing::TestWithParam<const char*> {};

TEST_P(Watching, LeavesARunAsItIs) {
  constexpr std::uint64_t kAll = ~std::uint64_t{0} >> 1;
  const std::string file = SourceDir() + "/worlds/" + GetParam() + ".json";
  const World world = platform::sim::ParseWorld(platform::ReadTextFile(file), file);
  for (const std::uint64_t seed : {1u, 2u, 3u}) {
    const PcOptions options{.seed = seed, .interleave = true};
    const Watched quiet = Watch(LoggedWorld(world, {0, 0}), options);
    EXPECT_GT(quiet.events.size(), 100u);
    EXPECT_GT(quiet.faults, 0u);
    for (const Logged logged : {Logged{kAll, 0}, Logged{kAll, 1}, Logged{0, 1}}) {
      const Watched told = Watch(LoggedWorld(world, logged), options);
      EXPECT_EQ(quiet.printed < told.printed, logged.mask != 0);
      EXPECT_EQ(quiet.events, told.events) << seed;
      EXPECT_EQ(quiet.fingerprint, told.fingerprint) << seed;
      EXPECT_EQ(quiet.calls, told.calls) << seed;
      EXPECT_EQ(quiet.faults, told.faults) << seed;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Worlds, Watching, testing::Values("two-hours", "two-adapters"),
                         [](const auto& info) {
                           std::string name = info.param;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace corvane::test
