#pragma once
#include "platform/wlan_types.h"

namespace corvane::platform {

// Native Wifi. Results are error codes; buffers that an operation gives out belong to the caller
// and go back with WlanFreeMemory. Safe for use from every thread. Notifications come on a thread
// of the platform's own, one at a time, with no lock held; once WlanCloseHandle or a registration
// for WLAN_NOTIFICATION_SOURCE_NONE has returned, the callback is not called any more. Those two
// wait for a callback that runs, and are not called with a lock held that it takes. The callback
// lets no exception out.
class WlanApi {
 public:
  virtual ~WlanApi() = default;
  virtual DWORD WlanOpenHandle(DWORD clientVersion, void* reserved, DWORD* negotiated,
                               HANDLE* client);
  virtual DWORD WlanCloseHandle(HANDLE client, void* reserved);
  virtual DWORD WlanRegisterNotification(HANDLE client, DWORD source, BOOL ignoreDuplicate,
                                         WLAN_NOTIFICATION_CALLBACK callback, void* context,
                                         void* reserved, DWORD* previousSource);
  virtual DWORD WlanEnumInterfaces(HANDLE client, void* reserved, WLAN_INTERFACE_INFO_LIST** list);
  virtual DWORD WlanGetInterfaceCapability(HANDLE client, const GUID* adapter, void* reserved,
                                           WLAN_INTERFACE_CAPABILITY** capability);
  virtual DWORD WlanQueryInterface(HANDLE client, const GUID* adapter, LONG opcode, void* reserved,
                                   DWORD* dataSize, void** data, LONG* valueType);
  virtual void WlanFreeMemory(void* memory);

  virtual DWORD WlanScan(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                         const void* ieData, void* reserved);
  virtual DWORD WlanGetAvailableNetworkList(HANDLE client, const GUID* adapter, DWORD flags,
                                            void* reserved, WLAN_AVAILABLE_NETWORK_LIST** list);
  virtual DWORD WlanGetNetworkBssList(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                                      LONG bssType, BOOL securityEnabled, void* reserved,
                                      WLAN_BSS_LIST** list);

  virtual DWORD WlanConnect(HANDLE client, const GUID* adapter,
                            const WLAN_CONNECTION_PARAMETERS* parameters, void* reserved);
  virtual DWORD WlanDisconnect(HANDLE client, const GUID* adapter, void* reserved);
  virtual DWORD WlanReasonCodeToString(DWORD reason, DWORD bufferChars, char16_t* buffer,
                                       void* reserved);

  // `xml` goes back with WlanFreeMemory.
  virtual DWORD WlanGetProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void* reserved,
                               char16_t** xml, DWORD* flags, DWORD* grantedAccess);
  virtual DWORD WlanGetProfileList(HANDLE client, const GUID* adapter, void* reserved,
                                   WLAN_PROFILE_INFO_LIST** list);
  virtual DWORD WlanSetProfile(HANDLE client, const GUID* adapter, DWORD flags, LPCWSTR xml,
                               LPCWSTR security, BOOL overwrite, void* reserved, DWORD* reason);
  virtual DWORD WlanDeleteProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void* reserved);
  // A null list with ERROR_SUCCESS means an empty one.
  virtual DWORD WlanGetFilterList(HANDLE client, LONG type, void* reserved,
                                  DOT11_NETWORK_LIST** list);
  // A private call to the driver of an adapter; `type` is wlan_ihv_control_type_driver.
  virtual DWORD WlanIhvControl(HANDLE client, const GUID* adapter, LONG type, DWORD inputSize,
                               const void* input, DWORD outputSize, void* output, DWORD* returned);
};

}  // namespace corvane::platform
