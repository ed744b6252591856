#include "platform/sim/devices/sim_power.h"

namespace corvane::platform::sim {

namespace {
constexpr BYTE kHigh = 1, kLow = 2, kCritical = 4;  // BatteryFlag
constexpr DWORD kSecondsFull = 4 * 3600;
}  // namespace

BOOL SimPower::GetSystemPowerStatus(SYSTEM_POWER_STATUS* status) {
  if (const DWORD code = m_Gate.Enter("GetSystemPowerStatus"); code != ERROR_SUCCESS) {
    m_Threads.SetLastError(code);
    return FALSE;
  }
  m_Machine.loop.WithLock([&] {
    const Power& power = m_Machine.world.power;
    *status = {};
    status->ACLineStatus = power.mains ? 1 : 0;
    status->BatteryLifePercent = power.batteryPercent;
    status->BatteryFlag = power.batteryPercent > 66   ? kHigh
                          : power.batteryPercent < 5  ? kCritical
                          : power.batteryPercent < 33 ? kLow
                                                      : BYTE{0};
    status->BatteryFullLifeTime = kSecondsFull;
    if (!power.mains) status->BatteryLifeTime = kSecondsFull / 100 * power.batteryPercent;
  });
  return TRUE;
}

}  // namespace corvane::platform::sim
