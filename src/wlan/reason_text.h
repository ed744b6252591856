#pragma once
#include "foundation/text.h"
#include "platform/types.h"

namespace corvane {

// The platform's text of a WLAN reason code; empty where it has none.
WString ReasonText(platform::DWORD reason);

}  // namespace corvane
