#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "engine/engine_snapshot.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/pc_options.h"

namespace corvane::platform::sim {
struct World;
}

namespace corvane::lab {

// How the engine and its driver stand at one time.
struct EngineView {
  bool runs = false;
  std::uint32_t startCode = 0;  // of LB_InitializeEngine
  LBEngineSnapshot engine;      // while it runs
  platform::sim::SimDriver::Report driver;
};

// Runs the engine alone over the world, from its first second until `ms`, looks, and stops it.
// Faults begin with the engine's start. Gives what went wrong, empty when all is well: a report of
// the PC, what the driver found, or what is left over.
std::string RunEngine(const platform::sim::World& world, const platform::sim::PcOptions& options,
                      std::uint64_t ms, EngineView* view);

std::string EngineText(const EngineView& view);
std::string EngineJson(const EngineView& view);

}  // namespace corvane::lab
