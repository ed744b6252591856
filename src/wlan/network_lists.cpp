#include "wlan/network_lists.h"

#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "model/global_wireless_maps.h"
#include "monitors/network_list_manager.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/wlan_api.h"
#include "settings/global_config_container.h"
#include "wlan/air_watch.h"
#include "wlan/strongest.h"
#include "wlan/wlan_call.h"
#include "wlan/wlan_limits.h"

namespace corvane {

namespace {

using namespace platform;

constexpr std::int32_t kBssListError = 100;
constexpr std::size_t kEntriesAt = offsetof(WLAN_BSS_LIST, wlanBssEntries);
constexpr BOOL kSecurityEnabled = 1;
constexpr std::uint32_t kShortestElements = 2;  // fewer bytes count as none

bool IsPossible(const WLAN_BSS_LIST& list) {
  if (list.dwTotalSize < kEntriesAt || list.dwTotalSize > kMaxBssListBytes) return false;
  return list.dwNumberOfItems <= (list.dwTotalSize - kEntriesAt) / sizeof(WLAN_BSS_ENTRY);
}

// Finds the network of an access point: by the bytes of its SSID among those that are listed, else
// by its name among all.
class NetworkFinder {
 public:
  template <class Listed>
  NetworkFinder(const WLAN_AVAILABLE_NETWORK_LIST& list, const std::vector<Listed>& listed,
                const NetworkMap& all)
      : m_All(all) {
    const WLAN_AVAILABLE_NETWORK* const records = list.Network;
    m_Listed.reserve(listed.size());
    for (const Listed& one : listed)
      m_Listed.emplace(SsidView(records[one.place].dot11Ssid), one.network);
  }

  CWlanNetwork* Find(const DOT11_SSID& ssid) const {
    if (const auto at = m_Listed.find(SsidView(ssid)); at != m_Listed.end()) return at->second;
    const WString text = SsidText(ssid);
    if (const auto at = m_All.find(text); at != m_All.end()) return at->second.get();
    LOG_DEBUG(DBG(0), u"=====> ssid %s not found in g_WlanNetworkMap\n", text);
    return nullptr;
  }

 private:
  const NetworkMap& m_All;
  std::unordered_map<std::string_view, CWlanNetwork*> m_Listed;
};

// True: work() has written something to the log.
template <class Work>
bool Says(Work work) {
  const std::uint64_t before = log::Scope::Count();
  work();
  return log::Scope::Count() != before;
}

}  // namespace

WlanBuffer<WLAN_AVAILABLE_NETWORK_LIST> NetworkLists::GetAvailableNetworkList() {
  const auto client = m_Adapter.Client();
  const auto read = [&] {
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
  };
  return Contained(read, [&](const Failure& failure) {
    LOG_ERROR(u"[%i]CWlanInterface::GetAvailableNetworkList: %S: %S", m_Adapter.Idx(),
              failure.Kind(), failure.what);
    return WlanBuffer<WLAN_AVAILABLE_NETWORK_LIST>();
  });
}

WlanBuffer<WLAN_BSS_LIST> NetworkLists::GetNetworkBssList() {
  const auto client = m_Adapter.Client();
  const auto read = [&] {
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
  };
  return Contained(read, [&](const Failure& failure) {
    LOG_ERROR(u"[%i]CWlanInterface::GetNetworkBssList: %S: %S", m_Adapter.Idx(), failure.Kind(),
              failure.what);
    return WlanBuffer<WLAN_BSS_LIST>();
  });
}

void NetworkLists::Read(bool scanned, bool first, std::int32_t* found, std::int32_t* aux_error) {
  const CCritSecLock configLock(CGlobalConfigContainer::GetInstance().GetLock());
  const CCritSecLock lock(m_Air.Lock());
  AirInputs now;
  std::optional<WString> noInternet;
  try {
    if (!GatherLists(&now, found, aux_error)) return;
    noInternet = GatherScoring(&now);
  } catch (...) {
    Forget();
    ClearScanMarks();
    throw;
  }
  if (g_pAirWatch) g_pAirWatch->OnLists(m_Adapter.Idx(), scanned, now);
  if (!scanned && !first && m_Last && *m_Last == now) {
    Keep(now, noInternet);
  } else {
    Forget();
    const Merged merged = Merge(now, noInternet, scanned);
    m_Air.NoteChange();
    if (merged.repeats) Remember(std::move(now), merged);
  }
  if (const log::Open open(m_Adapter.Idx(), DBG(20)); first && open) {
    int number = 0;
    const ScoreContext context = m_Air.GetScoreContext();
    for (const auto& [ssid, network] : m_Networks) network->Dump(number++, context);
  }
}

bool NetworkLists::GatherLists(AirInputs* now, std::int32_t* found, std::int32_t* aux_error) {
  now->networks = GetAvailableNetworkList();
  if (!now->networks) {
    Forget();
    ClearScanMarks();
    LOG_DEBUG(DBG(0),
              u"[%i] CWlanInterface::DiscoverNetworksSynchronous: "
              u"GetAvailableNetworkList()/CGenericMalloc "
              u"Failure!\n",
              m_Adapter.Idx());
    return false;
  }
  GatherNetworks(now, found);
  now->entries = GetNetworkBssList();
  if (!now->entries) {
    *aux_error = kBssListError;
    LOG_ERROR(
        u"[%i]CWlanInterface::DiscoverNetworksSynchronous: GetNetworkBssList()/CGenericMalloc "
        u"Failure!",
        m_Adapter.Idx());
  }
  return true;
}

// A network that is new gets its place in the tree here.
void NetworkLists::GatherNetworks(AirInputs* now, std::int32_t* found) {
  now->air = m_Air.Version();
  const bool same =
      m_Last && m_Last->air == now->air && IsSame(m_Last->networks.get(), now->networks.get());
  if (!same) TakeNetworks(*now->networks.get());
  now->profiles.reserve(m_Listed.size());
  for (const Listed& listed : m_Listed) {
    if (FindProfile(*listed.network)) ++*found;
    const CWlanProfileData* const profile = listed.network->m_Profile.get();
    now->profiles.push_back(profile ? AirInputs::Profile{true, profile->m_bAutoConnect,
                                                         profile->m_bNonBroadcast,
                                                         profile->m_GrantedAccess}
                                    : AirInputs::Profile{});
  }
}

std::optional<WString> NetworkLists::GatherScoring(AirInputs* now) {
  now->heardBy = m_Air.GetScoreContext();
  if (!m_Link.IsConnected()) m_Link.ClearConnectedBssid();
  now->marked = m_Link.Seen();
  std::optional<WString> noInternet = m_Air.AskForLackOfInternet();
  now->scored = m_Link.Seen();
  now->scoredBy = m_Air.GetScoreContext().WithoutAverages();
  return noInternet;
}

NetworkLists::Merged NetworkLists::Merge(const AirInputs& now,
                                         const std::optional<WString>& noInternet, bool scanned) {
  ClearScanMarks();
  Merged merged;
  merged.said = Says([&] {
    if (now.entries) {
      merged.repeats = TakeBssEntries(now);
      if (scanned) BumpUnscannedCounter();
    }
    MarkConnected(now.marked);
    if (m_Adapter.Idx() == 0) CGlobalWirelessMaps::GetInstance().ComputeNoiseLevelArray(m_Networks);
  });
  m_Air.TellOfLackOfInternet(noInternet);
  merged.scoredBy = m_Air.GetScoreContext();  // knows the loads just worked out
  merged.said |= Says([&] { m_Air.ScoreEntries(now.scored, merged.scoredBy); });
  return merged;
}

void NetworkLists::Remember(AirInputs now, const Merged& merged) {
  now.air = m_Air.Version();
  now.scoredBy = merged.scoredBy.WithoutAverages();
  m_Last = std::move(now);
  m_LastWatch = merged.said ? std::nullopt : std::optional(LogWatch::Now());
}

// What a merge has said it says each time. One that is made for its lines alone leaves the run as
// it is.
void NetworkLists::Keep(const AirInputs& now, const std::optional<WString>& noInternet) {
  m_KeptTick = Os().clock.GetTickCount64();
  m_Air.NoteKept();
  if (m_LastWatch == LogWatch::Now()) {
    m_Air.TellOfLackOfInternet(noInternet);
    return;
  }
  const LogWatch watch = LogWatch::Now();
  const log::Scope scope;
  m_LastWatch = Merge(now, noInternet, false).said ? std::nullopt : std::optional(watch);
}

// The next merge is made whatever it finds. Until now each of those that were passed over has heard
// the elements of all that is listed.
void NetworkLists::Forget() {
  m_Last.reset();
  const std::uint64_t tick = std::exchange(m_KeptTick, 0);
  if (tick == 0) return;
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      if (entry->m_bss_scanned && entry->m_IEBlob) entry->m_IEBlob->m_ParsedAtTick = tick;
    }
  }
}

void NetworkLists::ClearScanMarks() {
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) entry->m_bss_scanned = false;
  }
}

void NetworkLists::TakeNetworks(const WLAN_AVAILABLE_NETWORK_LIST& list) {
  const WLAN_AVAILABLE_NETWORK* const records = list.Network;
  const auto taken = StrongestOf(list.dwNumberOfItems, kMaxNetworksTaken, [&](std::uint32_t i) {
    const DWORD flags = records[i].dwFlags;
    return std::tuple((flags & WLAN_AVAILABLE_NETWORK_CONNECTED) != 0,
                      (flags & WLAN_AVAILABLE_NETWORK_HAS_PROFILE) != 0,
                      records[i].wlanSignalQuality);
  });
  TellOfCut("networks", list.dwNumberOfItems, kMaxNetworksTaken, &m_bNetworksCut);
  m_Listed.clear();
  m_Listed.reserve(taken.size());
  for (const std::uint32_t i : taken) {
    const WLAN_AVAILABLE_NETWORK& record = records[i];
    if (record.dot11Ssid.uSSIDLength == 0) continue;
    const WString ssid = SsidText(record.dot11Ssid);
    const auto at = m_Networks.find(ssid);
    const bool isNew = at == m_Networks.end();
    const CSmartPointer<CWlanNetwork> network = isNew ? CWlanNetwork::CreateObject() : at->second;
    network->Update(record, m_Adapter.Idx());
    if (isNew) m_Networks.emplace(ssid, network);
    m_Listed.push_back({i, network.get()});
  }
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

bool NetworkLists::TakeBssEntries(const AirInputs& now) {
  const WLAN_BSS_LIST& list = *now.entries.get();
  const WLAN_BSS_ENTRY* const records = list.wlanBssEntries;
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(&list);
  const LinkSeen link = m_Link.Seen();
  const auto taken = StrongestOf(list.dwNumberOfItems, kMaxEntriesTaken, [&](std::uint32_t i) {
    return std::tuple(link.IsTo(ToMac(records[i].dot11Bssid)), records[i].uLinkQuality,
                      records[i].lRssi);
  });
  TellOfCut("access points", list.dwNumberOfItems, kMaxEntriesTaken, &m_bEntriesCut);
  const NetworkFinder finder(*now.networks.get(), m_Listed, m_Networks);
  bool allHaveElements = true;
  for (const std::uint32_t i : taken) {
    const WLAN_BSS_ENTRY& bss = records[i];
    if (bss.dot11Ssid.uSSIDLength == 0) continue;
    CWlanNetwork* const network = finder.Find(bss.dot11Ssid);
    if (!network) continue;
    // Element bytes that would lie outside the list are none.
    const std::uint64_t first = kEntriesAt + i * sizeof(WLAN_BSS_ENTRY) + bss.ulIeOffset;
    const bool inside = first + bss.ulIeSize <= list.dwTotalSize;
    const std::uint32_t size = inside ? bss.ulIeSize : 0;
    allHaveElements &= size >= kShortestElements;
    TakeBss(bss, inside ? bytes + first : nullptr, size, *network, link, now.heardBy);
  }
  return allHaveElements;
}

void NetworkLists::TakeBss(const WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
                           CWlanNetwork& network, const LinkSeen& link,
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
  if (!IsZero(bssid) && link.IsTo(bssid)) facts.pegLQ = link.quality;
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

void NetworkLists::MarkConnected(const LinkSeen& link) {
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, entry] : network->m_BssMap) {
      entry->m_bConnected = link.IsTo(bssid);
      if (entry->m_bConnected) entry->m_ever_connected = true;
    }
  }
}

}  // namespace corvane
