#include "wlan/fake_wlan.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane::test {

using namespace platform;

GUID AdapterGuid(std::uint8_t number) {
  GUID guid;
  guid.Data4[7] = number;
  guid.Data1 = 0x5A000000u + number;
  return guid;
}

MacAddress Bssid(std::uint8_t last) { return {0x02, 0x11, 0x22, 0x33, 0x44, last}; }

DOT11_SSID Ssid(std::string_view bytes) {
  DOT11_SSID ssid;
  ssid.uSSIDLength = static_cast<ULONG>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), ssid.ucSSID);
  return ssid;
}

FakeWlan::~FakeWlan() { EXPECT_EQ(m_OpenBuffers, 0) << "buffers that were not given back"; }

DWORD FakeWlan::Enter(const char* operation) {
  calls.emplace_back(operation);
  const auto at = codes.find(operation);
  if (at == codes.end()) return ERROR_SUCCESS;
  if (at->second == kFault) throw PlatformFault{kFault};
  return at->second;
}

void* FakeWlan::Buffer(std::size_t size) {
  ++m_OpenBuffers;
  return std::calloc(1, size);
}

void FakeWlan::WlanFreeMemory(void* memory) {
  --m_OpenBuffers;
  std::free(memory);
}

DWORD FakeWlan::CountOf(const char* operation, std::size_t count) const {
  const auto at = claims.find(operation);
  return at == claims.end() ? static_cast<DWORD>(count) : at->second;
}

template <class List, class Item>
List* FakeWlan::MakeList(const char* operation, std::size_t itemsAt,
                         const std::vector<Item>& items) {
  auto* bytes = static_cast<std::uint8_t*>(Buffer(itemsAt + items.size() * sizeof(Item)));
  const DWORD count = CountOf(operation, items.size());
  std::memcpy(bytes, &count, sizeof(count));
  if (!items.empty()) std::memcpy(bytes + itemsAt, items.data(), items.size() * sizeof(Item));
  return reinterpret_cast<List*>(bytes);
}

void FakeWlan::Connect(std::string_view ssid, const MacAddress& bssid, std::uint32_t quality) {
  connection.isState = wlan_interface_state_connected;
  connection.wlanAssociationAttributes.dot11Ssid = Ssid(ssid);
  std::copy(bssid.begin(), bssid.end(), connection.wlanAssociationAttributes.dot11Bssid);
  connection.wlanAssociationAttributes.wlanSignalQuality = quality;
}

void FakeWlan::Notify(DWORD source, DWORD code, const void* data, DWORD size,
                      std::uint8_t adapter) {
  if (!m_Callback) return;
  std::vector<std::uint8_t> bytes(size);
  if (size) std::memcpy(bytes.data(), data, size);
  WLAN_NOTIFICATION_DATA notification;
  notification.NotificationSource = source;
  notification.NotificationCode = code;
  notification.InterfaceGuid = AdapterGuid(adapter);
  notification.dwDataSize = size;
  notification.pData = size ? bytes.data() : nullptr;
  m_Callback(&notification, m_pContext);
}

void FakeWlan::NotifyConnection(DWORD code, std::string_view ssid, DWORD reason) {
  WLAN_CONNECTION_NOTIFICATION_DATA data;
  data.dot11Ssid = Ssid(ssid);
  data.wlanReasonCode = reason;
  Notify(WLAN_NOTIFICATION_SOURCE_ACM, code, &data, sizeof(data));
}

void FakeWlan::NotifyScan(DWORD code) {
  const DWORD reason = 0;
  Notify(WLAN_NOTIFICATION_SOURCE_ACM, code, &reason, sizeof(reason));
}

void FakeWlan::Post(DWORD delayMs, std::function<void()> what) {
  struct Letter {
    DWORD delayMs;
    std::function<void()> what;
  };
  const auto deliver = [](void* parameter) -> DWORD {
    const std::unique_ptr<Letter> letter(static_cast<Letter*>(parameter));
    Os().threads.Sleep(letter->delayMs);
    letter->what();
    return 0;
  };
  DWORD id = 0;
  const HANDLE thread =
      Os().threads.CreateThread(deliver, new Letter{delayMs, std::move(what)}, "notification", &id);
  Os().threads.CloseHandle(thread);
}

void FakeWlan::PostConnection(DWORD delayMs, DWORD code, std::string ssid, DWORD reason) {
  Post(delayMs,
       [this, code, ssid = std::move(ssid), reason] { NotifyConnection(code, ssid, reason); });
}

DWORD FakeWlan::WlanOpenHandle(DWORD version, void*, DWORD* negotiated, HANDLE* client) {
  if (const DWORD code = Enter("WlanOpenHandle")) return code;
  if (version != 2) return ERROR_NOT_SUPPORTED;
  *negotiated = version;
  *client = this;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanCloseHandle(HANDLE, void*) { return Enter("WlanCloseHandle"); }

DWORD FakeWlan::WlanRegisterNotification(HANDLE, DWORD source, BOOL,
                                         WLAN_NOTIFICATION_CALLBACK callback, void* context, void*,
                                         DWORD*) {
  if (const DWORD code = Enter("WlanRegisterNotification")) return code;
  m_Callback = source == WLAN_NOTIFICATION_SOURCE_NONE ? nullptr : callback;
  m_pContext = context;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanEnumInterfaces(HANDLE, void*, WLAN_INTERFACE_INFO_LIST** list) {
  if (const DWORD code = Enter("WlanEnumInterfaces")) return code;
  std::vector<WLAN_INTERFACE_INFO> items;
  for (const GUID& guid : adapters) items.emplace_back().InterfaceGuid = guid;
  *list = MakeList<WLAN_INTERFACE_INFO_LIST>(
      "WlanEnumInterfaces", offsetof(WLAN_INTERFACE_INFO_LIST, InterfaceInfo), items);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetInterfaceCapability(HANDLE, const GUID*, void*,
                                           WLAN_INTERFACE_CAPABILITY** capability) {
  if (const DWORD code = Enter("WlanGetInterfaceCapability")) return code;
  WLAN_INTERFACE_CAPABILITY record;
  record.dwNumberOfSupportedPhys = CountOf("WlanGetInterfaceCapability", phys.size());
  std::copy(phys.begin(), phys.end(), record.dot11PhyTypes);
  *capability = static_cast<WLAN_INTERFACE_CAPABILITY*>(Buffer(sizeof(record)));
  std::memcpy(static_cast<void*>(*capability), &record, sizeof(record));
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanQueryInterface(HANDLE, const GUID*, LONG opcode, void*, DWORD* size,
                                   void** data, LONG*) {
  if (const DWORD code = Enter("WlanQueryInterface")) return code;
  const DWORD number =
      opcode == wlan_intf_opcode_channel_number
          ? channel
          : static_cast<DWORD>(connection.isState ? connection.isState
                                                  : wlan_interface_state_disconnected);
  WLAN_RADIO_STATE radio;
  const void* from = &number;
  std::size_t length = sizeof(number);
  if (opcode == wlan_intf_opcode_current_connection) {
    if (connection.isState == 0) return ERROR_INVALID_STATE;
    from = &connection;
    length = sizeof(connection);
  } else if (opcode == wlan_intf_opcode_radio_state) {
    from = &radio;
    length = sizeof(radio);
  }
  length = std::min<std::size_t>(length, querySize);
  *data = Buffer(length);
  *size = static_cast<DWORD>(length);
  std::memcpy(*data, from, length);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanScan(HANDLE, const GUID*, const DOT11_SSID* ssid, const void*, void*) {
  if (const DWORD code = Enter("WlanScan")) return code;
  scans.push_back(ssid ? SsidBytes(*ssid) : std::string());
  if (onScan) {
    onScan(ssid);
  } else {
    Post(1000, [this] { NotifyScan(wlan_notification_acm_scan_complete); });
  }
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetAvailableNetworkList(HANDLE, const GUID*, DWORD, void*,
                                            WLAN_AVAILABLE_NETWORK_LIST** list) {
  if (const DWORD code = Enter("WlanGetAvailableNetworkList")) return code;
  std::vector<WLAN_AVAILABLE_NETWORK> items;
  for (const std::string& ssid : networks) {
    WLAN_AVAILABLE_NETWORK& item = items.emplace_back();
    item.dot11Ssid = Ssid(ssid);
    const auto quality = networkQualities.find(ssid);
    if (quality != networkQualities.end()) item.wlanSignalQuality = quality->second;
  }
  *list = MakeList<WLAN_AVAILABLE_NETWORK_LIST>(
      "WlanGetAvailableNetworkList", offsetof(WLAN_AVAILABLE_NETWORK_LIST, Network), items);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetNetworkBssList(HANDLE, const GUID*, const DOT11_SSID*, LONG, BOOL, void*,
                                      WLAN_BSS_LIST** list) {
  if (const DWORD code = Enter("WlanGetNetworkBssList")) return code;
  constexpr std::size_t kAt = offsetof(WLAN_BSS_LIST, wlanBssEntries);
  std::size_t total = kAt + entries.size() * sizeof(WLAN_BSS_ENTRY);
  const std::size_t elementsAt = total;
  for (const FakeBss& bss : entries) total += bss.elements.size();
  auto* bytes = static_cast<std::uint8_t*>(Buffer(total));
  const DWORD head[2] = {static_cast<DWORD>(total),
                         CountOf("WlanGetNetworkBssList", entries.size())};
  std::memcpy(bytes, head, sizeof(head));
  std::size_t elements = elementsAt;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const FakeBss& bss = entries[i];
    const std::size_t at = kAt + i * sizeof(WLAN_BSS_ENTRY);
    WLAN_BSS_ENTRY record;
    record.dot11Ssid = Ssid(bss.ssid);
    std::copy(bss.bssid.begin(), bss.bssid.end(), record.dot11Bssid);
    record.uLinkQuality = bss.quality;
    record.ulChCenterFrequency = bss.frequencyKhz;
    record.ulIeOffset = static_cast<ULONG>(elements - at) + bss.elementsAway;
    record.ulIeSize = static_cast<ULONG>(bss.elements.size());
    std::memcpy(bytes + at, &record, sizeof(record));
    std::copy(bss.elements.begin(), bss.elements.end(), bytes + elements);
    elements += bss.elements.size();
  }
  *list = reinterpret_cast<WLAN_BSS_LIST*>(bytes);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanConnect(HANDLE, const GUID*, const WLAN_CONNECTION_PARAMETERS* parameters,
                            void*) {
  if (const DWORD code = Enter("WlanConnect")) return code;
  connects.emplace_back(parameters->strProfile);
  if (onConnect) onConnect(*parameters);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanDisconnect(HANDLE, const GUID*, void*) {
  if (const DWORD code = Enter("WlanDisconnect")) return code;
  if (onDisconnect) onDisconnect();
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetProfile(HANDLE, const GUID*, LPCWSTR name, void*, char16_t** xml,
                               DWORD* flags, DWORD* access) {
  if (const DWORD code = Enter("WlanGetProfile")) return code;
  const auto at = profiles.find(name);
  if (at == profiles.end()) return ERROR_NOT_FOUND;
  const std::size_t size = (at->second.size() + 1) * sizeof(char16_t);
  *xml = static_cast<char16_t*>(Buffer(size));
  std::memcpy(*xml, at->second.c_str(), size);
  *flags = 0;
  *access = grantedAccess;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetProfileList(HANDLE, const GUID*, void*, WLAN_PROFILE_INFO_LIST** list) {
  if (const DWORD code = Enter("WlanGetProfileList")) return code;
  std::vector<WLAN_PROFILE_INFO> items;
  for (const auto& [name, xml] : profiles) {
    std::copy(name.begin(), name.end(), items.emplace_back().strProfileName);
  }
  *list = MakeList<WLAN_PROFILE_INFO_LIST>("WlanGetProfileList",
                                           offsetof(WLAN_PROFILE_INFO_LIST, ProfileInfo), items);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanSetProfile(HANDLE, const GUID*, DWORD flags, LPCWSTR xml, LPCWSTR,
                               BOOL overwrite, void*, DWORD* reason) {
  *reason = 0;
  if (const DWORD code = Enter("WlanSetProfile")) return code;
  if (flags != 0 || !overwrite) return ERROR_INVALID_PARAMETER;  // for all users, in its place
  saved.emplace_back(xml);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanDeleteProfile(HANDLE, const GUID*, LPCWSTR name, void*) {
  if (const DWORD code = Enter("WlanDeleteProfile")) return code;
  deleted.emplace_back(name);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetFilterList(HANDLE, LONG type, void*, DOT11_NETWORK_LIST** list) {
  if (const DWORD code = Enter("WlanGetFilterList")) return code;
  if (!filters.contains(type)) return ERROR_SUCCESS;
  std::vector<DOT11_NETWORK> items;
  for (const std::string& ssid : filters[type]) items.emplace_back().dot11Ssid = Ssid(ssid);
  *list = MakeList<DOT11_NETWORK_LIST>("WlanGetFilterList", offsetof(DOT11_NETWORK_LIST, Network),
                                       items);
  return ERROR_SUCCESS;
}

}  // namespace corvane::test
