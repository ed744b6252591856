#pragma once
#include <string>

#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// What WlanReasonCodeToString says of a WLAN_REASON_CODE.
std::u16string ReasonText(DWORD reason);

}  // namespace corvane::platform::sim
