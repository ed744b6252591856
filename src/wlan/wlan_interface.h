#pragma once
#include "wlan/adapter_notices.h"
#include "wlan/network_filters.h"
#include "wlan/notification_sink.h"
#include "wlan/policy_memory.h"
#include "wlan/wlan_queries.h"

namespace corvane {

// The model of one adapter, put together of its parts: each operation is one of a part, whose
// header tells what it does, on which thread and under which lock. The object lock is the interface
// lock: it guards the networks, the calls of the platform that begin an operation, and the claim.
class CWlanInterface : public SmartObjEx<CWlanInterface, SmartObj<>>, public IWlanAllNotifications {
 public:
  CWlanInterface();
  ~CWlanInterface() override;
  const char* GetClassName() const override { return "CWlanInterface"; }

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
  bool IsRadioOff() const { return m_Radio.IsRadioOff(); }
  void StoreRadioState(const platform::WLAN_RADIO_STATE& state) { m_Radio.Store(state); }
  bool IsConnectedToPrivateNetwork() const { return m_Link.IsConnectedToPrivateNetwork(); }
  WStringView AdapterClassText() const { return m_Radio.ClassText(); }

  // --- What is on the air (adapter_scans.h, adapter_air.h)
  std::int32_t DiscoverNetworksSynchronous(bool force_scan, bool first, std::int32_t* aux_error) {
    return m_Scans.DiscoverNetworksSynchronous(force_scan, first, aux_error);
  }
  bool IsScanFresh() const { return m_Scans.IsScanFresh(); }
  NetworkMap& Networks() { return m_Air.Networks(); }  // for who holds the interface lock
  bool FindBssEntry(WStringView ssid, const MacAddress& bssid,
                    CSmartPointer<CWlanBssEntry>* entry) {
    return m_Air.FindBssEntry(ssid, bssid, entry);
  }
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, bool bUseBackup) {
    return m_Air.GetScoreFromBssEntry(ssid, bssid, bUseBackup);
  }
  std::int32_t GetScoreFromBssEntry(std::string* log, WStringView ssid, const MacAddress& bssid) {
    return m_Air.GetScoreFromBssEntry(log, ssid, bssid);
  }
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, WString* phy,
                                    std::int32_t* rssi) {
    return m_Air.GetScoreFromBssEntry(ssid, bssid, phy, rssi);
  }
  bool IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b) {
    return m_Air.IsConnectedToNetworkWithBothBssids(a, b);
  }
  // What the lists of a policy round depend on beside what it is told.
  std::uint64_t TakeAirStamp() { return m_Air.TakeStamp(); }
  std::uint64_t TempProfilesKept() const { return m_Profiles.TempProfilesKept(); }
  BssEntryList SnapshotEntries() { return m_Air.SnapshotEntries(); }
  void UpdateAllScores() { m_Air.UpdateAllScores(); }
  ScoreContext GetScoreContext() const { return m_Air.GetScoreContext(); }
  void NoteShared(const MacAddress& bssid) { m_Air.NoteShared(bssid); }
  void ClearNetworks() { m_Air.ClearNetworks(); }
  void ApplyPreferredRows(const PreferredApRows& rows) { m_Air.ApplyPreferredRows(rows); }
  void ApplyDenyRows(const ApListRows& rows) { m_Air.ApplyDenyRows(rows); }
  void SetBTPenalty(std::int32_t value) { m_Air.SetBTPenalty(value); }
  void GatewayRoamingCheck() { m_Air.GatewayRoamingCheck(); }
  bool AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid, const MacList& ip4,
                                   const MacList& ip6) {
    return m_Air.AssignGatewayMacsToBssEntry(ssid, bssid, ip4, ip6);
  }

  // --- Profiles (adapter_profiles.h, network_filters.h)
  void RefreshProfiledAPList() { m_Profiles.RefreshProfiledAPList(); }
  void EnumerateALLAPProfiles() { m_Profiles.EnumerateALLAPProfiles(); }
  CSmartPointer<CWlanProfileData> GetProfileDataHelper(const WString& name) {
    return m_Profiles.GetProfileDataHelper(name);
  }
  bool GetProfileProperties(const WString& ssid, bool* hidden) {
    return m_Profiles.GetProfileProperties(ssid, hidden);
  }
  [[nodiscard]] bool DeleteWlanProfile(const WString& name) {
    return m_Profiles.DeleteWlanProfile(name);
  }
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
  // Reads the addresses of the connection anew, when the radio comes on and at each change of
  // connection, and teaches the gateways to the connected entry.
  void RefreshIPInfo();

  // --- Contention (ap_contention.h)
  void UpdateContentionAPs(const WString& ssid, const WString& bssidText, std::uint32_t channel) {
    m_Contention.Update(ssid, bssidText, channel);
  }
  void ClearContention() { m_Contention.Clear(); }
  WString ContentionText() { return m_Contention.Text(); }

  // --- Notifications (adapter_notices.h), on the platform's thread
  void ConnectionNotification(platform::DWORD code, const void* data) override {
    m_Notices.ConnectionNotification(code, data);
  }
  void ScanNotification(platform::DWORD code, platform::DWORD reason) override {
    m_Notices.ScanNotification(code, reason);
  }
  void MSMNotification(const void* data) override { m_Notices.MSMNotification(data); }
  void MSMRadioStateNotification(const void* data) override {
    m_Notices.MSMRadioStateNotification(data);
  }
  void MSMSignalQualityNotification(platform::DWORD quality) override {
    m_Notices.MSMSignalQualityNotification(quality);
  }
  void MSMAdapterOperationModeNotification(platform::DWORD mode) override {
    m_Notices.MSMAdapterOperationModeNotification(mode);
  }

  // By which rules this adapter decides, at this moment.
  PolicyProfile& Profile() { return m_Deciding.Now(); }

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

  // --- Traffic (adapter_traffic.h), Mbps
  double GetTrafficMbps() const { return m_Traffic.Mbps(); }
  CSmartPointer<CInterfacePDH> Pdh() const { return m_Traffic.Pdh(); }
  void DoBlast(CAdaptersAddresses* adapters) { m_Traffic.DoBlast(adapters); }
  double GetBlastMbps() const { return m_Traffic.BlastMbps(); }
  CWinICMP2& Detector() { return m_Traffic.Detector(); }
  void ProcessIdleThresholds() { m_Traffic.ProcessIdleThresholds(); }

 private:
  friend class CWlanClient;

  bool m_bPresent = true;  // the last enumeration has it; the client's, on the main thread
  AdapterIdentity m_Adapter;
  AdapterRadio m_Radio{m_Adapter};
  AdapterLink m_Link{m_Adapter};
  AdapterAir m_Air{m_Adapter, m_Link, ObjectLock()};
  AdapterProfiles m_Profiles{m_Adapter, ObjectLock(), m_Air.Networks()};
  AdapterOperations m_Operations{m_Adapter, m_Link, m_Profiles, ObjectLock()};
  AdapterTraffic m_Traffic{m_Adapter, m_Link};
  NetworkLists m_Lists{m_Adapter, m_Link, m_Air, m_Profiles};
  DecidingProfile m_Deciding;
  AdapterScans m_Scans{m_Adapter, m_Link, m_Operations, m_Lists, m_Traffic, m_Deciding};
  ApContention m_Contention{m_Adapter, m_Air, m_Scans};
  AdapterNotices m_Notices{m_Adapter,    m_Radio,   m_Link,  m_Air,        m_Profiles,
                           m_Operations, m_Traffic, m_Scans, m_Contention, m_Deciding};
  PolicyMemory m_Policy{m_Adapter, ObjectLock(), m_Air.Networks()};
};

}  // namespace corvane
