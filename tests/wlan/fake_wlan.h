#pragma once
// A WLAN service that answers from a script: lists and codes that the test sets, notifications that
// come on a thread of their own. Buffers have exactly the size that their content needs, so a read
// past one is found by the sanitizers, and one that is not given back fails the test.

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "foundation/text.h"
#include "platform/wlan_api.h"
#include "store/address_text.h"

namespace corvane::test {

platform::GUID AdapterGuid(std::uint8_t number);
MacAddress Bssid(std::uint8_t last);
platform::DOT11_SSID Ssid(std::string_view bytes);

struct FakeBss {
  std::string ssid;
  MacAddress bssid{};
  std::uint32_t quality = 60;
  std::uint32_t frequencyKhz = 5180000;
  std::vector<std::uint8_t> elements = {};
  std::uint32_t elementsAway = 0;  // moves the element offset out of place
};

class FakeWlan : public platform::WlanApi {
 public:
  ~FakeWlan() override;

  std::vector<platform::GUID> adapters{AdapterGuid(1)};
  std::vector<std::string> networks;
  std::map<std::string, platform::ULONG> networkQualities;  // by SSID; 0 for others
  std::vector<FakeBss> entries;
  std::map<std::u16string, std::u16string> profiles;  // XML by name
  std::map<platform::LONG, std::vector<std::string>> filters;
  std::vector<platform::LONG> phys{7, 8};
  platform::WLAN_CONNECTION_ATTRIBUTES connection;  // isState 1: connected
  std::uint32_t grantedAccess = platform::WLAN_WRITE_ACCESS;
  // Codes of failing operations by name, until erased; kFault makes the call fault.
  std::map<std::string, platform::DWORD> codes;
  static constexpr platform::DWORD kFault = 0xC0000005;
  // Counts that lists claim instead of their own, by operation.
  std::map<std::string, platform::DWORD> claims;
  platform::DWORD querySize = 0xFFFFFFFF;  // what queries give at most
  platform::DWORD channel = 36;            // of the connection

  // What an operation does once it is accepted; by default a scan completes after a second, and the
  // others do nothing.
  std::function<void(const platform::DOT11_SSID*)> onScan;
  std::function<void(const platform::WLAN_CONNECTION_PARAMETERS&)> onConnect;
  std::function<void()> onDisconnect;

  std::vector<std::string> scans;  // SSIDs asked for, "" for all
  std::vector<std::u16string> connects, saved, deleted;
  std::vector<std::string> calls;  // names, in order
  int OpenBuffers() const { return m_OpenBuffers; }
  bool IsRegistered() const { return m_Callback != nullptr; }

  void Connect(std::string_view ssid, const MacAddress& bssid, std::uint32_t quality = 60);
  void Disconnect() { connection = {}; }

  // Notifications: on the calling thread, and after a while on one of their own.
  void Notify(platform::DWORD source, platform::DWORD code, const void* data, platform::DWORD size,
              std::uint8_t adapter = 1);
  void NotifyConnection(platform::DWORD code, std::string_view ssid, platform::DWORD reason = 0);
  void NotifyScan(platform::DWORD code);
  void Post(platform::DWORD delayMs, std::function<void()> what);
  void PostConnection(platform::DWORD delayMs, platform::DWORD code, std::string ssid,
                      platform::DWORD reason = 0);

  platform::DWORD WlanOpenHandle(platform::DWORD, void*, platform::DWORD*,
                                 platform::HANDLE*) override;
  platform::DWORD WlanCloseHandle(platform::HANDLE, void*) override;
  platform::DWORD WlanRegisterNotification(platform::HANDLE, platform::DWORD, platform::BOOL,
                                           platform::WLAN_NOTIFICATION_CALLBACK, void*, void*,
                                           platform::DWORD*) override;
  platform::DWORD WlanEnumInterfaces(platform::HANDLE, void*,
                                     platform::WLAN_INTERFACE_INFO_LIST**) override;
  platform::DWORD WlanGetInterfaceCapability(platform::HANDLE, const platform::GUID*, void*,
                                             platform::WLAN_INTERFACE_CAPABILITY**) override;
  platform::DWORD WlanQueryInterface(platform::HANDLE, const platform::GUID*, platform::LONG, void*,
                                     platform::DWORD*, void**, platform::LONG*) override;
  void WlanFreeMemory(void*) override;
  platform::DWORD WlanScan(platform::HANDLE, const platform::GUID*, const platform::DOT11_SSID*,
                           const void*, void*) override;
  platform::DWORD WlanGetAvailableNetworkList(platform::HANDLE, const platform::GUID*,
                                              platform::DWORD, void*,
                                              platform::WLAN_AVAILABLE_NETWORK_LIST**) override;
  platform::DWORD WlanGetNetworkBssList(platform::HANDLE, const platform::GUID*,
                                        const platform::DOT11_SSID*, platform::LONG, platform::BOOL,
                                        void*, platform::WLAN_BSS_LIST**) override;
  platform::DWORD WlanConnect(platform::HANDLE, const platform::GUID*,
                              const platform::WLAN_CONNECTION_PARAMETERS*, void*) override;
  platform::DWORD WlanDisconnect(platform::HANDLE, const platform::GUID*, void*) override;
  platform::DWORD WlanGetProfile(platform::HANDLE, const platform::GUID*, platform::LPCWSTR, void*,
                                 char16_t**, platform::DWORD*, platform::DWORD*) override;
  platform::DWORD WlanGetProfileList(platform::HANDLE, const platform::GUID*, void*,
                                     platform::WLAN_PROFILE_INFO_LIST**) override;
  platform::DWORD WlanSetProfile(platform::HANDLE, const platform::GUID*, platform::DWORD,
                                 platform::LPCWSTR, platform::LPCWSTR, platform::BOOL, void*,
                                 platform::DWORD*) override;
  platform::DWORD WlanDeleteProfile(platform::HANDLE, const platform::GUID*, platform::LPCWSTR,
                                    void*) override;
  platform::DWORD WlanGetFilterList(platform::HANDLE, platform::LONG, void*,
                                    platform::DOT11_NETWORK_LIST**) override;

 private:
  platform::DWORD Enter(const char* operation);
  void* Buffer(std::size_t size);
  platform::DWORD CountOf(const char* operation, std::size_t count) const;
  template <class List, class Item>
  List* MakeList(const char* operation, std::size_t itemsAt, const std::vector<Item>& items);

  platform::WLAN_NOTIFICATION_CALLBACK m_Callback = nullptr;
  void* m_pContext = nullptr;
  int m_OpenBuffers = 0;
};

}  // namespace corvane::test
