#pragma once
#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>

#include "platform/windows/system_library.h"
#include "platform/wlan_api.h"

namespace corvane::platform::windows {

// A callback that a client has registered. The system may use one that a later one has replaced,
// too, until the client has none any more or is closed.
struct WlanRegistration {
  HANDLE client = nullptr;
  std::uint64_t number = 0;  // in the order of the calls
  WLAN_NOTIFICATION_CALLBACK callback = nullptr;
  void* context = nullptr;
};

// Native Wifi over wlanapi.dll, which a server or a cut-down system may lack: its operations answer
// ERROR_CALL_NOT_IMPLEMENTED then.
class WindowsWlan final : public WlanApi {
 public:
  explicit WindowsWlan(const SystemLibrary& library = kLibrary) : m_Library(library) {}

  DWORD WlanOpenHandle(DWORD clientVersion, void* reserved, DWORD* negotiated,
                       HANDLE* client) override;
  DWORD WlanCloseHandle(HANDLE client, void* reserved) override;
  DWORD WlanRegisterNotification(HANDLE client, DWORD source, BOOL ignoreDuplicate,
                                 WLAN_NOTIFICATION_CALLBACK callback, void* context, void* reserved,
                                 DWORD* previousSource) override;
  DWORD WlanEnumInterfaces(HANDLE client, void* reserved, WLAN_INTERFACE_INFO_LIST** list) override;
  DWORD WlanGetInterfaceCapability(HANDLE client, const GUID* adapter, void* reserved,
                                   WLAN_INTERFACE_CAPABILITY** capability) override;
  DWORD WlanQueryInterface(HANDLE client, const GUID* adapter, LONG opcode, void* reserved,
                           DWORD* dataSize, void** data, LONG* valueType) override;
  void WlanFreeMemory(void* memory) override;
  DWORD WlanScan(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid, const void* ieData,
                 void* reserved) override;
  DWORD WlanGetAvailableNetworkList(HANDLE client, const GUID* adapter, DWORD flags, void* reserved,
                                    WLAN_AVAILABLE_NETWORK_LIST** list) override;
  DWORD WlanGetNetworkBssList(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                              LONG bssType, BOOL securityEnabled, void* reserved,
                              WLAN_BSS_LIST** list) override;
  DWORD WlanConnect(HANDLE client, const GUID* adapter,
                    const WLAN_CONNECTION_PARAMETERS* parameters, void* reserved) override;
  DWORD WlanDisconnect(HANDLE client, const GUID* adapter, void* reserved) override;
  DWORD WlanReasonCodeToString(DWORD reason, DWORD bufferChars, char16_t* buffer,
                               void* reserved) override;
  DWORD WlanGetProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void* reserved,
                       char16_t** xml, DWORD* flags, DWORD* grantedAccess) override;
  DWORD WlanGetProfileList(HANDLE client, const GUID* adapter, void* reserved,
                           WLAN_PROFILE_INFO_LIST** list) override;
  DWORD WlanSetProfile(HANDLE client, const GUID* adapter, DWORD flags, LPCWSTR xml,
                       LPCWSTR security, BOOL overwrite, void* reserved, DWORD* reason) override;
  DWORD WlanDeleteProfile(HANDLE client, const GUID* adapter, LPCWSTR name,
                          void* reserved) override;
  DWORD WlanGetFilterList(HANDLE client, LONG type, void* reserved,
                          DOT11_NETWORK_LIST** list) override;
  DWORD WlanIhvControl(HANDLE client, const GUID* adapter, LONG type, DWORD inputSize,
                       const void* input, DWORD outputSize, void* output, DWORD* returned) override;

  std::size_t Registrations();  // callbacks that the system may call

 private:
  static inline constinit const SystemLibrary kLibrary{L"wlanapi.dll"};

  WlanRegistration* Remember(HANDLE client, WLAN_NOTIFICATION_CALLBACK callback, void* context);
  std::uint64_t LastNumber();
  void Forget(HANDLE client, std::uint64_t upTo);
  void Forget(const WlanRegistration* registration);

  const SystemLibrary& m_Library;
  std::mutex m_Mutex;  // guards the two below
  std::uint64_t m_LastNumber = 0;
  std::list<WlanRegistration> m_Registrations;
};

}  // namespace corvane::platform::windows
