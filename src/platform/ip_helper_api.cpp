#include "platform/ip_helper_api.h"

namespace corvane::platform {

DWORD IpHelperApi::GetIfTable(MIB_IFTABLE*, ULONG*, BOOL) { return ERROR_CALL_NOT_IMPLEMENTED; }

ULONG IpHelperApi::GetAdaptersAddresses(ULONG, ULONG, void*, IP_ADAPTER_ADDRESSES*, ULONG*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

ULONG IpHelperApi::GetAdaptersInfo(IP_ADAPTER_INFO*, ULONG*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD IpHelperApi::GetIpNetTable2(WORD, MIB_IPNET_TABLE2**) { return ERROR_CALL_NOT_IMPLEMENTED; }

void IpHelperApi::FreeMibTable(void*) {}

}  // namespace corvane::platform
