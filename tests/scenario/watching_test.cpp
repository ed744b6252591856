// Whoever opens the log to look at a run sees that run, and not another one.

#include <gtest/gtest.h>

#include "corvane_lab/service_run.h"
#include "foundation/smart_obj.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"
#include "store/registry.h"
#include "support/pc_fixture.h"
#include "support/source_dir.h"

namespace corvane::test {
namespace {

using platform::sim::World;

struct Watched {
  std::uint64_t fingerprint = 0;  // who ran when
  std::uint64_t calls = 0;
  std::uint64_t faults = 0;
  std::size_t printed = 0;
};

// Twenty minutes of the service in this world, with this much of it logged.
Watched TwentyMinutes(World world, std::uint64_t mask, const PcOptions& options) {
  std::erase_if(world.registry, [](const auto& value) { return value.name == u"DebugMask"; });
  world.registry.push_back({.key = kHomeKeyPath,
                            .name = u"DebugMask",
                            .type = platform::REG_QWORD,
                            .number = mask,
                            .text = {}});
  Watched seen;
  {
    platform::sim::SimulatedPc pc(world, options);
    lab::ServiceRun service(pc);
    service.Start();
    pc.RunFor(1s);
    pc.Faults().FailRandomly(0.05, options.seed);
    pc.RunFor(20min);
    EXPECT_TRUE(service.IsRunning());
    seen = {pc.Kernel().GetScheduler().Fingerprint(), pc.SeamCalls(), pc.InjectedFaults(),
            pc.ConsoleText().size()};
    EXPECT_TRUE(service.Stop());
    ResetProcessState();
  }
  return seen;
}

TEST(Watching, LeavesARunAsItIs) {
  const std::string file = SourceDir() + "/worlds/two-hours.json";
  const World world = platform::sim::ParseWorld(platform::ReadTextFile(file), file);
  for (const std::uint64_t seed : {2, 3}) {
    const PcOptions options{.seed = seed, .interleave = true};
    const Watched quiet = TwentyMinutes(world, 0, options);
    const Watched told = TwentyMinutes(world, ~std::uint64_t{0} >> 1, options);
    EXPECT_GT(quiet.faults, 0u);
    EXPECT_LT(quiet.printed, told.printed);
    EXPECT_EQ(quiet.fingerprint, told.fingerprint) << seed;
    EXPECT_EQ(quiet.calls, told.calls) << seed;
    EXPECT_EQ(quiet.faults, told.faults) << seed;
  }
}

}  // namespace
}  // namespace corvane::test
