#include "platform/ip_helper_api.h"

namespace corvane::platform {

DWORD IpHelperApi::GetIfTable(MIB_IFTABLE*, ULONG*, BOOL) { return ERROR_CALL_NOT_IMPLEMENTED; }

ULONG IpHelperApi::GetAdaptersAddresses(ULONG, ULONG, void*, IP_ADAPTER_ADDRESSES*, ULONG*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

ULONG IpHelperApi::GetAdaptersInfo(IP_ADAPTER_INFO*, ULONG*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD IpHelperApi::GetIpNetTable2(WORD, MIB_IPNET_TABLE2**) { return ERROR_CALL_NOT_IMPLEMENTED; }

void IpHelperApi::FreeMibTable(void*) {}

DWORD IpHelperApi::ResolveIpNetEntry2(MIB_IPNET_ROW2*, const SOCKADDR_INET*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD IpHelperApi::CreateIpForwardEntry(const MIB_IPFORWARDROW*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD IpHelperApi::DeleteIpForwardEntry(const MIB_IPFORWARDROW*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD IpHelperApi::GetIpForwardTable(MIB_IPFORWARDTABLE*, ULONG*, BOOL) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

void IpHelperApi::InitializeIpForwardEntry(MIB_IPFORWARD_ROW2*) {}

DWORD IpHelperApi::CreateIpForwardEntry2(const MIB_IPFORWARD_ROW2*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD IpHelperApi::DeleteIpForwardEntry2(const MIB_IPFORWARD_ROW2*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD IpHelperApi::GetIpInterfaceEntry(MIB_IPINTERFACE_ROW*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD IpHelperApi::GetIfEntry2(MIB_IF_ROW2*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD IpHelperApi::ConvertInterfaceGuidToLuid(const GUID*, ULONGLONG*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace corvane::platform
