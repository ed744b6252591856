#pragma once
#include "platform/types.h"

namespace corvane::platform::windows {

// Whether a file, folder or kernel object belongs to the system, to administrators or to the
// account of this process. An owner can always change the rights of what he owns, so that what was
// made by somebody else before this program came is no place for its own. False also for a handle
// without READ_CONTROL.
bool HasTrustedOwner(HANDLE object);

}  // namespace corvane::platform::windows
