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

class PowerApi {
 public:
  virtual ~PowerApi() = default;
  virtual BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status);
};

}  // namespace corvane::platform
