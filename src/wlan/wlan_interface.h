#pragma once
#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

#include "foundation/generic_malloc.h"
#include "foundation/win_event.h"
#include "model/wlan_network.h"
#include "monitors/interface_pdh.h"
#include "monitors/ip_address.h"
#include "platform/wlan_types.h"
#include "probes/win_icmp2.h"
#include "report/ap_set_memo.h"
#include "store/address_text.h"
#include "store/ap_list_row.h"
#include "wlan/adapter_identity.h"
#include "wlan/notification_sink.h"
#include "wlan/operation_gate.h"
#include "wlan/policy_memory.h"
#include "wlan/scan_decision.h"

namespace corvane {

class CAdaptersAddresses;

// Facts of a connection, as one query gave them.
struct ConnectionFacts {
  bool connected = false;
  WString ssid;
  platform::DOT11_SSID rawSsid;
  MacAddress bssid{};
  std::uint32_t quality = 0;  // 0 to 100
};

// What an adapter's present connection has of addresses.
struct IPInfo {
  WString dnsSuffix;
  WString domainController;  // of the domain that the suffix names; empty where there is none
  std::vector<Ip4Address> ip4, ip4Gateways;
  std::vector<Ip6Address> ip6, ip6Gateways;
};

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
  bool IsConnected() const { return m_bIsConnected; }
  std::uint32_t GetCurrentChannel() const { return m_CurrentChannel; }  // of the last QueryChannel
  bool IsHECapable() const { return m_Adapter.IsHECapable(); }
  // The adapter's configuration; throws Exception before Initialize.
  CSmartPointer<CQUAYInterfaceConfig> Config() const { return m_Adapter.Config(); }

  // --- Queries (wlan_queries.cpp); all throw Exception with the platform's code on failure
  void DetermineInterfaceCapability();
  std::uint32_t QueryWlanInterface_ForInt(std::int32_t opcode);
  std::int32_t GetInterfaceState();        // WLAN_INTERFACE_STATE
  std::int32_t GetInterfaceStateForLog();  // the same; -1 on failure
  std::uint32_t QueryChannel();
  void QueryRadioState(platform::WLAN_RADIO_STATE* state);
  void CurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs);
  void QueryCurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs, bool copy);
  bool GetConnectedSSID(ConnectionFacts* facts);  // false instead of a throw
  bool FindBssEntry(WStringView ssid, const MacAddress& bssid, CSmartPointer<CWlanBssEntry>* entry);
  // Score of a BSS in the model: -1 without it, or the backup score while connected.
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, bool bUseBackup);
  std::int32_t GetScoreFromBssEntry(std::string* log, WStringView ssid, const MacAddress& bssid);
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, WString* phy,
                                    std::int32_t* rssi);
  bool IsRadioOff() const;  // by the cached state of the HT or VHT PHY
  void StoreRadioState(const platform::WLAN_RADIO_STATE& state);
  // The network list has a private network among the adapter's connections.
  bool IsConnectedToPrivateNetwork();
  // Both BSSIDs are members of one network of this adapter.
  bool IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b);
  WStringView AdapterClassText() const;  // "ax", "ac", … "802.11"

  // --- Discovery (network_discovery.cpp)
  // How many listed networks have a profile. *aux_error is written only with 100.
  std::int32_t DiscoverNetworksSynchronous(bool force_scan, bool first, std::int32_t* aux_error);
  void ScanSynchronous(const platform::DOT11_SSID* pSsid);  // throws Exception
  void UpdateAllScores();  // takes the interface lock, then the maps lock
  void ClearNetworks();
  bool IsScanInFlight() const { return m_scan_in_flight; }
  bool IsScanFresh() const { return m_scan_fresh; }

  // --- Profiles (profiles.cpp, network_filters.cpp, temporary_profiles.cpp). No failure is told to
  // the caller other than by the result.
  void RefreshProfiledAPList();   // rebuilds only when a name or the count differs
  void EnumerateALLAPProfiles();  // always rebuilds
  CSmartPointer<CWlanProfileData> GetProfileDataHelper(
      const WString& name);  // null: no such profile
  // *hidden is left alone for a network without a profile.
  bool GetProfileProperties(const WString& ssid, bool* hidden);
  bool DeleteWlanProfile(const WString& name);
  void RefreshNetworkAllowDenyFilters();
  // Keeps the XML text of a temporary connection with its network, unless that has a profile.
  void SaveTempProfileToNetwork(const WString& ssid,
                                const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  bool GetTempProfile(WStringView ssid, WString* xml);
  void SaveTempProfiles();  // stores the queued texts as profiles, each once

  // --- Connection control (connection_control.cpp). The operations block, queue behind one another
  // without a limit, and throw Exception; without a client they do nothing. Timeouts may be
  // INFINITE. The caller holds no interface lock.
  void ConnectSynchronous(const platform::WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                          std::uint32_t timeoutMs);
  void ConnectToNetwork(const WString& ssid);
  void DisconnectSynchronous(WStringView text);     // `text` goes only to the log
  bool SetConnectedBssid(const MacAddress& bssid);  // true: another BSSID than before
  void ClearConnectedBssid();                       // and what the connection had of addresses
  bool SetLastConnectedSsid(WStringView ssid);      // true: another SSID than before
  // Empties it; any thread, without a lock.
  void ForgetLastConnectedSsid() { m_bLastSsidForgotten = true; }
  MacAddress GetConnectedBssid() const;
  MacAddress GetConnectedBssidIfWeInitiated() const;
  WString GetLastConnectedSsid() const;
  platform::WLAN_CONNECTION_ATTRIBUTES GetConnAttrs() const;
  std::uint64_t GetTimeOfLastConnectedSsid() const { return m_time_of_last_connected_ssid; }
  std::uint32_t GetMaxSignalQuality() const { return m_MaxSignalQuality; }
  std::uint64_t GetDisconnectedAgeMs() const;   // 0 while connected
  void SetDisconnectedTick(bool disconnected);  // stamps it unless it is set, or clears it
  // --- Contention (ap_contention.cpp): the other access points on the connection's channel
  void UpdateContentionAPs(const WString& ssid, const WString& bssidText, std::uint32_t channel);
  void ClearContention();
  WString ContentionText();  // those of the last count, for the log; "none" without any
  void ClearConnected();     // forgets the connected flag and the peak quality

  // --- Addresses of the present connection (ip_info.cpp)
  // Reads them anew, when the radio comes on and at each change of connection, and teaches the
  // gateways to the connected entry. A failed call leaves its list empty.
  void RefreshIPInfo();
  IPInfo GetIPInfo() const;
  void DumpIPAddresses() const;  // to the log

  // --- Gateways of the present connection (gateway_roaming.cpp), on the worker
  void GatewayRoamingCheck();  // teaches them to the connected entry and the memo
  // False when the model has no such entry.
  bool AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid, const MacList& ip4,
                                   const MacList& ip6);
  MacList GetIP4GatewayMacs() const;
  MacList GetIP6GatewayMacs() const;
  bool HasGatewayMacs() const;

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

  std::atomic<bool> m_bPresent{true};
  std::atomic<std::int32_t> m_backup_score{-1};

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

  // Waits for its turn and makes the platform call under the interface lock; false without a
  // client.
  bool StartOperation(WlanOperation kind, const std::function<void()>& call);
  void AwaitConnect(std::uint32_t timeoutMs);
  void AwaitConnectedState();
  void QueueTempProfile(const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  void ConnectInternal(const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  void DisconnectInternal();
  void ScanInternal(const platform::DOT11_SSID* pSsid);

  platform::DWORD Query(std::int32_t opcode, platform::DWORD* size, void** data);
  template <typename T>
  void QueryStruct(std::int32_t opcode, T* out);
  std::int32_t BackupScore(WStringView ssid,
                           const MacAddress& bssid) const;  // -1 while disconnected
  void WlanInterfaceCapability();
  void NotePhy(std::uint32_t position, std::int32_t type);

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

  bool ListProfiles(std::vector<WString>* names);
  void RebuildProfiledNetworks(const char* operation, const std::vector<WString>& names,
                               bool collectHidden);
  void ForgetIPInfo();

  AdapterIdentity m_Adapter;

  // Guards the small texts and copies below; held for a copy.
  mutable CCritSec m_StateLock{"interface state", LockRank::kLeaf};
  platform::WLAN_INTERFACE_CAPABILITY m_Capability;
  platform::WLAN_RADIO_STATE m_RadioState;  // under m_StateLock; each dwPhyIndex -1 at the start
  std::atomic<std::int32_t> m_HE_PhyIdx{-1}, m_VHT_PhyIdx{-1}, m_HT_PhyIdx{-1};
  std::atomic<std::int32_t> m_G_PhyIdx{-1}, m_B_PhyIdx{-1}, m_A_PhyIdx{-1};
  std::atomic<bool> m_bIsConnected{false};
  std::atomic<std::uint32_t> m_CurrentChannel{0};
  std::atomic<std::uint32_t> m_MaxSignalQuality{0};
  bool m_bHighestPhyPending = true;

  platform::WLAN_CONNECTION_ATTRIBUTES m_ConnAttrs;  // under m_StateLock, as all down to the tick
  MacAddress m_connected_dot11Bssid{};               // of the last connection round
  MacAddress m_connected_dot11Bssid_if_we_initiated{};  // zero for a connection of somebody else
  WString m_last_connected_ssid;
  std::atomic<bool> m_bLastSsidForgotten{false};  // it counts as empty until it is set again
  IPInfo m_IPInfo;
  MacList m_IP4GatewayMacs, m_IP6GatewayMacs;
  std::atomic<std::uint64_t> m_time_of_last_connected_ssid{0};  // tick
  std::atomic<std::uint64_t> m_disconnected_tick{0};
  std::vector<WString> m_TempProfilesToSave;  // XML texts, interface lock

  OperationGate m_Operation;

  NetworkMap m_Networks;        // interface lock
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
  std::uint32_t m_ScanAttempts = 0, m_ScanFailures = 0, m_ScanSuccesses = 0;
  std::atomic<bool> m_scan_fresh{false};
  std::atomic<bool> m_scan_in_flight{false};
  std::vector<double> m_RateHistory;  // Mbps, newest first, at most 2

  PolicyMemory m_Policy{m_Adapter, ObjectLock(), m_Networks};
};

}  // namespace corvane
