#include "platform/power_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

BOOL PowerApi::GetSystemPowerStatus(SYSTEM_POWER_STATUS*) {
  SetNotImplemented();
  return FALSE;
}

DWORD PowerApi::PowerRegisterSuspendResumeNotification(DWORD,
                                                       const DEVICE_NOTIFY_SUBSCRIBE_PARAMETERS*,
                                                       HANDLE*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD PowerApi::PowerUnregisterSuspendResumeNotification(HANDLE) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace corvane::platform
