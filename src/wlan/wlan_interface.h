#pragma once
#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include "foundation/generic_malloc.h"
#include "model/wlan_network.h"
#include "monitors/interface_pdh.h"
#include "probes/win_icmp2.h"
#include "report/ap_set_memo.h"
#include "store/ap_list_row.h"
#include "wlan/adapter_operations.h"
#include "wlan/adapter_radio.h"
#include "wlan/network_filters.h"
#include "wlan/notification_sink.h"
#include "wlan/policy_memory.h"
#include "wlan/scan_decision.h"
#include "wlan/wlan_queries.h"

namespace corvane {

class CAdaptersAddresses;

// The model of one adapter. Its object lock is the interface lock: it guards m_Networks, the
// operation state and the reservation. The synchronous operations run on the adapter's worker (a
// pipe thread may queue behind it); notifications come on the platform's thread.
class CWlanInterface : public SmartObjEx<CWlanInterface, SmartObj<>>, public IWlanAllNotifications {
 public:
  CWlanInterface();
  ~CWlanInterface() override;
  const char* GetClassName() const override { return "CWlanInterface"; }

  // --- Life (wlan_interface.cpp)
  // Reads the adapter's identity and publishes it; throws Exception.
  void Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info);
  // While no worker runs.
  void UpdateInfo(const platform::WLAN_INTERFACE_INFO& info) { m_Adapter.Update(info); }
  // Drops the client: from then on every platform call fails, and an operation that waits ends by
  // its exit signal.
  void Detach();

  int GetConfigIdx() const { return m_Adapter.Idx(); }
  const WString& GetGuidText() const { return m_Adapter.GuidText(); }
  const platform::GUID& GetGuid() const { return m_Adapter.Guid(); }
  const WString& GetConnectionName() const { return m_Adapter.ConnectionName(); }
  const WString& GetDescription() const { return m_Adapter.Description(); }
  const WString& GetMacText() const { return m_Adapter.MacText(); }
  std::uint32_t GetOsIfIndex() const { return m_Adapter.OsIfIndex(); }
  bool IsConnected() const { return m_Link.IsConnected(); }
  std::uint32_t GetCurrentChannel() const { return m_Link.Channel(); }
  bool IsHECapable() const { return m_Adapter.IsHECapable(); }
  // The adapter's configuration; throws Exception before Initialize.
  CSmartPointer<CQUAYInterfaceConfig> Config() const { return m_Adapter.Config(); }

  // --- Queries (wlan_queries.h); all throw Exception with the platform's code on failure
  void DetermineInterfaceCapability() { m_Radio.DetermineInterfaceCapability(); }
  std::uint32_t QueryWlanInterface_ForInt(std::int32_t opcode) {
    return QueryNumber(m_Adapter, opcode);
  }
  std::int32_t GetInterfaceState() { return QueryState(m_Adapter); }
  std::int32_t GetInterfaceStateForLog() { return QueryStateForLog(m_Adapter); }  // -1 on failure
  std::uint32_t QueryChannel() { return m_Link.QueryChannel(); }
  void QueryRadioState(platform::WLAN_RADIO_STATE* state) { QueryRadio(m_Adapter, state); }
  void CurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs) {
    QueryConnection(m_Adapter, attrs);
  }
  void QueryCurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs, bool copy) {
    m_Link.QueryCurrentConnection(attrs, copy);
  }
  bool GetConnectedSSID(ConnectionFacts* facts) { return m_Link.GetConnectedSSID(facts); }
  bool FindBssEntry(WStringView ssid, const MacAddress& bssid, CSmartPointer<CWlanBssEntry>* entry);
  // Score of a BSS in the model: -1 without it, or the backup score while connected.
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, bool bUseBackup);
  std::int32_t GetScoreFromBssEntry(std::string* log, WStringView ssid, const MacAddress& bssid);
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, WString* phy,
                                    std::int32_t* rssi);
  bool IsRadioOff() const { return m_Radio.IsRadioOff(); }
  void StoreRadioState(const platform::WLAN_RADIO_STATE& state) { m_Radio.Store(state); }
  // The network list has a private network among the adapter's connections.
  bool IsConnectedToPrivateNetwork();
  // Both BSSIDs are members of one network of this adapter.
  bool IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b);
  WStringView AdapterClassText() const { return m_Radio.ClassText(); }

  // --- Discovery (network_discovery.cpp)
  // How many listed networks have a profile. *aux_error is written only with 100.
  std::int32_t DiscoverNetworksSynchronous(bool force_scan, bool first, std::int32_t* aux_error);
  void UpdateAllScores();  // takes the interface lock, then the maps lock
  void ClearNetworks();
  bool IsScanFresh() const { return m_scan_fresh; }

  // --- Profiles (adapter_profiles.h, network_filters.h)
  void RefreshProfiledAPList() { m_Profiles.RefreshProfiledAPList(); }
  void EnumerateALLAPProfiles() { m_Profiles.EnumerateALLAPProfiles(); }
  CSmartPointer<CWlanProfileData> GetProfileDataHelper(const WString& name) {
    return m_Profiles.GetProfileDataHelper(name);
  }
  bool GetProfileProperties(const WString& ssid, bool* hidden) {
    return m_Profiles.GetProfileProperties(ssid, hidden);
  }
  bool DeleteWlanProfile(const WString& name) { return m_Profiles.DeleteWlanProfile(name); }
  void RefreshNetworkAllowDenyFilters() { corvane::RefreshNetworkAllowDenyFilters(m_Adapter); }
  void SaveTempProfileToNetwork(const WString& ssid,
                                const platform::WLAN_CONNECTION_PARAMETERS& parameters) {
    m_Profiles.SaveTempProfileToNetwork(ssid, parameters);
  }
  bool GetTempProfile(WStringView ssid, WString* xml) {
    return m_Profiles.GetTempProfile(ssid, xml);
  }
  void SaveTempProfiles() { m_Profiles.SaveTempProfiles(); }

  // --- Operations (adapter_operations.h): each blocks to its end
  void ScanSynchronous(const platform::DOT11_SSID* pSsid) { m_Operations.ScanSynchronous(pSsid); }
  void ConnectSynchronous(const platform::WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                          std::uint32_t timeoutMs) {
    m_Operations.ConnectSynchronous(parameters, save, timeoutMs);
  }
  void ConnectToNetwork(const WString& ssid) { m_Operations.ConnectToNetwork(ssid); }
  void DisconnectSynchronous(WStringView text) { m_Operations.DisconnectSynchronous(text); }
  bool IsScanInFlight() const { return m_Operations.IsScanInFlight(); }

  // --- The present connection (adapter_link.h)
  AdapterLink& Link() { return m_Link; }
  const AdapterLink& Link() const { return m_Link; }
  bool SetConnectedBssid(const MacAddress& bssid) { return m_Link.SetConnectedBssid(bssid); }
  void ClearConnectedBssid() { m_Link.ClearConnectedBssid(); }
  void ClearConnected() { m_Link.ClearConnected(); }
  bool SetLastConnectedSsid(WStringView ssid) { return m_Link.SetLastConnectedSsid(ssid); }
  MacAddress GetConnectedBssid() const { return m_Link.ConnectedBssid(); }
  MacAddress GetConnectedBssidIfWeInitiated() const { return m_Link.OwnBssid(); }
  WString GetLastConnectedSsid() const { return m_Link.LastConnectedSsid(); }
  platform::WLAN_CONNECTION_ATTRIBUTES GetConnAttrs() const { return m_Link.ConnAttrs(); }
  // --- Contention (ap_contention.cpp): the other access points on the connection's channel
  void UpdateContentionAPs(const WString& ssid, const WString& bssidText, std::uint32_t channel);
  void ClearContention();
  WString ContentionText();  // those of the last count, for the log; "none" without any

  // Reads the addresses of the connection anew, when the radio comes on and at each change of
  // connection, and teaches the gateways to the connected entry.
  void RefreshIPInfo();

  // --- Gateways of the present connection (gateway_roaming.cpp), on the worker
  void GatewayRoamingCheck();  // teaches them to the connected entry and the memo
  // False when the model has no such entry.
  bool AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid, const MacList& ip4,
                                   const MacList& ip6);

  // --- Notifications (connection_notifications.cpp), on the platform's thread
  void ConnectionNotification(platform::DWORD code, const void* data) override;
  void ScanNotification(platform::DWORD code, platform::DWORD reason) override;
  void MSMNotification(const void* data) override;
  void MSMRadioStateNotification(const void* data) override;
  void MSMSignalQualityNotification(platform::DWORD quality) override;
  void MSMAdapterOperationModeNotification(platform::DWORD mode) override;

  // --- The policy's memory of this adapter (policy_memory.h)
  PolicyMemory& Policy() { return m_Policy; }
  const PolicyMemory& Policy() const { return m_Policy; }
  CandidateClaim& Claim() { return m_Policy.Claim(); }
  void ClearAllCandidateCounters(const char* reason) { m_Policy.ClearAllCandidateCounters(reason); }
  void DecrementAllCandidateCounters() { m_Policy.DecrementAllCandidateCounters(); }
  void NotifyCurrentNetworkScore(std::int32_t score, const MacAddress& bssid) {
    m_Policy.NotifyCurrentNetworkScore(score, bssid);
  }
  void IncSwitchAttempt() { m_Policy.IncSwitchAttempt(); }
  void RollSwitchPeriod() { m_Policy.RollSwitchPeriod(); }
  // Gives every entry outside the 5 GHz range the penalty that its final score takes, in points.
  void SetBTPenalty(std::int32_t value);

  // --- Traffic, Mbps and seconds; 0 without counters
  double GetTrafficMbps() const;
  CSmartPointer<CInterfacePDH> Pdh() const { return m_pInterfacePDH; }
  // Floods the gateway for a second; the result stays for GetBlastMbps. Without a snapshot or a
  // gateway nothing is measured (link_blast.cpp).
  void DoBlast(CAdaptersAddresses* adapters);
  double GetBlastMbps() const { return m_BlastMbps; }  // of the last blast, 0 before it
  CWinICMP2& Detector() { return m_Detector; }         // on the worker only
  void ProcessIdleThresholds();  // learns the rate gates of the connection (idle_thresholds.cpp)

  // The networks by SSID, under the interface lock.
  NetworkMap& Networks() { return m_Networks; }
  // What the AP lists write on the entries (apply_ap_lists.cpp), under the interface lock; each
  // round, after discovery.
  void ApplyPreferredRows(const PreferredApRows& rows);
  void ApplyDenyRows(const ApListRows& rows);
  // A copy of every entry of every network, in map order, taken under the interface lock.
  BssEntryList SnapshotEntries();

 private:
  friend class CWlanClient;
  void BlastGateway(CAdaptersAddresses& adapters);
  // Handlers proper, behind the fault guards of the notification operations.
  void ConnectionNotification_internal(platform::DWORD code, const void* data);
  void ScanNotification_internal(platform::DWORD code, platform::DWORD reason);
  void MSMNotification_internal(const void* data);
  void MSMRadioStateNotification_internal(const void* data);
  void MSMSignalQualityNotification_internal(platform::DWORD quality);
  void MSMAdapterOperationModeNotification_internal(platform::DWORD mode);
  template <typename Handler>
  void GuardHandler(const char* operation, Handler&& handler);
  void OnNoCompletion(platform::DWORD code, bool weInitiated);
  void OnOutsideCompletion(platform::DWORD code, bool xSide, const WString& ssid);
  void OnOutsideDisconnect(platform::DWORD code, bool xSide, const WString& ssid);
  void OnOutsideConnect(platform::DWORD code, const WString& ssid);
  void OnOwnCompletion(platform::DWORD code, WlanOperation kind, platform::DWORD reason,
                       const WString& ssid);
  std::uint32_t ChannelNow();
  void TellOfOutsideConnect(const ConnectionFacts& facts);
  void ResetReports(platform::DWORD code);
  void ForgetConnection(const WString& ssid);  // what every completed disconnect does

  std::int32_t BackupScore(WStringView ssid,
                           const MacAddress& bssid) const;  // -1 while disconnected

  bool MayScan(bool force_scan, std::uint64_t now, double rate);
  void LogScanDecision(const ScanInputs& in, const ScanDecision& decision) const;
  void RunScans(std::uint64_t now);
  void RunHiddenScans();
  void ReadLists(bool scanned, bool first, double rate, std::int32_t* found,
                 std::int32_t* aux_error);
  CSmartPointer<CGenericMalloc> GetAvailableNetworkList();
  CSmartPointer<CGenericMalloc> GetNetworkBssList();
  void ClearScanMarks();
  void TakeNetworks(const CGenericMalloc& list, std::int32_t* found);
  bool FindProfile(CWlanNetwork& network);
  void TakeBssEntries(const CGenericMalloc& list);
  void TakeBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
               const MacAddress& connected);
  void BumpUnscannedCounter();
  void MarkConnected();
  void NoteConnectivity();
  void RememberConnectivity();

  bool m_bPresent = true;  // the last enumeration has it; the client's, on the main thread
  AdapterIdentity m_Adapter;
  AdapterRadio m_Radio{m_Adapter};
  AdapterLink m_Link{m_Adapter};
  NetworkMap m_Networks;  // interface lock
  AdapterProfiles m_Profiles{m_Adapter, ObjectLock(), m_Networks};
  AdapterOperations m_Operations{m_Adapter, m_Link, m_Profiles, ObjectLock()};
  CApSetMemo m_ContentionMemo;  // the contenders of the last count
  CApSetMemo m_InternetMemo;    // the connectivity that the scores saw, over a loss of the tree
  CSmartPointer<CInterfacePDH> m_pInterfacePDH;
  CWinICMP2 m_Detector;
  std::atomic<double> m_BlastMbps{0.0};

  std::uint64_t m_LastScanTime = 0;   // tick: the clock of the scan interval
  std::uint64_t m_LastScanStart = 0;  // tick of the last scan
  std::uint32_t m_consec_ScanDeferrals = 0;
  std::atomic<std::uint32_t> m_connected_scan_count{0};
  std::atomic<std::uint32_t> m_disconnected_scan_count{0};
  std::atomic<bool> m_scan_fresh{false};
  std::vector<double> m_RateHistory;  // Mbps, newest first, at most 2

  PolicyMemory m_Policy{m_Adapter, ObjectLock(), m_Networks};
};

}  // namespace corvane
