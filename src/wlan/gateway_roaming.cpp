// What the wired side tells of an access point: the gateways of the present connection, kept with
// the connected entry and in the memo.

#include "foundation/log_lines.h"
#include "history/global_ap_gateway_map_memo.h"
#include "wlan/wlan_interface.h"

namespace corvane {

void CWlanInterface::GatewayRoamingCheck() {
  const LinkState link = m_Link.Get();
  const WString& ssid = link.m_last_connected_ssid;
  if (!m_Link.IsConnected() || ssid.empty() || !m_Adapter.Config()->m_GatewayRoaming) return;
  AssignGatewayMacsToBssEntry(ssid, link.m_connected_dot11Bssid, link.m_IPInfo.ip4GatewayMacs,
                              link.m_IPInfo.ip6GatewayMacs);
}

bool CWlanInterface::AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid,
                                                 const MacList& ip4, const MacList& ip6) {
  if (ssid.empty()) return false;
  const CCritSecLock lock(ObjectLock());
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) {
    LOG_ADAPTER(m_Adapter.Idx(), DBG(41),
                u"[%i] CWlanInterface::AssignGatewayMacsToBssEntry: SSID [%s] not found!\n",
                m_Adapter.Idx(), ssid);
    return false;
  }
  const auto& entries = network->second->m_BssMap;
  if (const auto entry = entries.find(bssid); entry != entries.end()) {
    entry->second->AssignGatewayMacs(ip4, ip6);
    return true;
  }
  CGlobalAPGatewayMapMemo::GetInstance().Update(MacText(bssid), ip4, ip6);
  LOG_ADAPTER(m_Adapter.Idx(), DBG(41),
              u"[%i] CWlanInterface::AssignGatewayMacsToBssEntry: SSID [%s]: BSSID %s not found!\n",
              m_Adapter.Idx(), ssid, MacText(bssid));
  return false;
}

}  // namespace corvane
