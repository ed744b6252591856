// Profiles that a client hands over with a connect: used at once, stored when the connection ends.

#include "foundation/log_lines.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "wlan/reason_text.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_interface.h"

namespace corvane {

using namespace platform;

void CWlanInterface::SaveTempProfileToNetwork(const WString& ssid,
                                              const WLAN_CONNECTION_PARAMETERS& parameters) {
  constexpr std::uint64_t kProfileLog = DBG(43);
  const CCritSecLock lock(ObjectLock());
  const auto at = m_Networks.find(ssid);
  if (at == m_Networks.end()) {
    LOG_ADAPTER(m_Adapter.Idx(), kProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s] _NOT FOUND_\n",
                m_Adapter.Idx(), ssid);
    return;
  }
  CWlanNetwork& network = *at->second;
  if (network.m_Profile) {
    LOG_ADAPTER(m_Adapter.Idx(), kProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s] FOUND, but already has "
                u"Profile\n",
                m_Adapter.Idx(), ssid);
    return;
  }
  network.m_TempProfileXml = parameters.strProfile ? parameters.strProfile : u"";
  LOG_ADAPTER(m_Adapter.Idx(), kProfileLog,
              u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s]\n", m_Adapter.Idx(), ssid);
  for (const auto& [bssid, entry] : network.m_BssMap) {
    entry->m_bHasTempProfile = true;
    LOG_ADAPTER(m_Adapter.Idx(), kProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s]: SetHasTempProfile in "
                u"BSSID %s\n",
                m_Adapter.Idx(), ssid, entry->m_BSSIDText);
  }
}

bool CWlanInterface::GetTempProfile(WStringView ssid, WString* xml) {
  const CCritSecLock lock(ObjectLock());
  const auto at = m_Networks.find(ssid);
  if (at == m_Networks.end() || at->second->m_TempProfileXml.empty()) return false;
  *xml = at->second->m_TempProfileXml;
  return true;
}

void CWlanInterface::SaveTempProfiles() {
  const CCritSecLock lock(ObjectLock());
  const auto client = m_Adapter.Client();
  for (const WString& xml : std::exchange(m_TempProfilesToSave, {})) {
    DWORD reason = 0;
    const DWORD result = CodeOfCall("CWlanInterface", "WlanSetProfile", [&] {
      return Os().wlan.WlanSetProfile(client.Handle(), &m_Adapter.Guid(), 0, xml.c_str(), nullptr,
                                      TRUE, nullptr, &reason);
    });
    if (result == ERROR_SUCCESS) {
      LOG_DEBUG(DBG(43), u"Successfully saved temp profile!\n%s\n", xml);
    } else {
      LOG_DEBUG(DBG(43), u"Failed to save temp profile[rc=%lu, reason=%lu, %s]\n%s\n", result,
                reason, ReasonText(reason), xml);
    }
  }
}

}  // namespace corvane
