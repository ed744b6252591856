#pragma once
// An adapter on a scripted WLAN service, in virtual time.

#include "settings/global_config_container.h"
#include "support/pc_fixture.h"
#include "wlan/fake_wlan.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {

// A wireless interface of the machine, as its interface table and its registry have it.
struct FakeAdapter {
  std::uint8_t number = 1;
  std::u16string connectionName = u"Wi-Fi";
  std::string description = "Wireless adapter";
};

class FakeIpHelper : public platform::IpHelperApi {
 public:
  std::vector<FakeAdapter> adapters;
  platform::DWORD GetIfTable(platform::MIB_IFTABLE* table, platform::ULONG* size,
                             platform::BOOL order) override;
};

// A network list that can be asked and knows nothing.
class FakeNetworkList : public platform::NetworkListApi, private platform::INetworkListManager {
 public:
  platform::HRESULT CoInitializeEx(platform::DWORD) override { return platform::S_OK; }
  platform::HRESULT CoCreateNetworkListManager(platform::INetworkListManager** manager) override {
    *manager = this;
    return platform::S_OK;
  }

 private:
  platform::ULONG Release() override { return 0; }
  platform::HRESULT GetNetworks(platform::DWORD, platform::IEnumNetworks**) override {
    return platform::E_FAIL;
  }
  platform::HRESULT GetNetworkConnections(platform::IEnumNetworkConnections**) override {
    return platform::E_FAIL;
  }
};

class MainsPower : public platform::PowerApi {
 public:
  platform::BOOL GetSystemPowerStatus(platform::SYSTEM_POWER_STATUS* status) override {
    status->ACLineStatus = 1;
    return platform::TRUE;
  }
};

class AdapterTest : public KernelTest {
 protected:
  AdapterTest() {
    Install<FakeNetworkList>();
    Install<MainsPower>();
  }
  void TearDown() override;

  // The adapters of the machine; by default one.
  void Have(std::vector<FakeAdapter> adapters);
  // Starts the client; the adapter with the lowest GUID.
  CSmartPointer<CWlanInterface> Start();
  CSmartPointer<CWlanInterface> StartConnected(std::string_view ssid, const MacAddress& bssid);
  // One discovery with a forced scan; its result.
  std::int32_t Discover(bool force = true);
  CSmartPointer<CWlanBssEntry> Entry(WStringView ssid, std::uint8_t last);

  // What clients read: a value of the home key, or of the adapter's own.
  WString Value(WStringView name);
  WString AdapterValue(WStringView name);
  std::uint32_t AdapterNumber(WStringView name);

  // Runs body() on a thread of its own, as the worker or the pipe would.
  void OnThread(std::function<void()> body);
  // The text of the exception that body() throws; empty without one.
  static std::string ThrownBy(const std::function<void()>& body);

  std::uint64_t Now() { return Os().clock.GetTickCount64(); }
  const char* InhibitTag() { return adapter->Config()->GetInhibitReason(); }
  std::uint64_t InhibitMs() { return adapter->Config()->GetInhibitRemainingMs(); }

  FakeWlan& wlan = Install<FakeWlan>();
  FakeIpHelper& ipHelper = Install<FakeIpHelper>();
  CSmartPointer<CWlanInterface> adapter;
  std::int32_t auxError = 0;
};

}  // namespace corvane::test
