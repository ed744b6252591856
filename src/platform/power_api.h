#pragma once
#include "platform/types.h"

namespace corvane::platform {

struct SYSTEM_POWER_STATUS {
  BYTE ACLineStatus = 255;  // 0 battery, 1 mains, 255 unknown
  BYTE BatteryFlag = 255;
  BYTE BatteryLifePercent = 255;
  BYTE SystemStatusFlag = 0;
  DWORD BatteryLifeTime = 0xFFFFFFFF;      // seconds
  DWORD BatteryFullLifeTime = 0xFFFFFFFF;  // seconds
};
static_assert(sizeof(SYSTEM_POWER_STATUS) == 12);

// What a power notification tells: wParam of WM_POWERBROADCAST.
inline constexpr ULONG PBT_APMSUSPEND = 4;
inline constexpr ULONG PBT_APMRESUMESUSPEND = 7;
inline constexpr ULONG PBT_APMPOWERSTATUSCHANGE = 10;
inline constexpr ULONG PBT_APMRESUMEAUTOMATIC = 18;

inline constexpr DWORD DEVICE_NOTIFY_CALLBACK = 2;

using DEVICE_NOTIFY_CALLBACK_ROUTINE = ULONG (*)(void* context, ULONG type, void* setting);

struct DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS {
  DEVICE_NOTIFY_CALLBACK_ROUTINE Callback = nullptr;
  void* Context = nullptr;
};

class PowerApi {
 public:
  virtual ~PowerApi() = default;
  virtual BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status);
  // Suspend and resume; other types may come too. The callback runs on a thread of the platform's
  // own, one call at a time, and not any more once the registration has ended. `flags` is
  // DEVICE_NOTIFY_CALLBACK.
  virtual DWORD PowerRegisterSuspendResumeNotification(
      DWORD flags, const DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS* recipient, HANDLE* registration);
  virtual DWORD PowerUnregisterSuspendResumeNotification(HANDLE registration);
};

}  // namespace corvane::platform
