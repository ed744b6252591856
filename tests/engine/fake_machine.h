#pragma once
// A machine for the engine: adapters, neighbours, networks and a driver that a test sets up as it
// likes, over the threads and locks of a BasicPlatform. Whatever is given out is counted.

#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "engine/driver_records.h"
#include "engine/engine_table.h"
#include "platform/driver_api.h"
#include "platform/heap_api.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/platform.h"
#include "platform/registry_api.h"
#include "platform/service_api.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"

namespace corvane::engine_test {

using Bytes = std::vector<std::uint8_t>;

// The driver: keeps what it hears. Every test may look while the engine's threads run.
class FakeDriver : public platform::DriverApi {
 public:
  platform::HANDLE CreateFileW(platform::LPCWSTR device, platform::DWORD access,
                               platform::DWORD share) override;
  platform::BOOL DeviceIoControl(platform::HANDLE device, platform::DWORD code, const void* input,
                                 platform::DWORD inputSize, void* output,
                                 platform::DWORD outputSize, platform::DWORD* returned) override;
  platform::BOOL CloseHandle(platform::HANDLE device) override;

  std::atomic<bool> present{true};
  std::atomic<std::uint32_t> answer{1};    // to a handshake
  std::atomic<bool> acknowledges{true};    // sets the status word of every slot that is in use
  std::atomic<std::uint32_t> status{7};    // to this
  std::atomic<std::uint32_t> failCode{0};  // this control call fails
  std::function<void(std::uint32_t code)> onControl;  // before a control call is served

  struct Call {
    std::uint32_t code;
    Bytes input;
  };
  std::vector<Call> Calls();
  int Count(std::uint32_t code);
  std::vector<LBDeviceNotification> TakeNotifications();
  void Acknowledge();
  int OpenHandles();
  LBEngineTable* Table() { return m_pTable; }

 private:
  std::mutex m_Mutex;
  std::vector<Call> m_Calls;
  std::vector<LBDeviceNotification> m_Notifications;
  std::set<platform::HANDLE> m_Open;
  std::uintptr_t m_Next = 0x5000;
  std::atomic<LBEngineTable*> m_pTable{nullptr};
};

class FakeHeap : public platform::HeapApi {
 public:
  platform::HANDLE HeapCreate(platform::DWORD options, std::size_t initial,
                              std::size_t maximum) override;
  void* HeapAlloc(platform::HANDLE heap, platform::DWORD flags, std::size_t bytes) override;
  platform::BOOL HeapDestroy(platform::HANDLE heap) override;
  int OpenHeaps();
  int Allocs() const { return m_Allocs; }

  std::atomic<bool> createFails{false};
  std::atomic<int> failingAlloc{-1};  // counted from 0

 private:
  struct Heap {
    std::vector<void*> blocks;
  };
  std::mutex m_Mutex;
  std::map<platform::HANDLE, std::unique_ptr<Heap>> m_Heaps;
  std::atomic<int> m_Allocs{0};
};

class FakeServices : public platform::ServiceApi {
 public:
  platform::SC_HANDLE OpenSCManagerW(platform::LPCWSTR, platform::LPCWSTR,
                                     platform::DWORD) override {
    return Give();
  }
  platform::SC_HANDLE OpenServiceW(platform::SC_HANDLE, platform::LPCWSTR name,
                                   platform::DWORD) override {
    return std::u16string(name) == kServiceName ? Give() : nullptr;
  }
  platform::BOOL QueryServiceStatus(platform::SC_HANDLE, platform::SERVICE_STATUS* out) override {
    out->dwCurrentState = state;
    return platform::TRUE;
  }
  platform::BOOL StartServiceW(platform::SC_HANDLE, platform::DWORD,
                               const platform::LPCWSTR*) override {
    ++starts;
    return platform::TRUE;
  }
  platform::BOOL CloseServiceHandle(platform::SC_HANDLE) override {
    --open;
    return platform::TRUE;
  }

  platform::DWORD state = platform::SERVICE_RUNNING;
  std::atomic<int> open{0}, starts{0};

 private:
  platform::SC_HANDLE Give() {
    ++open;
    return reinterpret_cast<platform::SC_HANDLE>(std::uintptr_t{0x77});
  }
};

struct FakeAdapter {
  std::u16string description;
  Bytes mac;
  std::uint32_t ifType = 6;
  bool up = true;
  std::uint32_t ifIndex = 1;
  std::vector<std::string> addresses = {};  // "192.168.1.5/24", "fe80::5"
  std::vector<std::string> gateways = {};
  std::uint64_t bitsPerSecond = 1'000'000'000;
  bool hasDescription = true;
  std::uint32_t dadState = platform::IpDadStatePreferred;
};

struct FakeNeighbour {
  std::string address;
  Bytes mac;
  std::uint32_t ifIndex = 1;
  Bytes resolved = {};  // what asking the network for it gives
};

class FakeIpHelper : public platform::IpHelperApi {
 public:
  platform::ULONG GetAdaptersAddresses(platform::ULONG family, platform::ULONG flags, void*,
                                       platform::IP_ADAPTER_ADDRESSES* addresses,
                                       platform::ULONG* size) override;
  platform::DWORD GetIpNetTable2(platform::WORD family,
                                 platform::MIB_IPNET_TABLE2** table) override;
  void FreeMibTable(void* memory) override;
  platform::DWORD ResolveIpNetEntry2(platform::MIB_IPNET_ROW2* row,
                                     const platform::SOCKADDR_INET*) override;
  platform::DWORD ConvertInterfaceGuidToLuid(const platform::GUID* adapter,
                                             platform::ULONGLONG* luid) override;
  platform::DWORD GetIfEntry2(platform::MIB_IF_ROW2* row) override;

  std::vector<FakeAdapter> adapters;
  std::vector<FakeNeighbour> neighbours;
  platform::DWORD listResult = 0;
  bool roomy = false;  // the list may lie outside the caller's buffer, so that more has room
  std::function<void()> onList;  // before a list of adapters is made
  std::atomic<int> lists{0};
  std::atomic<int> openTables{0};

 private:
  std::vector<std::uint64_t> m_Room;
};

// The adapter at this place of FakeIpHelper::adapters.
inline platform::GUID GuidOf(std::size_t adapter) {
  platform::GUID guid;
  guid.Data1 = static_cast<std::uint32_t>(adapter + 1);
  return guid;
}

struct FakeConnection {
  std::size_t adapter = 0;
  platform::DWORD connectivity = 0x40;
  platform::LONG category = 1;
  bool internet = true;
};

class FakeNetworkList : public platform::NetworkListApi {
 public:
  platform::HRESULT CoInitializeEx(platform::DWORD model) override;
  void CoUninitialize() override { --apartments; }
  platform::HRESULT CoCreateNetworkListManager(platform::INetworkListManager** manager) override;

  std::vector<FakeConnection> connections;
  platform::HRESULT comResult = 0;
  std::set<std::string> failing;  // calls of the objects, by name
  std::atomic<int> apartments{0}, objects{0};
  std::atomic<platform::DWORD> model{99};
};

class FakeWlan : public platform::WlanApi {
 public:
  platform::DWORD WlanOpenHandle(platform::DWORD version, void*, platform::DWORD*,
                                 platform::HANDLE* client) override;
  platform::DWORD WlanCloseHandle(platform::HANDLE, void*) override;
  platform::DWORD WlanEnumInterfaces(platform::HANDLE, void*,
                                     platform::WLAN_INTERFACE_INFO_LIST** list) override;
  platform::DWORD WlanQueryInterface(platform::HANDLE, const platform::GUID* adapter,
                                     platform::LONG opcode, void*, platform::DWORD* size,
                                     void** data, platform::LONG*) override;
  platform::DWORD WlanGetAvailableNetworkList(
      platform::HANDLE, const platform::GUID*, platform::DWORD, void*,
      platform::WLAN_AVAILABLE_NETWORK_LIST** list) override;
  platform::DWORD WlanGetNetworkBssList(platform::HANDLE, const platform::GUID*,
                                        const platform::DOT11_SSID*, platform::LONG, platform::BOOL,
                                        void*, platform::WLAN_BSS_LIST** list) override;
  platform::DWORD WlanIhvControl(platform::HANDLE, const platform::GUID* adapter,
                                 platform::LONG type, platform::DWORD inputSize, const void* input,
                                 platform::DWORD outputSize, void* output,
                                 platform::DWORD* returned) override;
  void WlanFreeMemory(void* memory) override;

  platform::DWORD openResult = 0;
  std::vector<std::u16string> interfaces;
  std::string ssid;  // of the connection; empty: none
  std::uint32_t quality = 80;
  std::uint32_t rxKbps = 866'000, txKbps = 866'000;
  std::vector<Bytes> bssids;  // of the network's BSS list
  Bytes bssid = {2, 2, 2, 2, 2, 2};
  platform::ULONG mode = 4;
  platform::LONG connectionState = platform::wlan_interface_state_connected;
  std::map<std::uint32_t, Bytes> privateAnswers;  // by code: the data behind the head
  std::vector<Bytes> privateCalls;
  std::vector<platform::GUID> privateAdapters;
  std::atomic<int> clients{0}, buffers{0}, opens{0};

 private:
  template <class List>
  List* Allocate(std::size_t bytes);
};

class FakeRegistry : public platform::RegistryApi {
 public:
  platform::LSTATUS RegOpenKeyExW(platform::HKEY, platform::LPCWSTR path, platform::DWORD,
                                  platform::REGSAM, platform::HKEY* key) override;
  platform::LSTATUS RegCloseKey(platform::HKEY key) override;
  platform::LSTATUS RegQueryValueExW(platform::HKEY key, platform::LPCWSTR name,
                                     platform::DWORD* type, platform::BYTE* data,
                                     platform::DWORD* size) override;

  void Set(const std::u16string& path, const std::u16string& name, std::uint32_t number);
  void Set(const std::u16string& path, const std::u16string& name, const std::u16string& text);
  std::atomic<int> open{0};

 private:
  struct Value {
    platform::DWORD type;
    Bytes bytes;
  };
  static std::u16string Trimmed(std::u16string path);
  std::map<std::u16string, std::map<std::u16string, Value>> m_Keys;
};

inline constexpr char16_t kEngineSettings[] =
    u"SYSTEM\\CurrentControlSet\\Services\\Vantor Network Service\\SLibCFG";

// The services above in front of those of the platform in force; in force while it lives.
class FakeMachine {
 public:
  FakeMachine();
  ~FakeMachine() { platform::SetPlatform(m_pBefore); }
  FakeMachine(const FakeMachine&) = delete;
  FakeMachine& operator=(const FakeMachine&) = delete;

  FakeDriver driver;
  FakeHeap heap;
  FakeServices services;
  FakeIpHelper ipHelper;
  FakeNetworkList networkList;
  FakeWlan wlan;
  FakeRegistry registry;

  // Everything that was given out and has not come back.
  int Open();

 private:
  const platform::Platform* m_pBefore;
  platform::Platform m_Platform;
};

// "192.168.1.5" or "fe80::5" as the words and bytes of an address.
std::uint32_t Ip4Word(const std::string& text);
std::array<std::uint8_t, 16> Ip6Bytes(const std::string& text);

}  // namespace corvane::engine_test
