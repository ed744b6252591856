#include "wlan/adapter_air.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "history/global_ap_gateway_map_memo.h"
#include "model/ap_list_marks.h"

namespace corvane {

bool AdapterAir::FindBssEntry(WStringView ssid, const MacAddress& bssid,
                              CSmartPointer<CWlanBssEntry>* entry) {
  entry->reset();
  if (ssid.empty()) return false;
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return false;
  const auto found = network->second->m_BssMap.find(bssid);
  if (found == network->second->m_BssMap.end()) return false;
  *entry = found->second;
  return true;
}

std::int32_t AdapterAir::BackupScore(WStringView ssid, const MacAddress& bssid) const {
  if (ssid.empty() || !m_Link.IsConnected()) return -1;
  LOG_ADAPTER(m_Adapter.Idx(), DBG(37),
              u"[%i] CWlanInterface::GetScoreFromBssEntry: ____USING BACKUP SCORE____ %i, for %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}]\n",
              m_Adapter.Idx(), m_Link.BackupScore(), ssid, bssid[0], bssid[1], bssid[2], bssid[3],
              bssid[4], bssid[5]);
  return m_Link.BackupScore();
}

std::int32_t AdapterAir::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                              bool bUseBackup) {
  const CCritSecLock lock(m_Lock);
  CSmartPointer<CWlanBssEntry> entry;
  if (FindBssEntry(ssid, bssid, &entry)) return entry->GetScore(false, GetScoreContext());
  return bUseBackup ? BackupScore(ssid, bssid) : -1;
}

std::int32_t AdapterAir::GetScoreFromBssEntry(std::string* log, WStringView ssid,
                                              const MacAddress& bssid) {
  const CCritSecLock lock(m_Lock);
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *log = entry->ScoreLog() + entry->FinalScoreLog();
  return entry->GetScore(false, GetScoreContext());
}

std::int32_t AdapterAir::GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid,
                                              WString* phy, std::int32_t* rssi) {
  *phy = u"802.11";
  const CCritSecLock lock(m_Lock);
  CSmartPointer<CWlanBssEntry> entry;
  if (!FindBssEntry(ssid, bssid, &entry)) return BackupScore(ssid, bssid);
  *phy = entry->GetPhyMode();
  *rssi = entry->m_Bss.lRssi;
  return entry->GetScore(false, GetScoreContext());
}

bool AdapterAir::IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b) {
  const CCritSecLock lock(m_Lock);
  return std::any_of(m_Networks.begin(), m_Networks.end(), [&](const auto& item) {
    const auto& entries = item.second->m_BssMap;
    return entries.contains(a) && entries.contains(b);
  });
}

BssEntryList AdapterAir::SnapshotEntries() {
  BssEntryList entries;
  const CCritSecLock lock(m_Lock);
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entries.push_back(entry);
  }
  return entries;
}

void AdapterAir::ClearNetworks() {
  NetworkMap dropped;  // outlives the lock
  const CCritSecLock lock(m_Lock);
  dropped.swap(m_Networks);
  NoteChange();
}

std::uint64_t AdapterAir::TakeStamp() {
  const CCritSecLock lock(m_Lock);
  if (!std::exchange(m_bKept, false)) ++m_Stamp;
  return m_Stamp;
}

void AdapterAir::ApplyPreferredRows(const PreferredApRows& rows) {
  const CCritSecLock lock(m_Lock);
  if (MarkPreferred(rows, &m_Networks)) NoteChange();
}

void AdapterAir::ApplyDenyRows(const ApListRows& rows) {
  const CCritSecLock lock(m_Lock);
  if (MarkDenied(rows, &m_Networks)) NoteChange();
}

void AdapterAir::SetBTPenalty(std::int32_t value) {
  const CCritSecLock guard(m_Lock);
  bool changed = false;
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->IsIn5GHzRange() || entry->m_BTPenalty == value) continue;
      entry->m_BTPenalty = value;
      changed = true;
    }
  }
  if (changed) NoteChange();
}

void AdapterAir::GatewayRoamingCheck() {
  const LinkState link = m_Link.Get();
  const WString& ssid = link.m_last_connected_ssid;
  if (!m_Link.IsConnected() || ssid.empty() || !m_Adapter.Config()->m_GatewayRoaming) return;
  AssignGatewayMacsToBssEntry(ssid, link.m_connected_dot11Bssid, link.m_IPInfo.ip4GatewayMacs,
                              link.m_IPInfo.ip6GatewayMacs);
}

bool AdapterAir::AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid,
                                             const MacList& ip4, const MacList& ip6) {
  if (ssid.empty()) return false;
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) {
    LOG_ADAPTER(m_Adapter.Idx(), DBG(41),
                u"[%i] CWlanInterface::AssignGatewayMacsToBssEntry: SSID [%s] not found!\n",
                m_Adapter.Idx(), ssid);
    return false;
  }
  CGlobalAPGatewayMapMemo::GetInstance().Update(MacText(bssid), ip4, ip6);
  const auto& entries = network->second->m_BssMap;
  if (const auto entry = entries.find(bssid); entry != entries.end()) {
    entry->second->AssignGatewayMacs(ip4, ip6);
    return true;
  }
  LOG_ADAPTER(m_Adapter.Idx(), DBG(41),
              u"[%i] CWlanInterface::AssignGatewayMacsToBssEntry: SSID [%s]: BSSID %s not found!\n",
              m_Adapter.Idx(), ssid, MacText(bssid));
  return false;
}

}  // namespace corvane
