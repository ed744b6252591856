#include "engine/wlan_access.h"

#include <utility>

#include "engine/wlan_buffer_owner.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint32_t kFirstVersion = 603;
constexpr DWORD kClientVersion = 2;

WStringView DescriptionOf(const WLAN_INTERFACE_INFO& one) {
  const WStringView whole(one.strInterfaceDescription, std::size(one.strInterfaceDescription));
  return whole.substr(0, whole.find(u'\0'));
}

}  // namespace

void CLBWlanAccess::Start(std::uint32_t systemVersion) {
  if (systemVersion < kFirstVersion) return;
  m_bSupported = true;
  if (!Open()) return;
  CLBWlanBuffer<WLAN_INTERFACE_INFO_LIST> list;
  const DWORD result = WlanCode("WlanEnumInterfaces", [&] {
    return Os().wlan.WlanEnumInterfaces(m_hClient, nullptr, list.Out());
  });
  if (result != ERROR_SUCCESS || !list || list->dwNumberOfItems == 0) {
    Close();
    return;
  }
  m_Default = list->InterfaceInfo[DefaultInterfacePlace(list->dwNumberOfItems)].InterfaceGuid;
  m_bDefault = true;
}

bool CLBWlanAccess::Open() {
  DWORD negotiated = 0;
  const DWORD result = WlanCode("WlanOpenHandle", [&] {
    return Os().wlan.WlanOpenHandle(kClientVersion, nullptr, &negotiated, &m_hClient);
  });
  if (result == ERROR_CALL_NOT_IMPLEMENTED) m_bSupported = false;
  if (result != ERROR_SUCCESS) m_hClient = nullptr;
  return m_hClient != nullptr;
}

void CLBWlanAccess::Close() noexcept {
  if (HANDLE const client = std::exchange(m_hClient, nullptr)) {
    GiveBack("CLBWlanAccess", "Close", [client] { Os().wlan.WlanCloseHandle(client, nullptr); });
  }
}

bool CLBWlanAccess::Ensure() { return m_hClient || (m_bSupported && Open()); }

DWORD CLBWlanAccess::FindInterface(WStringView name, GUID* adapter) {
  CLBWlanBuffer<WLAN_INTERFACE_INFO_LIST> list;
  const DWORD result = WlanCode("WlanEnumInterfaces", [&] {
    return Os().wlan.WlanEnumInterfaces(m_hClient, nullptr, list.Out());
  });
  if (result != ERROR_SUCCESS || !list) {
    // The service was restarted: its clients are gone.
    if (result == ERROR_INVALID_HANDLE) Close();
    return ERROR_NOT_FOUND;
  }
  const int place = FindInterfaceByName(list->InterfaceInfo, list->dwNumberOfItems, name);
  if (place < 0) return ERROR_NOT_FOUND;
  *adapter = list->InterfaceInfo[place].InterfaceGuid;
  return ERROR_SUCCESS;
}

int FindInterfaceByName(const WLAN_INTERFACE_INFO* interfaces, std::size_t count,
                        WStringView name) {
  if (name.empty()) return -1;
  int begins = -1;
  for (std::size_t i = 0; i < count; ++i) {
    const WStringView description = DescriptionOf(interfaces[i]);
    if (description == name) return static_cast<int>(i);
    if (begins < 0 && description.starts_with(name)) begins = static_cast<int>(i);
  }
  return begins;
}

}  // namespace corvane
