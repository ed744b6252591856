#include "platform/wlan_api.h"

namespace corvane::platform {

DWORD WlanApi::WlanOpenHandle(DWORD, void*, DWORD*, HANDLE*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD WlanApi::WlanCloseHandle(HANDLE, void*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD WlanApi::WlanRegisterNotification(HANDLE, DWORD, BOOL, WLAN_NOTIFICATION_CALLBACK, void*,
                                        void*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanEnumInterfaces(HANDLE, void*, WLAN_INTERFACE_INFO_LIST**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetInterfaceCapability(HANDLE, const GUID*, void*, WLAN_INTERFACE_CAPABILITY**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanQueryInterface(HANDLE, const GUID*, LONG, void*, DWORD*, void**, LONG*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

void WlanApi::WlanFreeMemory(void*) {}

DWORD WlanApi::WlanScan(HANDLE, const GUID*, const DOT11_SSID*, const void*, void*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetAvailableNetworkList(HANDLE, const GUID*, DWORD, void*,
                                           WLAN_AVAILABLE_NETWORK_LIST**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetNetworkBssList(HANDLE, const GUID*, const DOT11_SSID*, LONG, BOOL, void*,
                                     WLAN_BSS_LIST**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanConnect(HANDLE, const GUID*, const WLAN_CONNECTION_PARAMETERS*, void*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanDisconnect(HANDLE, const GUID*, void*) { return ERROR_CALL_NOT_IMPLEMENTED; }

DWORD WlanApi::WlanReasonCodeToString(DWORD, DWORD, char16_t*, void*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetProfile(HANDLE, const GUID*, LPCWSTR, void*, char16_t**, DWORD*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetProfileList(HANDLE, const GUID*, void*, WLAN_PROFILE_INFO_LIST**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanSetProfile(HANDLE, const GUID*, DWORD, LPCWSTR, LPCWSTR, BOOL, void*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanDeleteProfile(HANDLE, const GUID*, LPCWSTR, void*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanGetFilterList(HANDLE, LONG, void*, DOT11_NETWORK_LIST**) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

DWORD WlanApi::WlanIhvControl(HANDLE, const GUID*, LONG, DWORD, const void*, DWORD, void*, DWORD*) {
  return ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace corvane::platform
