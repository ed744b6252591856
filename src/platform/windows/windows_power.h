#pragma once
#include "platform/power_api.h"

namespace corvane::platform::windows {

// The state of mains and battery.
class WindowsPower final : public PowerApi {
 public:
  BOOL GetSystemPowerStatus(SYSTEM_POWER_STATUS* status) override;
};

}  // namespace corvane::platform::windows
