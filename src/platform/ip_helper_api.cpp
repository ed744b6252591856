#include "platform/ip_helper_api.h"

namespace corvane::platform {

DWORD IpHelperApi::GetIfTable(MIB_IFTABLE*, ULONG*, BOOL) { return ERROR_CALL_NOT_IMPLEMENTED; }

}  // namespace corvane::platform
