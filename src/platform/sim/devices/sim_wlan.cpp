#include "platform/sim/devices/sim_wlan.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/sim/devices/sim_wlan_lists.h"
#include "platform/sim/devices/sim_wlan_reasons.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/sim/world/world_profile.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {
constexpr DWORD kImpossibleCount = 0x7FFFFFFF;
constexpr LONG kNativeWifi = 1;          // WLAN_INTERFACE_TYPE
constexpr LONG kValueTypeQueryOnly = 0;  // WLAN_OPCODE_VALUE_TYPE
}  // namespace

void* SimWlan::Give(const void* bytes, std::size_t size) {
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (!memory) throw std::bad_alloc();
  std::memcpy(memory, bytes, size);
  ++m_BuffersOut;
  return memory;
}

template <class List, class Item>
List* SimWlan::GiveList(const std::vector<Item>& items) {
  constexpr std::size_t kHeader = 2 * sizeof(DWORD);
  std::vector<BYTE> bytes(std::max(sizeof(List), kHeader + items.size() * sizeof(Item)));
  const DWORD count = m_bImpossibleCounts ? kImpossibleCount : static_cast<DWORD>(items.size());
  std::memcpy(bytes.data(), &count, sizeof count);
  if (!items.empty())
    std::memcpy(bytes.data() + kHeader, items.data(), items.size() * sizeof(Item));
  return static_cast<List*>(Give(bytes.data(), bytes.size()));
}

DWORD SimWlan::Check(HANDLE client) const {
  if (!m_Machine.wlanService) return ERROR_SERVICE_NOT_ACTIVE;
  return m_Clients.Has(client) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

template <class Serve>
DWORD SimWlan::OnAdapter(const char* operation, HANDLE client, const GUID* guid, Serve&& serve) {
  if (const DWORD code = m_Gate.Enter(operation); code != ERROR_SUCCESS) return code;
  if (!guid) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    if (const DWORD code = Check(client); code != ERROR_SUCCESS) return code;
    for (const auto& adapter : m_Adapters) {
      if (adapter->Data().present && adapter->Data().guid == *guid) return serve(*adapter);
    }
    return ERROR_NOT_FOUND;
  });
}

DWORD SimWlan::WlanOpenHandle(DWORD clientVersion, void*, DWORD* negotiated, HANDLE* client) {
  if (const DWORD code = m_Gate.Enter("WlanOpenHandle"); code != ERROR_SUCCESS) return code;
  if (!negotiated || !client) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    if (!m_Machine.wlanService) return ERROR_SERVICE_NOT_ACTIVE;
    *negotiated = clientVersion;
    *client = m_Clients.Open();
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanCloseHandle(HANDLE client, void*) {
  const bool closed = m_Machine.loop.WithLock([&] { return m_Clients.Close(client); });
  m_Machine.loop.AwaitCallback();
  if (const DWORD code = m_Gate.Enter("WlanCloseHandle"); code != ERROR_SUCCESS) return code;
  return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

DWORD SimWlan::WlanRegisterNotification(HANDLE client, DWORD source, BOOL,
                                        WLAN_NOTIFICATION_CALLBACK callback, void* context, void*,
                                        DWORD* previousSource) {
  if (const DWORD code = m_Gate.Enter("WlanRegisterNotification"); code != ERROR_SUCCESS)
    return code;
  if (source != WLAN_NOTIFICATION_SOURCE_NONE && !callback) return ERROR_INVALID_PARAMETER;
  const DWORD result = m_Machine.loop.WithLock([&]() -> DWORD {
    if (const DWORD code = Check(client); code != ERROR_SUCCESS) return code;
    m_Clients.Register(client, source, callback, context, previousSource);
    return ERROR_SUCCESS;
  });
  if (result == ERROR_SUCCESS && source == WLAN_NOTIFICATION_SOURCE_NONE)
    m_Machine.loop.AwaitCallback();
  return result;
}

DWORD SimWlan::WlanEnumInterfaces(HANDLE client, void*, WLAN_INTERFACE_INFO_LIST** list) {
  if (const DWORD code = m_Gate.Enter("WlanEnumInterfaces"); code != ERROR_SUCCESS) return code;
  if (!list) return ERROR_INVALID_PARAMETER;
  return m_Machine.loop.WithLock([&]() -> DWORD {
    if (const DWORD code = Check(client); code != ERROR_SUCCESS) return code;
    std::vector<WLAN_INTERFACE_INFO> infos;
    for (const auto& adapter : m_Adapters) {
      if (!adapter->Data().present) continue;
      WLAN_INTERFACE_INFO info;
      info.InterfaceGuid = adapter->Data().guid;
      CopyText(adapter->Data().description, info.strInterfaceDescription,
               std::size(info.strInterfaceDescription));
      info.isState = adapter->InterfaceState();
      infos.push_back(info);
    }
    *list = GiveList<WLAN_INTERFACE_INFO_LIST>(infos);
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanGetInterfaceCapability(HANDLE client, const GUID* adapter, void*,
                                          WLAN_INTERFACE_CAPABILITY** capability) {
  return OnAdapter("WlanGetInterfaceCapability", client, adapter, [&](SimWlanAdapter& found) {
    const std::vector<LONG>& phys = found.Data().phys;
    WLAN_INTERFACE_CAPABILITY result;
    result.interfaceType = kNativeWifi;
    result.bDot11DSupported = TRUE;
    result.dwMaxDesiredSsidListSize = 1;
    result.dwMaxDesiredBssidListSize = 1;
    result.dwNumberOfSupportedPhys =
        static_cast<DWORD>(std::min(phys.size(), std::size(result.dot11PhyTypes)));
    std::copy_n(phys.begin(), result.dwNumberOfSupportedPhys, result.dot11PhyTypes);
    *capability = static_cast<WLAN_INTERFACE_CAPABILITY*>(Give(&result, sizeof result));
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanQueryInterface(HANDLE client, const GUID* adapter, LONG opcode, void*,
                                  DWORD* dataSize, void** data, LONG* valueType) {
  const auto serve = [&](SimWlanAdapter& found) -> DWORD {
    const auto answer = [&](const auto& value) -> DWORD {
      *data = Give(&value, sizeof value);
      *dataSize = static_cast<DWORD>(sizeof value);
      if (valueType) *valueType = kValueTypeQueryOnly;
      return ERROR_SUCCESS;
    };
    const SimWlanAdapter::Link* link = found.Connection();
    switch (opcode) {
      case wlan_intf_opcode_radio_state:
        return answer(RadioState(found.Data()));
      case wlan_intf_opcode_interface_state:
        return answer(found.InterfaceState());
      case wlan_intf_opcode_current_connection:
        if (!link) return ERROR_INVALID_STATE;
        found.RefreshLink();
        return answer(ConnectionAttributes(m_Machine, found));
      case wlan_intf_opcode_channel_number:
        if (!link) return ERROR_INVALID_STATE;
        return answer(ChannelOf(m_Machine.world.accessPoints[link->accessPoint].frequencyMhz));
      case wlan_intf_opcode_rssi:
        if (!link) return ERROR_INVALID_STATE;
        found.RefreshLink();
        return answer(static_cast<LONG>(link->dbm));
      default:
        return ERROR_NOT_SUPPORTED;
    }
  };
  if (!dataSize || !data) return ERROR_INVALID_PARAMETER;
  return OnAdapter("WlanQueryInterface", client, adapter, serve);
}

// Nothing leaks when the call faults by injection.
void SimWlan::WlanFreeMemory(void* memory) {
  if (memory) {
    --m_BuffersOut;
    std::free(memory);
  }
  m_Gate.Enter("WlanFreeMemory");
}

DWORD SimWlan::WlanScan(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid, const void*,
                        void*) {
  return OnAdapter("WlanScan", client, adapter, [&](SimWlanAdapter& found) {
    if (ssid && ssid->uSSIDLength > sizeof ssid->ucSSID) return ERROR_INVALID_PARAMETER;
    return found.Scan(Cause::kProgram, ssid ? FromDot11(*ssid) : std::string());
  });
}

DWORD SimWlan::WlanGetAvailableNetworkList(HANDLE client, const GUID* adapter, DWORD, void*,
                                           WLAN_AVAILABLE_NETWORK_LIST** list) {
  return OnAdapter("WlanGetAvailableNetworkList", client, adapter, [&](SimWlanAdapter& found) {
    if (!found.IsRadioOn()) return ERROR_NDIS_DOT11_POWER_STATE_INVALID;
    *list = GiveList<WLAN_AVAILABLE_NETWORK_LIST>(AvailableNetworks(m_Machine, found));
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanGetNetworkBssList(HANDLE client, const GUID* adapter, const DOT11_SSID* ssid,
                                     LONG bssType, BOOL, void*, WLAN_BSS_LIST** list) {
  return OnAdapter("WlanGetNetworkBssList", client, adapter, [&](SimWlanAdapter& found) {
    if (!found.IsRadioOn()) return ERROR_NDIS_DOT11_POWER_STATE_INVALID;
    const std::vector<BYTE> bytes = BssList(m_Machine, found, ssid, bssType);
    *list = static_cast<WLAN_BSS_LIST*>(Give(bytes.data(), bytes.size()));
    if (m_bImpossibleCounts) (*list)->dwNumberOfItems = kImpossibleCount;
    return ERROR_SUCCESS;
  });
}

// What the system makes up for a network that it has no profile of: its first access point's
// security, and no key, as nobody is asked for one.
Profile SimWlan::Discovered(const std::string& ssid) const {
  Profile profile;
  profile.ssid = ssid;
  profile.name = FromUtf8(ssid);
  for (const AccessPoint& ap : m_Machine.world.accessPoints) {
    if (ap.ssid != ssid) continue;
    profile.security.auth = ap.security.auth;
    profile.security.cipher = ap.security.cipher;
    break;
  }
  return profile;
}

DWORD SimWlan::FillRequest(SimWlanAdapter& adapter, const WLAN_CONNECTION_PARAMETERS& parameters,
                           SimWlanAdapter::ConnectRequest* request) const {
  const bool discovery = parameters.wlanConnectionMode == wlan_connection_mode_discovery_secure;
  const bool named = parameters.strProfile && parameters.strProfile[0] != 0;
  if (named == discovery) return ERROR_INVALID_PARAMETER;
  Profile temporary;
  const Profile* profile = &temporary;
  request->mode = parameters.wlanConnectionMode;
  switch (parameters.wlanConnectionMode) {
    case wlan_connection_mode_profile:
      profile = adapter.Profiles().Find(parameters.strProfile);
      if (!profile) return ERROR_NOT_FOUND;
      break;
    case wlan_connection_mode_temporary_profile:
      if (!ReadProfileXml(parameters.strProfile, &temporary)) return ERROR_BAD_PROFILE;
      break;
    case wlan_connection_mode_discovery_secure:
      if (!parameters.pDot11Ssid) return ERROR_INVALID_PARAMETER;
      profile = adapter.Profiles().FindForSsid(FromDot11(*parameters.pDot11Ssid));
      if (profile) break;
      temporary = Discovered(FromDot11(*parameters.pDot11Ssid));
      profile = &temporary;
      break;
    default:
      return ERROR_INVALID_PARAMETER;
  }
  request->profile = profile->name;
  request->ssid = profile->ssid;
  request->security = profile->security;
  if (const DOT11_SSID* ssid = parameters.pDot11Ssid; ssid && FromDot11(*ssid) != profile->ssid) {
    return ERROR_INVALID_PARAMETER;
  }
  if (const DOT11_BSSID_LIST* wanted = parameters.pDesiredBssidList) {
    constexpr BYTE kDefaultObject = 0x80, kRevision = 1;
    if (wanted->Header.Type != kDefaultObject || wanted->Header.Revision != kRevision ||
        wanted->Header.Size < sizeof(DOT11_BSSID_LIST) || wanted->uNumOfEntries != 1) {
      return ERROR_INVALID_PARAMETER;
    }
    Mac bssid;
    std::memcpy(bssid.data(), wanted->BSSIDs[0], bssid.size());
    request->bssid = bssid;
  }
  return ERROR_SUCCESS;
}

DWORD SimWlan::WlanConnect(HANDLE client, const GUID* adapter,
                           const WLAN_CONNECTION_PARAMETERS* parameters, void*) {
  return OnAdapter("WlanConnect", client, adapter, [&](SimWlanAdapter& found) -> DWORD {
    if (!parameters) return ERROR_INVALID_PARAMETER;
    SimWlanAdapter::ConnectRequest request;
    const DWORD code = FillRequest(found, *parameters, &request);
    return code == ERROR_SUCCESS ? found.Connect(request) : code;
  });
}

DWORD SimWlan::WlanDisconnect(HANDLE client, const GUID* adapter, void*) {
  return OnAdapter("WlanDisconnect", client, adapter,
                   [](SimWlanAdapter& found) { return found.Disconnect(Cause::kProgram); });
}

DWORD SimWlan::WlanReasonCodeToString(DWORD reason, DWORD bufferChars, char16_t* buffer, void*) {
  if (const DWORD code = m_Gate.Enter("WlanReasonCodeToString"); code != ERROR_SUCCESS) return code;
  if (!buffer || bufferChars == 0) return ERROR_INVALID_PARAMETER;
  CopyText(ReasonText(reason), buffer, bufferChars);
  return ERROR_SUCCESS;
}

DWORD SimWlan::WlanGetProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void*,
                              char16_t** xml, DWORD* flags, DWORD* grantedAccess) {
  return OnAdapter("WlanGetProfile", client, adapter, [&](SimWlanAdapter& found) -> DWORD {
    if (!name || !xml) return ERROR_INVALID_PARAMETER;
    const Profile* profile = found.Profiles().Find(name);
    if (!profile) return ERROR_NOT_FOUND;
    if (profile->readError != ERROR_SUCCESS) return profile->readError;
    *xml = static_cast<char16_t*>(
        Give(profile->xml.c_str(), (profile->xml.size() + 1) * sizeof(char16_t)));
    if (flags) *flags = profile->flags;
    if (grantedAccess) *grantedAccess = profile->grantedAccess;
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanGetProfileList(HANDLE client, const GUID* adapter, void*,
                                  WLAN_PROFILE_INFO_LIST** list) {
  return OnAdapter("WlanGetProfileList", client, adapter, [&](SimWlanAdapter& found) {
    std::vector<WLAN_PROFILE_INFO> infos;
    for (const Profile& profile : found.Profiles().All()) {
      WLAN_PROFILE_INFO info;
      CopyText(profile.name, info.strProfileName, std::size(info.strProfileName));
      info.dwFlags = profile.flags;
      infos.push_back(info);
    }
    *list = GiveList<WLAN_PROFILE_INFO_LIST>(infos);
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanSetProfile(HANDLE client, const GUID* adapter, DWORD flags, LPCWSTR xml, LPCWSTR,
                              BOOL overwrite, void*, DWORD* reason) {
  return OnAdapter("WlanSetProfile", client, adapter, [&](SimWlanAdapter& found) -> DWORD {
    if (!xml || !reason) return ERROR_INVALID_PARAMETER;
    Profile profile;
    if (!ReadProfileXml(xml, &profile)) {
      *reason = WLAN_REASON_CODE_INVALID_PROFILE_SCHEMA;
      return ERROR_BAD_PROFILE;
    }
    *reason = WLAN_REASON_CODE_SUCCESS;
    const Profile* old = found.Profiles().Find(profile.name);
    if (old && old->flags == kProfileGroupPolicy) return ERROR_ACCESS_DENIED;
    if (old && !overwrite) return ERROR_ALREADY_EXISTS;
    profile.xml = xml;
    profile.flags = flags;
    found.AddProfile(std::move(profile));
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanDeleteProfile(HANDLE client, const GUID* adapter, LPCWSTR name, void*) {
  return OnAdapter("WlanDeleteProfile", client, adapter, [&](SimWlanAdapter& found) -> DWORD {
    if (!name) return ERROR_INVALID_PARAMETER;
    const Profile* profile = found.Profiles().Find(name);
    if (!profile) return ERROR_NOT_FOUND;
    if (profile->flags == kProfileGroupPolicy) return ERROR_ACCESS_DENIED;
    found.DeleteProfile(Cause::kProgram, name);
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanGetFilterList(HANDLE client, LONG type, void*, DOT11_NETWORK_LIST** list) {
  if (const DWORD code = m_Gate.Enter("WlanGetFilterList"); code != ERROR_SUCCESS) return code;
  if (!list || type < wlan_filter_list_type_gp_permit || type > wlan_filter_list_type_user_deny) {
    return ERROR_INVALID_PARAMETER;
  }
  return m_Machine.loop.WithLock([&]() -> DWORD {
    if (const DWORD code = Check(client); code != ERROR_SUCCESS) return code;
    std::vector<DOT11_NETWORK> networks;
    for (const Filter& filter : m_Machine.world.filters) {
      if (filter.type == type) networks.push_back({ToDot11(filter.ssid), filter.bssType});
    }
    *list = networks.empty() ? nullptr : GiveList<DOT11_NETWORK_LIST>(networks);
    return ERROR_SUCCESS;
  });
}

DWORD SimWlan::WlanIhvControl(HANDLE client, const GUID* adapter, LONG type, DWORD inputSize,
                              const void* input, DWORD outputSize, void* output, DWORD* returned) {
  constexpr DWORD kHeadBytes = 24;
  const auto serve = [&](SimWlanAdapter& found) -> DWORD {
    if (!found.Data().privateInterface || type != wlan_ihv_control_type_driver)
      return ERROR_NOT_SUPPORTED;
    if (!input || !output || !returned || inputSize < kHeadBytes || outputSize < inputSize)
      return ERROR_INVALID_PARAMETER;
    std::memmove(output, input, kHeadBytes);
    BYTE* const data = static_cast<BYTE*>(output) + kHeadBytes;
    for (DWORD i = 0; i < inputSize - kHeadBytes; ++i) data[i] = static_cast<BYTE>(i + 1);
    *returned = inputSize;
    return ERROR_SUCCESS;
  };
  return OnAdapter("WlanIhvControl", client, adapter, serve);
}

}  // namespace corvane::platform::sim
