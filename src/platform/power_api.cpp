#include "platform/power_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

BOOL PowerApi::GetSystemPowerStatus(SYSTEM_POWER_STATUS*) {
  SetNotImplemented();
  return FALSE;
}

}  // namespace corvane::platform
