#include "service/engine_switch.h"

#include <cstdint>

#include "foundation/log_lines.h"
#include "lb/lb_config.h"

namespace corvane {

namespace {

constexpr std::uint32_t kPilotWeightMode = 2;
constexpr std::uint32_t kEndMs = 2000;

}  // namespace

void StartEngineControl(bool* created) {
  auto& engine = CLBConfig::GetInstance();
  engine.Initialize(created, true, false);  // what fails is in the log
  if (const platform::HRESULT result = engine.BeginThread(); result != 0) {
    LOG_ERROR(u"Main:[starting] the thread of the engine's commands did not start: 0x%08x", result);
  }
}

void KeepEngine(bool serviceEnabled) {
  auto& engine = CLBConfig::GetInstance();
  if (!serviceEnabled) {
    if (!engine.IsRunning()) return;
    engine.DisableLBEngine(false, false);
    LOG_INFO(u"Main[Main loop]: SERVICE DISABLED: DISABLE LB-ENGINE ...\n");
    return;
  }
  // In this order: a client that disables the engine writes the value before the field, so what is
  // read here is never older than the field.
  if (engine.IsRunning()) return;
  std::uint32_t enabled = 0;
  engine.GetLBEnabled(&enabled);
  if (enabled == 1) engine.EnableLBEngine(engine.GetWeightMode(), false);
}

void StartEngineForPilot() {
  auto& engine = CLBConfig::GetInstance();
  if (engine.IsRunning()) return;
  engine.EnableLBEngine(kPilotWeightMode, false);
  LOG_INFO(u"Main[Main loop]: Pilot-2: *START* LB-ENGINE ...\n");
}

void StopEngineControl() { CLBConfig::GetInstance().Stop(kEndMs); }

}  // namespace corvane
