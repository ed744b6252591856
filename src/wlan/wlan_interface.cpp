#include "wlan/wlan_interface.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "monitors/network_list_manager.h"

namespace corvane {

namespace {

constexpr std::int32_t kCategoryPrivate = 1;

}  // namespace

CWlanInterface::CWlanInterface() : SmartObjEx("interface", LockRank::kInterface) {}

CWlanInterface::~CWlanInterface() = default;

void CWlanInterface::Initialize(CWlanClient* client, const platform::WLAN_INTERFACE_INFO& info) {
  m_bPresent = true;
  m_Operations.Initialize();
  m_Adapter.Initialize(client, info);
  if (m_Adapter.HasOsIfIndex()) {
    const auto config = m_Adapter.Config();
    m_pInterfacePDH.CreateObject()->Initialize(m_Adapter.OsIfIndex(), m_Adapter.Idx(),
                                               config->m_rate_gate_high, config->m_rate_gate_low);
  }
  m_Adapter.Publish();
  EnumerateALLAPProfiles();
}

void CWlanInterface::Detach() {
  m_Adapter.Detach();
  m_Link.ForgetIPInfo();
  m_Operations.SignalExit();
}

void CWlanInterface::RefreshIPInfo() {
  if (m_Link.RefreshIPInfo()) GatewayRoamingCheck();
}

double CWlanInterface::GetTrafficMbps() const {
  return m_pInterfacePDH ? m_pInterfacePDH->GetTxMbps() + m_pInterfacePDH->GetRxMbps() : 0.0;
}

BssEntryList CWlanInterface::SnapshotEntries() {
  BssEntryList entries;
  const CCritSecLock lock(ObjectLock());
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entries.push_back(entry);
  }
  return entries;
}

void CWlanInterface::ClearNetworks() {
  NetworkMap dropped;  // outlives the lock
  const CCritSecLock lock(ObjectLock());
  dropped.swap(m_Networks);
}

bool CWlanInterface::FindBssEntry(WStringView ssid, const MacAddress& bssid,
                                  CSmartPointer<CWlanBssEntry>* entry) {
  entry->reset();
  if (ssid.empty()) return false;
  const CCritSecLock lock(ObjectLock());
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return false;
  const auto found = network->second->m_BssMap.find(bssid);
  if (found == network->second->m_BssMap.end()) return false;
  *entry = found->second;
  return true;
}

std::int32_t CWlanInterface::BackupScore(WStringView ssid, const MacAddress& bssid) const {
  if (ssid.empty() || !m_Link.IsConnected()) return -1;
  LOG_ADAPTER(m_Adapter.Idx(), DBG(37),
              u"[%i] CWlanInterface::GetScoreFromBssEntry: ____USING BACKUP SCORE____ %i, for %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}]\n",
              m_Adapter.Idx(), m_Link.BackupScore(), ssid, bssid[0], bssid[1], bssid[2], bssid[3],
              bssid[4], bssid[5]);
  return m_Link.BackupScore();
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                                  bool bUseBackup) {
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (FindBssEntry(ssid, bssid, &entry)) return entry->GetScore(false);
  return bUseBackup ? BackupScore(ssid, bssid) : -1;
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(std::string* log, WStringView ssid,
                                                  const MacAddress& bssid) {
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *log = entry->m_ScoreLog + entry->m_FinalScoreLog;
  return entry->GetScore(false);
}

std::int32_t CWlanInterface::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                                  WString* phy, std::int32_t* rssi) {
  *phy = u"802.11";
  const CCritSecLock lock(ObjectLock());
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *phy = entry->GetPhyMode();
  *rssi = entry->m_Bss.lRssi;
  return entry->GetScore(false);
}

bool CWlanInterface::IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b) {
  const CCritSecLock lock(ObjectLock());
  return std::any_of(m_Networks.begin(), m_Networks.end(), [&](const auto& item) {
    const auto& entries = item.second->m_BssMap;
    return entries.contains(a) && entries.contains(b);
  });
}

bool CWlanInterface::IsConnectedToPrivateNetwork() {
  std::list<NlmNetworkRecord> records;
  if (auto* const list = CNetworkListManager::Find())
    list->GetNetCatInfoForInterface(m_Adapter.Guid(), &records);
  for (const NlmNetworkRecord& record : records) {
    const bool isPrivate = record.cat == kCategoryPrivate;
    LOG_ADAPTER(
        m_Adapter.Idx(), DBG(1),
        u"[%i] CWlanInterface::IsConnectedToPrivateNetwork: FOUND %s: category=%i %s, Name=%s\n",
        m_Adapter.Idx(), isPrivate ? u"PRIVATE" : u"NON-PRIVATE", record.cat,
        NetworkCategoryName(record.cat), record.name);
    if (isPrivate) return true;
  }
  return false;
}

}  // namespace corvane
