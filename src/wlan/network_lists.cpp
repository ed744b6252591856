#include "wlan/network_lists.h"

#include <tuple>

#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "monitors/network_list_manager.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "wlan/strongest.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::int32_t kBssListError = 100;
constexpr std::size_t kEntriesAt = offsetof(WLAN_BSS_LIST, wlanBssEntries);
constexpr BOOL kSecurityEnabled = 1;

bool IsPossible(const WLAN_BSS_LIST& list) {
  if (list.dwTotalSize < kEntriesAt || list.dwTotalSize > kMaxBssListBytes) return false;
  return list.dwNumberOfItems <= (list.dwTotalSize - kEntriesAt) / sizeof(WLAN_BSS_ENTRY);
}

}  // namespace

WlanBuffer<WLAN_AVAILABLE_NETWORK_LIST> NetworkLists::GetAvailableNetworkList() {
  const auto client = m_Adapter.Client();
  try {
    WlanBuffer<WLAN_AVAILABLE_NETWORK_LIST> list;
    DWORD result = CodeOfCall("CWlanInterface", "WlanGetAvailableNetworkList", [&] {
      return Os().wlan.WlanGetAvailableNetworkList(client.Handle(), &m_Adapter.Guid(), 0, nullptr,
                                                   list.Out());
    });
    if (result == ERROR_SUCCESS && list && list->dwNumberOfItems > kMaxBelievedNetworks) {
      result = ERROR_INVALID_DATA;
    }
    if (result != ERROR_SUCCESS) {
      LOG_ERROR(
          u"[%i]CWlanInterface::GetAvailableNetworkList: WlanGetAvailableNetworkList FAILED %lu",
          m_Adapter.Idx(), result);
      throw Exception("WlanGetAvailableNetworkList() failed: %i", result);
    }
    if (!list) throw Exception("WlanGetAvailableNetworkList() failed: pData is NULL");
    return list;
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::GetAvailableNetworkList: Exception: %S", m_Adapter.Idx(),
              e.what());
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::GetAvailableNetworkList: std:exception: %S", m_Adapter.Idx(),
              e.what());
  }
  return {};
}

WlanBuffer<WLAN_BSS_LIST> NetworkLists::GetNetworkBssList() {
  const auto client = m_Adapter.Client();
  try {
    WlanBuffer<WLAN_BSS_LIST> list;
    DWORD result = CodeOfCall("CWlanInterface", "WlanGetNetworkBssList", [&] {
      return Os().wlan.WlanGetNetworkBssList(client.Handle(), &m_Adapter.Guid(), nullptr,
                                             dot11_BSS_type_any, kSecurityEnabled, nullptr,
                                             list.Out());
    });
    if (result == ERROR_SUCCESS && list && !IsPossible(*list.get())) result = ERROR_INVALID_DATA;
    if (result != ERROR_SUCCESS) {
      LOG_ERROR(u"[%i]CWlanInterface::GetNetworkBssList:: WlanGetNetworkBssList FAILED %lu",
                m_Adapter.Idx(), result);
      throw Exception("WlanGetNetworkBssList() failed: %i", result);
    }
    if (!list) throw Exception("WlanGetNetworkBssList() failed: pData is NULL");
    return list;
  } catch (const Exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::GetNetworkBssList: Exception: %S", m_Adapter.Idx(), e.what());
  } catch (const std::exception& e) {
    LOG_ERROR(u"[%i]CWlanInterface::GetNetworkBssList: std:exception: %S", m_Adapter.Idx(),
              e.what());
  }
  return {};
}

void NetworkLists::Read(bool scanned, bool first, std::int32_t* found, std::int32_t* aux_error) {
  const CCritSecLock configLock(CGlobalConfigContainer::GetInstance().GetLock());
  const CCritSecLock lock(m_Air.Lock());
  ClearScanMarks();
  if (const auto networks = GetAvailableNetworkList()) {
    const ListedNetworks listed = TakeNetworks(*networks.get(), found);
    if (const auto entries = GetNetworkBssList()) {
      TakeBssEntries(*entries.get(), listed);
      if (scanned) BumpUnscannedCounter();
    } else {
      *aux_error = kBssListError;
      LOG_ERROR(
          u"[%i]CWlanInterface::DiscoverNetworksSynchronous: GetNetworkBssList()/CGenericMalloc "
          u"Failure!",
          m_Adapter.Idx());
    }
    MarkConnected();
    if (m_Adapter.Idx() == 0) CGlobalWirelessMaps::GetInstance().ComputeNoiseLevelArray(m_Networks);
    m_Air.UpdateAllScores();
    if (const log::Open open(m_Adapter.Idx(), DBG(20)); first && open) {
      int number = 0;
      const ScoreContext context = m_Air.GetScoreContext();
      for (const auto& [ssid, network] : m_Networks) network->Dump(number++, context);
    }
  } else {
    LOG_DEBUG(DBG(0),
              u"[%i] CWlanInterface::DiscoverNetworksSynchronous: "
              u"GetAvailableNetworkList()/CGenericMalloc "
              u"Failure!\n",
              m_Adapter.Idx());
  }
}

void NetworkLists::ClearScanMarks() {
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entry->m_bss_scanned = false;
  }
}

NetworkLists::ListedNetworks NetworkLists::TakeNetworks(const WLAN_AVAILABLE_NETWORK_LIST& list,
                                                        std::int32_t* found) {
  const WLAN_AVAILABLE_NETWORK* const records = list.Network;
  const auto taken = StrongestOf(list.dwNumberOfItems, kMaxNetworksTaken, [&](std::uint32_t i) {
    const DWORD flags = records[i].dwFlags;
    return std::tuple((flags & WLAN_AVAILABLE_NETWORK_CONNECTED) != 0,
                      (flags & WLAN_AVAILABLE_NETWORK_HAS_PROFILE) != 0,
                      records[i].wlanSignalQuality);
  });
  TellOfCut("networks", list.dwNumberOfItems, kMaxNetworksTaken, &m_bNetworksCut);
  ListedNetworks listed;
  listed.reserve(taken.size());
  for (const std::uint32_t i : taken) {
    const WLAN_AVAILABLE_NETWORK& record = records[i];
    if (record.dot11Ssid.uSSIDLength == 0) continue;
    const WString ssid = SsidText(record.dot11Ssid);
    const auto at = m_Networks.find(ssid);
    const bool isNew = at == m_Networks.end();
    const CSmartPointer<CWlanNetwork> network = isNew ? CWlanNetwork::CreateObject() : at->second;
    network->Update(record, m_Adapter.Idx());
    if (isNew) m_Networks.emplace(ssid, network);
    listed.emplace(SsidView(record.dot11Ssid), network.get());
    if (FindProfile(*network)) ++*found;
  }
  return listed;
}

void NetworkLists::TellOfCut(const char* what, std::uint32_t listed, std::uint32_t limit,
                             bool* told) {
  const bool isCut = listed > limit;
  if (isCut && !*told)
    LOG_INFO(u"[%i] %lu %S are listed, of which the strongest %lu count", m_Adapter.Idx(), listed,
             what, limit);
  *told = isCut;
}

// Under its own name, or under another one that the system's network list has for it.
bool NetworkLists::FindProfile(CWlanNetwork& network) {
  network.m_Profile = m_Profiles.GetProfileDataHelper(network.m_SSIDW);
  if (network.m_Profile) return true;
  std::list<WString> names;
  if (auto* const list = CNetworkListManager::Find())
    list->GetNameForBaseNetname(network.m_SSIDW, &names);
  for (const WString& name : names) {
    network.m_Profile = m_Profiles.GetProfileDataHelper(name);
    if (!network.m_Profile) continue;
    LOG_DEBUG(DBG(1),
              u"\n[%i] CWlanInterface::DiscoverNetworksSynchronous: FOUND PROFILE USING OTHER NAME "
              u"[%s]\n",
              m_Adapter.Idx(), name);
    return true;
  }
  return false;
}

void NetworkLists::TakeBssEntries(const WLAN_BSS_LIST& list, const ListedNetworks& listed) {
  const WLAN_BSS_ENTRY* const records = list.wlanBssEntries;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&list);
  const MacAddress connected = m_Link.IsConnected() ? m_Link.ConnectedBssid() : MacAddress{};
  const auto taken = StrongestOf(list.dwNumberOfItems, kMaxEntriesTaken, [&](std::uint32_t i) {
    return std::tuple(ToMac(records[i].dot11Bssid) == connected, records[i].uLinkQuality,
                      records[i].lRssi);
  });
  TellOfCut("access points", list.dwNumberOfItems, kMaxEntriesTaken, &m_bEntriesCut);
  const ScoreContext context = m_Air.GetScoreContext();
  for (const std::uint32_t i : taken) {
    const WLAN_BSS_ENTRY& bss = records[i];
    if (bss.dot11Ssid.uSSIDLength == 0) continue;
    CWlanNetwork* const network = NetworkOf(bss.dot11Ssid, listed);
    if (!network) continue;
    // Element bytes that would lie outside the list are none.
    const std::uint64_t first = kEntriesAt + i * sizeof(WLAN_BSS_ENTRY) + bss.ulIeOffset;
    const bool inside = first + bss.ulIeSize <= list.dwTotalSize;
    TakeBss(bss, inside ? bytes + first : nullptr, inside ? bss.ulIeSize : 0, *network, connected,
            context);
  }
}

CWlanNetwork* NetworkLists::NetworkOf(const DOT11_SSID& ssid, const ListedNetworks& listed) {
  if (const auto at = listed.find(SsidView(ssid)); at != listed.end()) return at->second;
  const WString text = SsidText(ssid);
  if (const auto at = m_Networks.find(text); at != m_Networks.end()) return at->second.get();
  LOG_DEBUG(DBG(0), u"=====> ssid %s not found in g_WlanNetworkMap\n", text);
  return nullptr;
}

void NetworkLists::TakeBss(const WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
                           CWlanNetwork& network, const MacAddress& connected,
                           const ScoreContext& context) {
  const MacAddress bssid = ToMac(bss.dot11Bssid);
  CWlanBssEntry::Facts facts;
  if (const CWlanProfileData* profile = network.m_Profile.get()) {
    facts.grantedAccess = profile->m_GrantedAccess;
    facts.autoConnect = profile->m_bAutoConnect;
    facts.nonBroadcast = profile->m_bNonBroadcast;
  }
  facts.hasTempProfile = !network.m_TempProfileXml.empty();
  facts.securityEnabled = network.m_Available.bSecurityEnabled;
  facts.authAlgorithm = network.m_Available.dot11DefaultAuthAlgorithm;
  if (!IsZero(connected) && bssid == connected) {
    facts.pegLQ = m_Link.ConnAttrs().wlanAssociationAttributes.wlanSignalQuality;
  }
  // Only a new entry takes over what is remembered of its connectivity.
  if (!network.m_BssMap.contains(bssid)) {
    facts.internetState = m_Air.RememberedInternet(network.m_SSIDW, MacText(bssid));
  }
  network.AddOrUpdateBss(bss, ies, cbIEs, facts, context, nullptr);
}

void NetworkLists::BumpUnscannedCounter() {
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->m_bss_scanned) continue;
      ++entry->m_unscanned_count;
      LOG_DEBUG(
          DBG(37),
          u"BumpUnscannedCounter[%s %s][m_bss_scanned=%i, m_unscanned_count=%i]: BUMPED UNSCANNED "
          u"COUNTER!\n",
          entry->m_SSIDW, entry->m_BSSIDText, entry->m_bss_scanned, entry->m_unscanned_count);
    }
  }
}

void NetworkLists::MarkConnected() {
  const bool isConnected = m_Link.IsConnected();
  if (!isConnected) m_Link.ClearConnectedBssid();
  const MacAddress connected = m_Link.ConnectedBssid();
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      entry->m_bConnected = isConnected && bssid == connected;
      if (entry->m_bConnected) entry->m_ever_connected = true;
    }
  }
}

}  // namespace corvane
