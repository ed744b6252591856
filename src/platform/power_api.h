#pragma once
#include "platform/types.h"

namespace corvane::platform {

struct SYSTEM_POWER_STATUS {
  BYTE ACLineStatus = 255;        // 0 battery, 1 mains, 255 unknown
  BYTE BatteryFlag = 255;         // bits; 128 no battery, 255 unknown
  BYTE BatteryLifePercent = 255;  // 0 to 100, 255 unknown
  BYTE SystemStatusFlag = 0;
  DWORD BatteryLifeTime = 0xFFFFFFFF;      // seconds; 0xFFFFFFFF unknown
  DWORD BatteryFullLifeTime = 0xFFFFFFFF;  // seconds
};
static_assert(sizeof(SYSTEM_POWER_STATUS) == 12);

// FALSE on failure, with the reason in ThreadApi::GetLastError(). Safe for use from every thread.
class PowerApi {
 public:
  virtual ~PowerApi() = default;
  // Of this moment; *status is the caller's and is written only on success. Does not block.
  virtual BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status);
};

}  // namespace corvane::platform
