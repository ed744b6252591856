#include "platform/windows/windows_wlan.h"

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

// Since Windows Vista; not every version of the header declares it.
using IhvControl = ::DWORD WINAPI(::HANDLE client, const ::GUID* adapter,
                                  ::WLAN_IHV_CONTROL_TYPE type, ::DWORD inputSize, void* input,
                                  ::DWORD outputSize, void* output, ::DWORD* returned);

// Read only, though the system's declarations do not say so.
::DOT11_SSID* Ssid(const DOT11_SSID* ssid) {
  return As<::DOT11_SSID>(const_cast<DOT11_SSID*>(ssid));
}
const ::GUID* Adapter(const GUID* adapter) { return As<const ::GUID>(adapter); }

// On a thread of the system: nothing may leave it.
void WINAPI OnNotification(::WLAN_NOTIFICATION_DATA* data, void* context) noexcept {
  const auto& registration = *static_cast<const WlanRegistration*>(context);
  try {
    registration.callback(As<WLAN_NOTIFICATION_DATA>(data), registration.context);
  } catch (...) {
  }
}

}  // namespace

DWORD WindowsWlan::WlanOpenHandle(DWORD clientVersion, void* reserved, DWORD* negotiated,
                                  HANDLE* client) {
  return ForwardIfFound("WlanOpenHandle", CORVANE_FIND(m_Library, WlanOpenHandle), clientVersion,
                        reserved, As32(negotiated), client);
}

// Closing the handle waits for a callback that runs.
DWORD WindowsWlan::WlanCloseHandle(HANDLE client, void* reserved) {
  const std::uint64_t last = LastNumber();
  const DWORD code =
      ForwardIfFound("WlanCloseHandle", CORVANE_FIND(m_Library, WlanCloseHandle), client, reserved);
  if (code == ERROR_SUCCESS) Forget(client, last);
  return code;
}

DWORD WindowsWlan::WlanRegisterNotification(HANDLE client, DWORD source, BOOL ignoreDuplicate,
                                            WLAN_NOTIFICATION_CALLBACK callback, void* context,
                                            void* reserved, DWORD* previousSource) {
  const auto call = CORVANE_FIND(m_Library, WlanRegisterNotification);
  const std::uint64_t last = LastNumber();
  WlanRegistration* const own = callback && source != WLAN_NOTIFICATION_SOURCE_NONE
                                    ? Remember(client, callback, context)
                                    : nullptr;
  const DWORD code =
      ForwardIfFound("WlanRegisterNotification", call, client, source, ignoreDuplicate,
                     own ? &OnNotification : nullptr, own, reserved, As32(previousSource));
  if (code != ERROR_SUCCESS) {
    Forget(own);
  } else if (source == WLAN_NOTIFICATION_SOURCE_NONE) {  // it has waited for a callback that ran
    Forget(client, last);
  }
  return code;
}

WlanRegistration* WindowsWlan::Remember(HANDLE client, WLAN_NOTIFICATION_CALLBACK callback,
                                        void* context) {
  const std::lock_guard lock(m_Mutex);
  return &m_Registrations.emplace_back(WlanRegistration{client, ++m_LastNumber, callback, context});
}

std::size_t WindowsWlan::Registrations() {
  const std::lock_guard lock(m_Mutex);
  return m_Registrations.size();
}

std::uint64_t WindowsWlan::LastNumber() {
  const std::lock_guard lock(m_Mutex);
  return m_LastNumber;
}

// Those of a later call are another client's with the same handle.
void WindowsWlan::Forget(HANDLE client, std::uint64_t upTo) {
  const std::lock_guard lock(m_Mutex);
  m_Registrations.remove_if([&](const WlanRegistration& registration) {
    return registration.client == client && registration.number <= upTo;
  });
}

void WindowsWlan::Forget(const WlanRegistration* registration) {
  const std::lock_guard lock(m_Mutex);
  m_Registrations.remove_if([&](const WlanRegistration& it) { return &it == registration; });
}

DWORD WindowsWlan::WlanEnumInterfaces(HANDLE client, void* reserved,
                                      WLAN_INTERFACE_INFO_LIST** list) {
  return ForwardIfFound("WlanEnumInterfaces", CORVANE_FIND(m_Library, WlanEnumInterfaces), client,
                        reserved, As<::WLAN_INTERFACE_INFO_LIST*>(list));
}

DWORD WindowsWlan::WlanGetInterfaceCapability(HANDLE client, const GUID* adapter, void* reserved,
                                              WLAN_INTERFACE_CAPABILITY** capability) {
  return ForwardIfFound("WlanGetInterfaceCapability",
                        CORVANE_FIND(m_Library, WlanGetInterfaceCapability), client,
                        Adapter(adapter), reserved, As<::WLAN_INTERFACE_CAPABILITY*>(capability));
}

DWORD WindowsWlan::WlanQueryInterface(HANDLE client, const GUID* adapter, LONG opcode,
                                      void* reserved, DWORD* dataSize, void** data,
                                      LONG* valueType) {
  return ForwardIfFound("WlanQueryInterface", CORVANE_FIND(m_Library, WlanQueryInterface), client,
                        Adapter(adapter), static_cast<::WLAN_INTF_OPCODE>(opcode), reserved,
                        As32(dataSize), data, As<::WLAN_OPCODE_VALUE_TYPE>(valueType));
}

void WindowsWlan::WlanFreeMemory(void* memory) {
  const auto call = CORVANE_FIND(m_Library, WlanFreeMemory);
  if (call) Forward("WlanFreeMemory", [&] { call(memory); });
}

DWORD WindowsWlan::WlanScan(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                            const void* ieData, void* reserved) {
  return ForwardIfFound("WlanScan", CORVANE_FIND(m_Library, WlanScan), client, Adapter(adapter),
                        Ssid(ssid), static_cast<::WLAN_RAW_DATA*>(const_cast<void*>(ieData)),
                        reserved);
}

DWORD WindowsWlan::WlanGetAvailableNetworkList(HANDLE client, const GUID* adapter, DWORD flags,
                                               void* reserved, WLAN_AVAILABLE_NETWORK_LIST** list) {
  return ForwardIfFound(
      "WlanGetAvailableNetworkList", CORVANE_FIND(m_Library, WlanGetAvailableNetworkList), client,
      Adapter(adapter), flags, reserved, As<::WLAN_AVAILABLE_NETWORK_LIST*>(list));
}

DWORD WindowsWlan::WlanGetNetworkBssList(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                                         LONG bssType, BOOL securityEnabled, void* reserved,
                                         WLAN_BSS_LIST** list) {
  return ForwardIfFound("WlanGetNetworkBssList", CORVANE_FIND(m_Library, WlanGetNetworkBssList),
                        client, Adapter(adapter), Ssid(ssid),
                        static_cast<::DOT11_BSS_TYPE>(bssType), securityEnabled, reserved,
                        As<::WLAN_BSS_LIST*>(list));
}

DWORD WindowsWlan::WlanConnect(HANDLE client, const GUID* adapter,
                               const WLAN_CONNECTION_PARAMETERS* parameters, void* reserved) {
  auto* const given =
      As<::WLAN_CONNECTION_PARAMETERS>(const_cast<WLAN_CONNECTION_PARAMETERS*>(parameters));
  return ForwardIfFound("WlanConnect", CORVANE_FIND(m_Library, WlanConnect), client,
                        Adapter(adapter), given, reserved);
}

DWORD WindowsWlan::WlanDisconnect(HANDLE client, const GUID* adapter, void* reserved) {
  return ForwardIfFound("WlanDisconnect", CORVANE_FIND(m_Library, WlanDisconnect), client,
                        Adapter(adapter), reserved);
}

// The buffer is counted in characters; a longer text is cut, with its NUL.
DWORD WindowsWlan::WlanReasonCodeToString(DWORD reason, DWORD bufferChars, char16_t* buffer,
                                          void* reserved) {
  return ForwardIfFound("WlanReasonCodeToString", CORVANE_FIND(m_Library, WlanReasonCodeToString),
                        reason, bufferChars, Wide(buffer), reserved);
}

DWORD WindowsWlan::WlanGetProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void* reserved,
                                  char16_t** xml, DWORD* flags, DWORD* grantedAccess) {
  return ForwardIfFound("WlanGetProfile", CORVANE_FIND(m_Library, WlanGetProfile), client,
                        Adapter(adapter), Wide(name), reserved, As<wchar_t*>(xml), As32(flags),
                        As32(grantedAccess));
}

DWORD WindowsWlan::WlanGetProfileList(HANDLE client, const GUID* adapter, void* reserved,
                                      WLAN_PROFILE_INFO_LIST** list) {
  return ForwardIfFound("WlanGetProfileList", CORVANE_FIND(m_Library, WlanGetProfileList), client,
                        Adapter(adapter), reserved, As<::WLAN_PROFILE_INFO_LIST*>(list));
}

DWORD WindowsWlan::WlanSetProfile(HANDLE client, const GUID* adapter, DWORD flags, LPCWSTR xml,
                                  LPCWSTR security, BOOL overwrite, void* reserved, DWORD* reason) {
  return ForwardIfFound("WlanSetProfile", CORVANE_FIND(m_Library, WlanSetProfile), client,
                        Adapter(adapter), flags, Wide(xml), Wide(security), overwrite, reserved,
                        As32(reason));
}

DWORD WindowsWlan::WlanDeleteProfile(HANDLE client, const GUID* adapter, LPCWSTR name,
                                     void* reserved) {
  return ForwardIfFound("WlanDeleteProfile", CORVANE_FIND(m_Library, WlanDeleteProfile), client,
                        Adapter(adapter), Wide(name), reserved);
}

DWORD WindowsWlan::WlanGetFilterList(HANDLE client, LONG type, void* reserved,
                                     DOT11_NETWORK_LIST** list) {
  return ForwardIfFound("WlanGetFilterList", CORVANE_FIND(m_Library, WlanGetFilterList), client,
                        static_cast<::WLAN_FILTER_LIST_TYPE>(type), reserved,
                        As<::DOT11_NETWORK_LIST*>(list));
}

DWORD WindowsWlan::WlanIhvControl(HANDLE client, const GUID* adapter, LONG type, DWORD inputSize,
                                  const void* input, DWORD outputSize, void* output,
                                  DWORD* returned) {
  return ForwardIfFound("WlanIhvControl", m_Library.Find<IhvControl>("WlanIhvControl"), client,
                        Adapter(adapter), static_cast<::WLAN_IHV_CONTROL_TYPE>(type), inputSize,
                        const_cast<void*>(input), outputSize, output, As32(returned));
}

}  // namespace corvane::platform::windows
