#include "wlan/adapter_profiles.h"

#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "notify/notification_manager.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "wlan/reason_text.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::uint64_t kConnectLog = DBG(4);
constexpr std::uint64_t kTempProfileLog = DBG(43);

WString NameOf(const WLAN_PROFILE_INFO& info) {
  const WStringView name(info.strProfileName, std::size(info.strProfileName));
  return WString(name.substr(0, name.find(u'\0')));
}

// A JSON array; the names stand as they are.
WString ProfiledNetworksJson(const CGlobalWirelessMaps::ProfileMap& profiles) {
  WString text = u"[";
  for (const auto& [name, profile] : profiles) {
    if (text.size() > 1) text += u',';
    text += u'"' + profile->m_Name + u'"';
  }
  return text + u']';
}

bool IsInStep(const CGlobalWirelessMaps::ProfileMap& profiles, const std::vector<WString>& names) {
  if (profiles.size() != names.size()) return false;
  for (const WString& name : names) {
    if (!profiles.contains(name)) return false;
  }
  return true;
}

}  // namespace

CSmartPointer<CWlanProfileData> AdapterProfiles::GetProfileDataHelper(const WString& name) {
  const auto client = m_Adapter.Client();
  WlanBuffer<char16_t> xml;
  DWORD flags = WLAN_PROFILE_GET_PLAINTEXT_KEY;
  DWORD grantedAccess = 0;
  const DWORD result = CodeOfCall("CWlanInterface", "WlanGetProfile", [&] {
    return Os().wlan.WlanGetProfile(client.Handle(), &m_Adapter.Guid(), name.c_str(), nullptr,
                                    xml.Out(), &flags, &grantedAccess);
  });
  if (result == ERROR_SUCCESS && xml) {
    auto profile = CWlanProfileData::CreateObject();
    profile->SetData(name, xml.get(), flags, grantedAccess);
    return profile;
  }
  if (result == ERROR_NOT_FOUND) {
    LOG_DEBUG(DBG(1),
              u"[%i] CWlanInterface::GetProfileDataHelper: strProfileName=[%s] __NOT FOUND__\n",
              m_Adapter.Idx(), name);
  } else {
    LOG_DEBUG(DBG(1),
              u"[%i] CWlanInterface::GetProfileDataHelper: strProfileName=[%s] WlanGetProfile() "
              u"__FAILED__, "
              u"rc=0x%08lx\n",
              m_Adapter.Idx(), name, result);
  }
  return nullptr;
}

bool AdapterProfiles::ListProfiles(std::vector<WString>* names) {
  const auto client = m_Adapter.Client();
  WlanBuffer<WLAN_PROFILE_INFO_LIST> list;
  const DWORD result = CodeOfCall("CWlanInterface", "WlanGetProfileList", [&] {
    return Os().wlan.WlanGetProfileList(client.Handle(), &m_Adapter.Guid(), nullptr, list.Out());
  });
  if (result != ERROR_SUCCESS || !list || list->dwNumberOfItems > kMaxListedProfiles) return false;
  names->reserve(list->dwNumberOfItems);
  for (DWORD i = 0; i < list->dwNumberOfItems; ++i) names->push_back(NameOf(list->ProfileInfo[i]));
  return true;
}

void AdapterProfiles::RefreshProfiledAPList() {
  std::vector<WString> names;
  if (!ListProfiles(&names)) return;
  {
    auto& maps = CGlobalWirelessMaps::GetInstance();
    const CCritSecLock lock(maps.GetLock());
    if (IsInStep(maps.m_MapOfProfiles2, names)) return;
  }
  LOG_ADAPTER(m_Adapter.Idx(), DBG(0),
              u"[%i]CWlanInterface::RefreshProfiledAPList: RESET GWM_S map2 used for "
              u"ProfiledNetworksJson .....",
              m_Adapter.Idx());
  RebuildProfiledNetworks("RefreshProfiledAPList", names, false);
}

void AdapterProfiles::EnumerateALLAPProfiles() {
  std::vector<WString> names;
  if (ListProfiles(&names)) RebuildProfiledNetworks("EnumerateALLAPProfiles", names, true);
}

void AdapterProfiles::RebuildProfiledNetworks(const char* operation,
                                              const std::vector<WString>& names,
                                              bool collectHidden) {
  CGlobalWirelessMaps::ProfileMap fresh;
  for (const WString& name : names) {
    if (auto profile = GetProfileDataHelper(name)) fresh[name] = std::move(profile);
  }
  const WString text = ProfiledNetworksJson(fresh);
  {
    auto& maps = CGlobalWirelessMaps::GetInstance();
    const CCritSecLock lock(maps.GetLock());
    for (const auto& [name, profile] : fresh) {
      if (collectHidden && profile->m_bNonBroadcast) maps.m_MapOfProfiles[name] = profile;
    }
    maps.m_MapOfProfiles2.swap(fresh);
  }
  WString old;
  {
    auto& global = CGlobalConfigContainer::GetInstance();
    const CCritSecLock lock(global.GetLock());
    const auto registry = global.GetRegistry();
    if (registry) registry->GetRegistryStringValue(value::kProfiledNetworksJson, &old);
    if (!registry || !registry->SetRegistryStringValue(value::kProfiledNetworksJson, text)) {
      LOG_ERROR(u"[%i] ===========> %S: PROFILED AP LIST WRITE FAILED!\n", m_Adapter.Idx(),
                operation);
      return;
    }
  }
  if (old == text) return;
  LOG_ADAPTER(m_Adapter.Idx(), DBG(0),
              u"[%i]CWlanInterface::%S: registry str mismatch, SENDING EC NOTIFICATION EVENT!",
              m_Adapter.Idx(), operation);
  QueueNotification(u"Corvane", u"System", value::kProfiledNetworksJson);
}

bool AdapterProfiles::GetProfileProperties(const WString& ssid, bool* hidden) {
  if (ssid.empty()) return false;
  const CCritSecLock lock(m_Lock);
  auto& maps = CGlobalWirelessMaps::GetInstance();
  const auto remember = [&](const CSmartPointer<CWlanProfileData>& profile) {
    *hidden = profile->m_bNonBroadcast;
    const CCritSecLock mapsLock(maps.GetLock());
    maps.m_MapOfProfiles[ssid] = profile;
    return true;
  };
  {
    const CCritSecLock mapsLock(maps.GetLock());
    if (const auto at = maps.m_MapOfProfiles.find(ssid); at != maps.m_MapOfProfiles.end()) {
      *hidden = at->second->m_bNonBroadcast;
      return true;
    }
  }
  if (const auto network = m_Networks.find(ssid); network != m_Networks.end()) {
    const CWlanProfileData* own = network->second->m_Profile.get();
    if (!own) return false;
    auto copy = CWlanProfileData::CreateObject();
    copy->SetData(own->m_Name, own->m_Xml, own->m_Flags, own->m_GrantedAccess);
    return remember(copy);
  }
  if (const auto profile = GetProfileDataHelper(ssid)) return remember(profile);
  LOG_ADAPTER(m_Adapter.Idx(), DBG(0),
              u"CWlanInterface::GetProfileProperties: FAILED TO FIND PROFILE FOR: %s\n", ssid);
  *hidden = false;
  return false;
}

bool AdapterProfiles::DeleteWlanProfile(const WString& name) {
  const auto client = m_Adapter.Client();
  const DWORD result = CodeOfCall("CWlanInterface", "WlanDeleteProfile", [&] {
    return Os().wlan.WlanDeleteProfile(client.Handle(), &m_Adapter.Guid(), name.c_str(), nullptr);
  });
  if (result == ERROR_SUCCESS) return true;
  LOG_ERROR(
      u"[%i] CWlanInterface::DeleteWlanProfile: strProfileName=[%s] WlanDeleteProfile() "
      u"__FAILED__, "
      u"rc=0x%08lx\n",
      m_Adapter.Idx(), name, result);
  return false;
}

void AdapterProfiles::QueueTempProfile(const WLAN_CONNECTION_ATTRIBUTES& attrs,
                                       const WLAN_CONNECTION_PARAMETERS& parameters) {
  LOG_ADAPTER(m_Adapter.Idx(), kConnectLog,
              u"...State = %i [CONNECTED!] Queueing Temp profile for saving on disconnect...\n",
              attrs.isState);
  const CCritSecLock lock(m_Lock);
  m_TempProfilesToSave.emplace_back(parameters.strProfile);
  SaveTempProfileToNetwork(SsidText(attrs.wlanAssociationAttributes.dot11Ssid), parameters);
}

void AdapterProfiles::SaveTempProfileToNetwork(const WString& ssid,
                                               const WLAN_CONNECTION_PARAMETERS& parameters) {
  const CCritSecLock lock(m_Lock);
  const auto at = m_Networks.find(ssid);
  if (at == m_Networks.end()) {
    LOG_ADAPTER(m_Adapter.Idx(), kTempProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s] _NOT FOUND_\n",
                m_Adapter.Idx(), ssid);
    return;
  }
  CWlanNetwork& network = *at->second;
  if (network.m_Profile) {
    LOG_ADAPTER(m_Adapter.Idx(), kTempProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s] FOUND, but already has "
                u"Profile\n",
                m_Adapter.Idx(), ssid);
    return;
  }
  ++m_TempProfilesKept;
  network.m_TempProfileXml = parameters.strProfile ? parameters.strProfile : u"";
  LOG_ADAPTER(m_Adapter.Idx(), kTempProfileLog,
              u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s]\n", m_Adapter.Idx(), ssid);
  for (const auto& [bssid, entry] : network.m_BssMap) {
    entry->m_bHasTempProfile = true;
    LOG_ADAPTER(m_Adapter.Idx(), kTempProfileLog,
                u"[%i] CWlanInterface::SaveTempProfileToNetwork: SSID [%s]: SetHasTempProfile in "
                u"BSSID %s\n",
                m_Adapter.Idx(), ssid, entry->m_BSSIDText);
  }
}

bool AdapterProfiles::GetTempProfile(WStringView ssid, WString* xml) {
  const CCritSecLock lock(m_Lock);
  const auto at = m_Networks.find(ssid);
  if (at == m_Networks.end() || at->second->m_TempProfileXml.empty()) return false;
  *xml = at->second->m_TempProfileXml;
  return true;
}

void AdapterProfiles::SaveTempProfiles() {
  const CCritSecLock lock(m_Lock);
  const auto client = m_Adapter.Client();
  for (const WString& xml : std::exchange(m_TempProfilesToSave, {})) {
    DWORD reason = 0;
    const DWORD result = CodeOfCall("CWlanInterface", "WlanSetProfile", [&] {
      return Os().wlan.WlanSetProfile(client.Handle(), &m_Adapter.Guid(), 0, xml.c_str(), nullptr,
                                      TRUE, nullptr, &reason);
    });
    if (result == ERROR_SUCCESS) {
      LOG_DEBUG(kTempProfileLog, u"Successfully saved temp profile!\n%s\n", xml);
    } else {
      LOG_DEBUG(kTempProfileLog, u"Failed to save temp profile[rc=%lu, reason=%lu, %s]\n%s\n",
                result, reason, ReasonText(reason), xml);
    }
  }
}

}  // namespace corvane
