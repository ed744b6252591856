#pragma once
#include <cstdint>
#include <map>

#include "platform/power_api.h"
#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// Mains, battery, suspend and resume.
class SimPower final : public PowerApi {
 public:
  SimPower(SimMachine& machine, SeamGate& gate, ThreadApi& threads)
      : m_Machine(machine), m_Gate(gate), m_Threads(threads) {}

  BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status) override;
  DWORD PowerRegisterSuspendResumeNotification(DWORD flags,
                                               const DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS* recipient,
                                               HANDLE* registration) override;
  // A call that fails by injection has ended the registration all the same.
  DWORD PowerUnregisterSuspendResumeNotification(HANDLE registration) override;

  // Under the devices' lock: tells everybody who has registered.
  void Notify(ULONG type);

 private:
  void Deliver(ULONG type);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  ThreadApi& m_Threads;                                                       // for the last error
  std::map<std::uintptr_t, DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS> m_Recipients;  // by registration
  std::uintptr_t m_LastRegistration = 0x9A000;
};

}  // namespace corvane::platform::sim
