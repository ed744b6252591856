#pragma once
#include "platform/power_api.h"
#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// Mains and battery.
class SimPower final : public PowerApi {
 public:
  SimPower(SimMachine& machine, SeamGate& gate, ThreadApi& threads)
      : m_Machine(machine), m_Gate(gate), m_Threads(threads) {}

  BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status) override;

 private:
  SimMachine& m_Machine;
  SeamGate& m_Gate;
  ThreadApi& m_Threads;  // for the last error
};

}  // namespace corvane::platform::sim
