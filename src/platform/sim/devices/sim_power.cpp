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

DWORD SimPower::PowerRegisterSuspendResumeNotification(
    DWORD flags, const DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS* recipient, HANDLE* registration) {
  if (const DWORD code = m_Gate.Enter("PowerRegisterSuspendResumeNotification");
      code != ERROR_SUCCESS) {
    return code;
  }
  if (flags != DEVICE_NOTIFY_CALLBACK || !recipient || !recipient->Callback || !registration) {
    return ERROR_INVALID_PARAMETER;
  }
  m_Machine.loop.WithLock([&] {
    m_LastRegistration += 0x10;
    m_Recipients[m_LastRegistration] = *recipient;
    *registration = reinterpret_cast<HANDLE>(m_LastRegistration);
  });
  return ERROR_SUCCESS;
}

DWORD SimPower::PowerUnregisterSuspendResumeNotification(HANDLE registration) {
  const bool ended = m_Machine.loop.WithLock(
      [&] { return m_Recipients.erase(reinterpret_cast<std::uintptr_t>(registration)) == 1; });
  m_Machine.loop.AwaitCallback();
  if (const DWORD code = m_Gate.Enter("PowerUnregisterSuspendResumeNotification");
      code != ERROR_SUCCESS) {
    return code;
  }
  return ended ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

void SimPower::Notify(ULONG type) {
  if (m_Recipients.empty()) return;
  m_Machine.loop.Deliver([this, type] { Deliver(type); });
}

void SimPower::Deliver(ULONG type) {
  std::uintptr_t last = 0;
  for (bool more = true; more;) {
    m_Machine.loop.CallBack([&] {
      const auto recipient = m_Machine.loop.WithLock([&] {
        const auto next = m_Recipients.upper_bound(last);
        more = next != m_Recipients.end();
        if (!more) return DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS{};
        last = next->first;
        return next->second;
      });
      if (more) recipient.Callback(recipient.Context, type, nullptr);
    });
  }
}

}  // namespace corvane::platform::sim
