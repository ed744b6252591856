#pragma once
#include <atomic>
#include <cstdint>
#include <list>

#include "config/settings/interface_config.h"
#include "config/store/address_text.h"
#include "config/store/ap_list_row.h"
#include "core/foundation/generic_malloc.h"
#include "core/foundation/win_event.h"
#include "monitors/interface_pdh.h"
#include "platform/wlan_types.h"
#include "select/report/ap_set_memo.h"
#include "wlan/binding/notification_sink.h"
#include "wlan/binding/switch_rate.h"
#include "wlan/model/wlan_network.h"

namespace corvane {

class CWlanClient;

// The synchronous operation in flight on an adapter.
enum class WlanOperation : std::int32_t { kNone = 0, kScan = 1, kConnect = 2, kDisconnect = 3 };

// Facts of a connection, as one query gave them.
struct ConnectionFacts {
  bool connected = false;
  WString ssid;
  platform::DOT11_SSID rawSsid;
  MacAddress bssid{};
  std::uint32_t quality = 0;  // 0 to 100
};

// The model of one adapter. Its object lock is the interface lock: it guards m_Networks, the operation
// state and the reservation. The synchronous operations run on the adapter's worker (a pipe thread may
// queue behind it); notifications come on the platform's thread.
class CWlanInterface : public SmartObjEx<CWlanInterface, SmartObj<>>, public IWlanAllNotifications {
 public:
  CWlanInterface();
  ~CWlanInterface() override;
  const char* GetClassName() const override { return "CWlanInterface"; }

  // --- Life (wlan_interface.cpp)
  void Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info);
  void Detach();  // drops the client, the configuration and the address lists

  int GetConfigIdx() const { return m_ConfigIdx; }
  const WString& GetGuidText() const { return m_GuidText; }
  const platform::GUID& GetGuid() const { return m_Info.InterfaceGuid; }
  const WString& GetConnectionName() const { return m_ConnectionName; }
  const WString& GetDescription() const { return m_Description; }
  const WString& GetMacText() const { return m_MacText; }
  std::uint32_t GetOsIfIndex() const { return m_OsIfIndex; }
  bool IsConnected() const { return m_bIsConnected; }
  std::uint32_t GetCurrentChannel() const { return m_CurrentChannel; }  // of the last QueryChannel
  bool IsHECapable() const;
  // The adapter's configuration; throws Exception once it is gone.
  CSmartPointer<CQUAYInterfaceConfig> Config() const;

  // --- Queries (wlan_queries.cpp); all throw Exception with the platform's code on failure
  void DetermineInterfaceCapability();
  std::uint32_t QueryWlanInterface_ForInt(std::int32_t opcode);
  std::int32_t GetInterfaceState();  // WLAN_INTERFACE_STATE
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
  // Both BSSIDs are members of one network of this adapter.
  bool IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b);
  WStringView AdapterClassText() const;  // "ax", "ac", … "802.11"

  // --- Discovery (network_discovery.cpp)
  // How many listed networks have a profile. *aux_error is written only with 100.
  std::int32_t DiscoverNetworksSynchronous(bool force_scan, bool first, std::int32_t* aux_error);
  void ScanSynchronous(const platform::DOT11_SSID* pSsid);  // throws Exception
  void UpdateAllScores();
  void ClearNetworks();
  bool IsScanInFlight() const { return m_scan_in_flight; }
  bool IsScanFresh() const { return m_scan_fresh; }

  // --- Profiles (profiles.cpp)
  void RefreshProfiledAPList();
  void EnumerateALLAPProfiles();
  CSmartPointer<CWlanProfileData> GetProfileDataHelper(const WString& name);
  bool GetProfileProperties(const WString& ssid, bool* hidden);

  // --- Connection control (connection_control.cpp)
  void ConnectSynchronous(const platform::WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                          std::uint32_t timeoutMs);
  void ConnectToNetwork(const WString& ssid);
  void DisconnectSynchronous(WStringView text);
  bool SetConnectedBssid(const MacAddress& bssid);   // true: another BSSID than before
  void ClearConnectedBssid();
  bool SetLastConnectedSsid(WStringView ssid);  // true: another SSID than before
  MacAddress GetConnectedBssid() const;
  MacAddress GetConnectedBssidIfWeInitiated() const;
  WString GetLastConnectedSsid() const;
  platform::WLAN_CONNECTION_ATTRIBUTES GetConnAttrs() const;
  std::uint64_t GetDisconnectedAgeMs() const;  // 0 while connected
  void SetDisconnectedTick(bool disconnected);  // stamps it unless it is set, or clears it
  void ClearConnected();  // forgets the connected flag and the peak quality

  // --- Gateways of the present connection (gateway_roaming.cpp), on the worker
  void GatewayRoamingCheck();  // teaches them to the connected entry and the memo
  // False when the model has no such entry.
  bool AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid, const MacList& ip4,
                                   const MacList& ip6);
  MacList GetIP4GatewayMacs() const;
  MacList GetIP6GatewayMacs() const;

  // --- Switch rate (switch_rate.cpp)
  void IncSwitchAttempt();
  void RollSwitchPeriod();

  // --- Notifications (connection_notifications.cpp), on the platform's thread
  void ConnectionNotification(platform::DWORD code, const void* data) override;
  void ScanNotification(platform::DWORD code, platform::DWORD reason) override;
  void MSMNotification(const void* data) override;
  void MSMRadioStateNotification(const void* data) override;
  void MSMSignalQualityNotification(platform::DWORD quality) override;
  void MSMAdapterOperationModeNotification(platform::DWORD mode) override;

  // --- Candidates (candidate_state.cpp)
  void ClearAllCandidateCounters(const char* reason);
  void DecrementAllCandidateCounters();
  void NotifyCurrentNetworkScore(std::int32_t score, const MacAddress& bssid);
  void TakeReservation(const MacAddress& bssid);
  void ReleaseReservation(const MacAddress& bssid);  // only when it holds this BSSID
  bool GetReservation(MacAddress* bssid);
  void AddScoreDiffSummary(const CandidateSummary& summary);  // keeps 120
  // Gives every entry outside the 5 GHz range the penalty that its final score takes, in points.
  void SetBTPenalty(std::int32_t value);
  CandidateSummary TakeScoreDiffSummary();  // least minimum and greatest maximum; empties the list

  // --- Traffic, Mbps and seconds; 0 without counters
  double GetTrafficMbps() const;
  CSmartPointer<CInterfacePDH> Pdh() const { return m_pInterfacePDH; }
  void ProcessIdleThresholds();  // learns the rate gates of the connection (idle_thresholds.cpp)

  // The networks by SSID, under the interface lock.
  NetworkMap& Networks() { return m_Networks; }
  // What the AP lists write on the entries (apply_ap_lists.cpp), under the interface lock; each round,
  // after discovery.
  void ApplyPreferredRows(const PreferredApRows& rows);
  void ApplyDenyRows(const ApListRows& rows);
  // A copy of every entry of every network, in map order, taken under the interface lock.
  BssEntryList SnapshotEntries();

  // State of the policy, on the worker only unless told otherwise.
  std::atomic<bool> m_bPresent{true};
  std::atomic<std::int32_t> m_backup_score{-1};
  bool m_peg_active = false;
  std::int32_t m_assoc_lq = -1;
  std::int32_t m_bss_lq = -1;
  std::uint32_t m_consec_disconnects = 0;
  bool m_emergency_armed = false;
  std::uint64_t m_last_score_notify_tick = 0;
  WString m_last_suggested_bssid;
  WString m_last_suggested_ssid;
  std::int32_t m_last_suggested_pos = -1;

 private:
  friend class CWlanClient;
  // Handlers proper, behind the fault guards of the notification operations.
  void ConnectionNotification_internal(platform::DWORD code,
                                       const platform::WLAN_CONNECTION_NOTIFICATION_DATA& data);
  void ScanNotification_internal(platform::DWORD code, platform::DWORD reason);
  void MSMRadioStateNotification_internal(const platform::WLAN_PHY_RADIO_STATE& state);
  void OnOutsideCompletion(platform::DWORD code, bool xSide, const WString& ssid);
  void OnOwnCompletion(platform::DWORD code, platform::DWORD reason, const WString& ssid);
  void AfterDisconnect(WStringView ssid);

  void BeginOperation(WlanOperation kind);  // waits for its turn; returns with the interface lock held
  void EndOperation();
  void ConnectInternal(const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  void DisconnectInternal();
  void ScanInternal(const platform::DOT11_SSID* pSsid);
  void AwaitConnectedState();
  CSmartPointer<CGenericMalloc> GetAvailableNetworkList();
  CSmartPointer<CGenericMalloc> GetNetworkBssList();
  bool DecideScan(bool force_scan, std::uint64_t now, double rate);
  void RunScans(std::uint64_t now);
  std::int32_t ReadLists(bool scanned, bool first, std::int32_t* aux_error);
  void MarkConnected();
  void BumpUnscannedCounter();
  void RebuildProfiledNetworks(const char16_t* operation, const std::list<WString>& names, bool hidden);
  CSmartPointer<CWlanClient> Client() const;  // null after Detach

  mutable CCritSec m_StateLock{"interface state", LockRank::kLeaf};  // guards the small texts and copies below
  CSmartPointer<CWlanClient> m_pClient;
  CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  platform::WLAN_INTERFACE_INFO m_Info;
  WString m_GuidText;
  std::uint32_t m_OsIfIndex = 0xFFFFFFFF;
  WString m_MacText;
  WString m_Description;
  WString m_ConnectionName;
  platform::WLAN_INTERFACE_CAPABILITY m_Capability;
  platform::WLAN_RADIO_STATE m_RadioState;  // under m_StateLock
  std::atomic<std::int32_t> m_HE_PhyIdx{-1}, m_VHT_PhyIdx{-1}, m_HT_PhyIdx{-1};
  std::atomic<std::int32_t> m_G_PhyIdx{-1}, m_B_PhyIdx{-1}, m_A_PhyIdx{-1};
  int m_ConfigIdx = -1;
  std::atomic<bool> m_bIsConnected{false};
  std::atomic<std::uint32_t> m_CurrentChannel{0};
  std::atomic<std::uint32_t> m_MaxSignalQuality{0};
  bool m_bHighestPhyPending = true;

  platform::WLAN_CONNECTION_ATTRIBUTES m_ConnAttrs;             // under m_StateLock
  MacAddress m_connected_dot11Bssid{};                          // under m_StateLock
  MacAddress m_connected_dot11Bssid_if_we_initiated{};          // under m_StateLock
  WString m_last_connected_ssid;                                // under m_StateLock
  MacList m_IP4GatewayMacs, m_IP6GatewayMacs;                   // under m_StateLock
  std::atomic<std::uint64_t> m_time_of_last_connected_ssid{0};
  std::atomic<std::uint64_t> m_disconnected_tick{0};

  CSmartPointer<CWinEvent> m_pConnectSyncEvent;
  CSmartPointer<CWinEvent> m_pScanSyncEvent;
  std::atomic<bool> m_op_busy{false};
  std::atomic<WlanOperation> m_op_kind{WlanOperation::kNone};
  std::atomic<bool> m_op_waiting{false};
  std::atomic<std::int32_t> m_op_reason{-2};
  std::atomic<std::uint32_t> m_op_code{0};

  NetworkMap m_Networks;  // interface lock
  CApSetMemo m_InternetMemo;
  CSmartPointer<CInterfacePDH> m_pInterfacePDH;

  std::uint64_t m_LastScanTime = 0;
  std::uint64_t m_LastScanStart = 0;
  std::uint32_t m_consec_ScanDeferrals = 0;
  std::atomic<std::uint32_t> m_connected_scan_count{0};
  std::atomic<std::uint32_t> m_disconnected_scan_count{0};
  std::uint32_t m_ScanAttempts = 0, m_ScanFailures = 0, m_ScanSuccesses = 0;
  std::atomic<bool> m_scan_fresh{false};
  std::atomic<bool> m_scan_in_flight{false};
  std::list<double> m_RateHistory;  // newest first, at most 2

  SwitchRate m_SwitchRate;
  std::list<CandidateSummary> m_score_diff_summaries;
  bool m_bReserved = false;                // m_reserved_candidate, interface lock
  MacAddress m_reserved_candidate{};
  std::int32_t m_last_notified_score = 0;
  std::uint32_t m_score_rise_streak = 0;
  MacAddress m_last_notified_bssid{};
};

}  // namespace corvane
