#include "corvane_lab/engine_run.h"

#include "engine/engine.h"
#include "foundation/format.h"
#include "foundation/guarded.h"
#include "foundation/singleton.h"
#include "foundation/smart_obj.h"
#include "platform/sim/devices/sim_devices.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

namespace {

using platform::sim::SimDevices;
using platform::sim::SimulatedPc;

constexpr std::chrono::seconds kBeforeStart(1);

void Note(const std::string& text, void* trouble) {
  auto& first = *static_cast<std::string*>(trouble);
  if (first.empty()) first = text;
}

}  // namespace

std::string RunEngine(const platform::sim::World& world, const platform::sim::PcOptions& options,
                      std::uint64_t ms, EngineView* view) {
  std::string trouble;
  platform::sim::PcOptions watched = options;
  watched.faultRate = 0.0;
  {
    SimulatedPc pc(world, watched);
    pc.SetReportHandler(&Note, &trouble);
    pc.RunFor(kBeforeStart);
    if (options.faultRate > 0.0) pc.Faults().FailRandomly(options.faultRate, options.seed);
    LBEngineInfo info;
    view->startCode = LB_InitializeEngine(&info);
    const auto end = std::chrono::milliseconds(ms);
    if (pc.Now() < end) pc.RunFor(end - pc.Now());
    view->runs = LB_SnapshotEngine(&view->engine);
    view->driver = pc.Devices().Driver().Tell();
    LB_StopEngine();
    pc.Faults().Clear();
    for (const std::string& finding : pc.Devices().Driver().Tell().findings)
      Note("the driver: " + finding, &trouble);
    pc.EndThreads();
    singletons::DropAll();
    if (pc.Devices().CountOutstanding() != SimDevices::Outstanding{})
      Note("something of the platform's has not been given back", &trouble);
  }
  if (LiveObjectCount() != 0)
    Note(FormatA("%u objects are left over", LiveObjectCount()), &trouble);
  return trouble;
}

}  // namespace corvane::lab
