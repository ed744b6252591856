#pragma once
// Adapters by hand for tests of the policy: a WLAN service that answers what the test has set,
// entries with scores of the test's choice, and what the policy told the world.

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "notify/notification_manager.h"
#include "policy/policy.h"
#include "policy/quiet_network_list.h"
#include "policy/round_watch.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "support/pc_fixture.h"
#include "wlan/wifi_client_container.h"
#include "wlan/wlan_client.h"

namespace corvane::test {

inline MacAddress ApMac(int n) { return {2, 0, 0, 0, 0, static_cast<std::uint8_t>(n)}; }

inline platform::DOT11_SSID SsidRecord(const std::string& ssid) {
  platform::DOT11_SSID record;
  record.uSSIDLength = static_cast<platform::ULONG>(ssid.size());
  std::memcpy(record.ucSSID, ssid.data(), ssid.size());
  return record;
}

// The WLAN service of the tests. A connect ends at once: well, or with the reason that the test has
// set for its BSSID.
class PolicyWlan : public platform::WlanApi {
 public:
  struct Link {
    bool connected = false;
    std::string ssid;
    MacAddress bssid{};
    platform::ULONG quality = 80;
  };

  explicit PolicyWlan(int adapters) : links(static_cast<std::size_t>(adapters)) {}

  std::vector<Link> links;
  std::map<MacAddress, platform::DWORD> refusals;  // reason code by BSSID
  std::map<MacAddress, std::string> names;         // SSID by BSSID
  std::map<MacAddress, MacAddress> landings;       // where a connect ends instead
  std::vector<std::string> calls;                  // "connect <SSID> <BSSID>", "disconnect"
  platform::DWORD disconnectResult = platform::ERROR_SUCCESS;
  platform::DWORD stateResult = platform::ERROR_SUCCESS;
  platform::DWORD connectMs = 0;             // until a connect ends
  std::int32_t stateQueriesBeforeLoss = -1;  // then the state reads disconnected; -1 never

  static platform::GUID GuidOf(std::size_t adapter) {
    platform::GUID guid{};
    guid.Data1 = static_cast<decltype(guid.Data1)>(adapter + 1);
    return guid;
  }

  platform::DWORD WlanOpenHandle(platform::DWORD, void*, platform::DWORD*,
                                 platform::HANDLE* client) override {
    *client = reinterpret_cast<platform::HANDLE>(1);
    return platform::ERROR_SUCCESS;
  }
  platform::DWORD WlanCloseHandle(platform::HANDLE, void*) override {
    return platform::ERROR_SUCCESS;
  }
  platform::DWORD WlanRegisterNotification(platform::HANDLE, platform::DWORD, platform::BOOL,
                                           platform::WLAN_NOTIFICATION_CALLBACK callback,
                                           void* context, void*, platform::DWORD*) override {
    m_Callback = callback;
    m_Context = context;
    return platform::ERROR_SUCCESS;
  }
  platform::DWORD WlanEnumInterfaces(platform::HANDLE, void*,
                                     platform::WLAN_INTERFACE_INFO_LIST** list) override {
    using List = platform::WLAN_INTERFACE_INFO_LIST;
    auto* out = static_cast<List*>(
        std::calloc(1, sizeof(List) + links.size() * sizeof(platform::WLAN_INTERFACE_INFO)));
    out->dwNumberOfItems = static_cast<platform::DWORD>(links.size());
    for (std::size_t i = 0; i < links.size(); ++i) out->InterfaceInfo[i].InterfaceGuid = GuidOf(i);
    *list = out;
    return platform::ERROR_SUCCESS;
  }
  platform::DWORD WlanQueryInterface(platform::HANDLE, const platform::GUID* adapter,
                                     platform::LONG opcode, void*, platform::DWORD* size,
                                     void** data, platform::LONG*) override {
    const Link& link = LinkOf(*adapter);
    if (opcode == platform::wlan_intf_opcode_interface_state) {
      if (stateResult != platform::ERROR_SUCCESS) return stateResult;
      bool connected = link.connected;
      if (stateQueriesBeforeLoss >= 0 && stateQueriesBeforeLoss-- == 0) {
        connected = false;
        stateQueriesBeforeLoss = 0;
      }
      return Answer<platform::LONG>(connected ? platform::wlan_interface_state_connected : 4, size,
                                    data);
    }
    if (opcode == platform::wlan_intf_opcode_channel_number)
      return Answer<platform::DWORD>(36, size, data);
    if (opcode != platform::wlan_intf_opcode_current_connection) return platform::ERROR_NOT_FOUND;
    if (!link.connected) return platform::ERROR_INVALID_STATE;
    platform::WLAN_CONNECTION_ATTRIBUTES attrs;
    attrs.isState = platform::wlan_interface_state_connected;
    auto& association = attrs.wlanAssociationAttributes;
    association.dot11Ssid = SsidRecord(link.ssid);
    std::memcpy(association.dot11Bssid, link.bssid.data(), link.bssid.size());
    association.wlanSignalQuality = link.quality;
    association.ulRxRate = association.ulTxRate = 400'000;
    return Answer(attrs, size, data);
  }
  void WlanFreeMemory(void* memory) override { std::free(memory); }

  platform::DWORD WlanConnect(platform::HANDLE, const platform::GUID* adapter,
                              const platform::WLAN_CONNECTION_PARAMETERS* parameters,
                              void*) override {
    MacAddress bssid{};
    if (parameters->pDesiredBssidList) bssid = ToMac(parameters->pDesiredBssidList->BSSIDs[0]);
    const std::string ssid = parameters->pDesiredBssidList
                                 ? names[bssid]
                                 : WideToUtf8(parameters->strProfile);  // a restore, by name alone
    calls.push_back("connect " + ssid + " " + MacTextA(bssid));
    const auto refused = refusals.find(bssid);
    const platform::DWORD reason = refused == refusals.end() ? 0 : refused->second;
    if (reason == 0) {
      Link& link = LinkOf(*adapter);
      const auto landing = landings.find(bssid);
      link = {true, ssid, landing == landings.end() ? bssid : landing->second, link.quality};
    }
    m_DelayMs = connectMs;
    Notify(*adapter, platform::wlan_notification_acm_connection_complete, ssid, reason);
    return platform::ERROR_SUCCESS;
  }
  platform::DWORD WlanDisconnect(platform::HANDLE, const platform::GUID* adapter, void*) override {
    calls.push_back("disconnect");
    if (disconnectResult != platform::ERROR_SUCCESS) return disconnectResult;
    Link& link = LinkOf(*adapter);
    link.connected = false;
    Notify(*adapter, platform::wlan_notification_acm_disconnected, link.ssid, 0);
    return platform::ERROR_SUCCESS;
  }

 private:
  template <class T>
  static platform::DWORD Answer(const T& value, platform::DWORD* size, void** data) {
    *data = std::malloc(sizeof(T));
    std::memcpy(*data, &value, sizeof(T));
    *size = sizeof(T);
    return platform::ERROR_SUCCESS;
  }
  Link& LinkOf(const platform::GUID& adapter) { return links[adapter.Data1 - 1]; }
  // Notifications come on a thread of their own, once the caller waits.
  void Notify(const platform::GUID& adapter, platform::DWORD code, const std::string& ssid,
              platform::DWORD reason) {
    m_Connection = {};
    m_Connection.dot11Ssid = SsidRecord(ssid);
    m_Connection.wlanReasonCode = reason;
    m_Notification = {};
    m_Notification.NotificationSource = platform::WLAN_NOTIFICATION_SOURCE_ACM;
    m_Notification.NotificationCode = code;
    m_Notification.InterfaceGuid = adapter;
    m_Notification.dwDataSize = sizeof(m_Connection);
    m_Notification.pData = &m_Connection;
    auto& threads = Os().threads;
    threads.CloseHandle(threads.CreateThread(&PolicyWlan::Deliver, this, "wlan", nullptr));
  }
  static platform::DWORD Deliver(void* self) {
    auto* wlan = static_cast<PolicyWlan*>(self);
    if (const platform::DWORD delay = std::exchange(wlan->m_DelayMs, 0)) Os().threads.Sleep(delay);
    if (wlan->m_Callback) wlan->m_Callback(&wlan->m_Notification, wlan->m_Context);
    return 0;
  }

  platform::WLAN_NOTIFICATION_CALLBACK m_Callback = nullptr;
  void* m_Context = nullptr;
  platform::DWORD m_DelayMs = 0;  // of the next notification
  platform::WLAN_CONNECTION_NOTIFICATION_DATA m_Connection;
  platform::WLAN_NOTIFICATION_DATA m_Notification;  // one at a time
};

// The steps of the rounds while it lives.
class StepWatch final : public IRoundWatch {
 public:
  StepWatch() { RoundWatches::Add(this); }
  ~StepWatch() { RoundWatches::Remove(this); }
  void OnStep(int, RoundStep step, CWlanBssEntry*) override { steps.push_back(step); }
  std::vector<RoundStep> steps;
};

class PolicyTest : public KernelTest {
 protected:
  explicit PolicyTest(int adapters = 1) : m_Adapters(adapters) {}

  void SetUp() override {
    RunFor(std::chrono::milliseconds(60'000));  // ticks of 0 mean "never"
    Install<QuietNetworkList>();
    wlan = &Install<PolicyWlan>(m_Adapters);
    Global().Initialize(false);
    CWifiClientContainer::GetInstance().Initialize();
    ASSERT_EQ(CWifiClientContainer::GetInstance().GetCount(), m_Adapters);
    for (int i = 0; i < m_Adapters; ++i) {
      adapters.push_back(CWifiClientContainer::GetInstance().GetInterface(i));
    }
    adapter = adapters[0];
    config = adapter->Config();
    SetMode(0);
    Global().m_bULScan = true;  // decide without a scan
    config->m_PreferPrivateNetwork = false;
    config->m_APScoreThreshold = 3;
  }
  void TearDown() override {
    config.reset();
    adapter.reset();
    adapters.clear();
    CWifiClientContainer::GetInstance().Shutdown();
    Global().Shutdown(false);
    KernelTest::TearDown();
  }

  static CGlobalConfigContainer& Global() { return CGlobalConfigContainer::GetInstance(); }

  // 0 autoswitch, 1 event, 2 popup.
  void SetMode(int mode) {
    config->m_bPassive = mode != 0;
    config->m_bPopupMode = mode == 2;
  }

  // An entry in the newest scan, with a stored profile that connects by itself.
  CSmartPointer<CWlanBssEntry> Add(const std::string& ssid, int n, std::int32_t score,
                                   platform::ULONG quality = 80, std::size_t on = 0) {
    platform::WLAN_BSS_ENTRY bss;
    bss.dot11Ssid = SsidRecord(ssid);
    const MacAddress bssid = ApMac(n);
    std::memcpy(bss.dot11Bssid, bssid.data(), bssid.size());
    bss.uLinkQuality = quality;
    bss.ulChCenterFrequency = 5180000;
    CWlanBssEntry::Facts facts;
    facts.grantedAccess = platform::WLAN_EXECUTE_ACCESS;
    facts.autoConnect = true;
    facts.authAlgorithm = platform::DOT11_AUTH_ALGO_RSNA_PSK;
    const CCritSecLock lock(adapters[on]->ObjectLock());
    auto& network = adapters[on]->Networks()[Utf8ToWide(ssid)];
    if (!network) {
      network = CWlanNetwork::CreateObject();
      platform::WLAN_AVAILABLE_NETWORK available;
      available.dot11Ssid = SsidRecord(ssid);
      network->Update(available, static_cast<int>(on));
    }
    network->AddOrUpdateBss(bss, nullptr, 0, facts, ScoreContext(), nullptr);
    const auto entry = network->m_BssMap[bssid];
    SetScore(*entry, score);
    wlan->names[bssid] = ssid;
    return entry;
  }
  static void SetScore(CWlanBssEntry& entry, std::int32_t score) {
    entry.m_ScoreHistory = {score};
    entry.m_QBSSPoints = 0;  // the element's load is in it
  }

  void Connect(const std::string& ssid, int n, platform::ULONG quality = 80, std::size_t on = 0) {
    wlan->links[on] = {true, ssid, ApMac(n), quality};
    adapters[on]->SetConnectedBssid(ApMac(n));
    platform::WLAN_CONNECTION_ATTRIBUTES attrs;
    adapters[on]->QueryCurrentConnection(&attrs, true);
    adapters[on]->QueryChannel();
  }
  void Disconnect() {
    wlan->links[0].connected = false;
    adapter->ClearConnected();
    adapter->ClearConnectedBssid();
  }

  // A policy round, as the worker runs it.
  void Round() {
    const CCritSecLock lock(Global().GetLock());
    CGlobalQUAYPolicy::ExecutePolicies(adapter.get());
  }
  void Rounds(int count) {
    for (int i = 0; i < count; ++i) Round();
  }

  WString Value(WStringView name) {
    WString text;
    config->GetString(name, &text);
    return text;
  }
  // The facts of the connection, as a round gathers them.
  ConnectionFacts Facts() {
    ConnectionFacts facts;
    adapter->GetConnectedSSID(&facts);
    return facts;
  }
  bool HasReservation(int n) { return adapter->Claim().Held() == ApMac(n); }

  PolicyWlan* wlan = nullptr;
  std::vector<CSmartPointer<CWlanInterface>> adapters;
  CSmartPointer<CWlanInterface> adapter;  // the first one
  CSmartPointer<CQUAYInterfaceConfig> config;

 private:
  const int m_Adapters;
};

}  // namespace corvane::test
