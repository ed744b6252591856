// The stored profiles: look-ups, the maps of all adapters, and the text that clients read.

#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "notify/notification_manager.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "wlan/wlan_buffer.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_interface.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

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

CSmartPointer<CWlanProfileData> CWlanInterface::GetProfileDataHelper(const WString& name) {
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

bool CWlanInterface::ListProfiles(std::vector<WString>* names) {
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

void CWlanInterface::RefreshProfiledAPList() {
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

void CWlanInterface::EnumerateALLAPProfiles() {
  std::vector<WString> names;
  if (ListProfiles(&names)) RebuildProfiledNetworks("EnumerateALLAPProfiles", names, true);
}

void CWlanInterface::RebuildProfiledNetworks(const char* operation,
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
  QueueNotification(u"Corvane", u"System", u"ProfiledNetworksJson");
}

bool CWlanInterface::GetProfileProperties(const WString& ssid, bool* hidden) {
  if (ssid.empty()) return false;
  const CCritSecLock lock(ObjectLock());
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

bool CWlanInterface::DeleteWlanProfile(const WString& name) {
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

}  // namespace corvane
