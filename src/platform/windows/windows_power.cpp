#include "platform/windows/windows_power.h"

#include "platform/windows/system_call.h"

namespace corvane::platform::windows {

BOOL WindowsPower::GetSystemPowerStatus(SYSTEM_POWER_STATUS* status) {
  return ForwardOrFail("GetSystemPowerStatus",
                       [&] { return ::GetSystemPowerStatus(As<::SYSTEM_POWER_STATUS>(status)); });
}

}  // namespace corvane::platform::windows
