#pragma once
// What the engine needs of a machine beside threads and registry, with a driver that keeps what it
// hears.

#include <string>

#include "engine/engine_snapshot.h"
#include "engine/fake_machine.h"

namespace corvane::test {

struct EngineParts {
  engine_test::FakeDriver driver;
  engine_test::FakeHeap heap;
  engine_test::FakeServices services;

  // The orders of steering so far, as "command/mode".
  std::string Steered() {
    std::string text;
    for (const auto& call : driver.Calls()) {
      if (call.code != control::kSteer) continue;
      LBSteer record;
      std::memcpy(static_cast<void*>(&record), call.input.data(), sizeof(record));
      text += (text.empty() ? "" : " ") + std::to_string(record.command) + "/" +
              std::to_string(record.mode);
    }
    return text;
  }
  int Starts() { return driver.Count(control::kStart); }
  int Stops() { return driver.Count(control::kStop); }
  // Everything that was given out and has not come back.
  int Open() { return driver.OpenHandles() + heap.OpenHeaps() + services.open; }
};

// Whether a run of the engine is in force.
inline bool EngineRuns() {
  LBEngineSnapshot snapshot;
  return LB_SnapshotEngine(&snapshot);
}

}  // namespace corvane::test
