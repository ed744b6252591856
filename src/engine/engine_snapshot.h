#pragma once
// A look at the engine for tools and tests.

#include <cstdint>
#include <memory>

#include "engine/engine_bits.h"
#include "engine/engine_table.h"

namespace corvane {

struct LBEngineSnapshot {
  std::uint32_t stateWord = 0;   // engine_state
  std::uint32_t owedWord = 0;    // kStartOwed
  std::uint32_t tunnelWord = 0;  // 1 while a tunnel that is not managed is up
  std::unique_ptr<LBEngineTable> table;
};

// A copy of the words and the table, made under the engine lock, so between two adapters of a pass.
// False while the engine does not run. Waits for a start or a stop.
bool LB_SnapshotEngine(LBEngineSnapshot* snapshot);

}  // namespace corvane
