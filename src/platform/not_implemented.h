#pragma once
#include "platform/types.h"

namespace corvane::platform {

// Leaves ERROR_CALL_NOT_IMPLEMENTED as the calling thread's last error, where a platform is in
// force. For the default of an operation that answers by BOOL or by a handle.
void SetNotImplemented();

}  // namespace corvane::platform
