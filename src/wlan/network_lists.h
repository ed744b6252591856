#pragma once
// The platform's two lists, merged into the tree of networks and BSS entries.

#include <string_view>
#include <unordered_map>

#include "wlan/adapter_air.h"
#include "wlan/adapter_profiles.h"
#include "wlan/wlan_buffer.h"

namespace corvane {

// On the adapter's worker.
class NetworkLists {
 public:
  NetworkLists(const AdapterIdentity& adapter, AdapterLink& link, AdapterAir& air,
               AdapterProfiles& profiles)
      : m_Adapter(adapter), m_Link(link), m_Air(air), m_Profiles(profiles) {}

  // Reads both lists under the global and the interface lock, and scores what is heard. `scanned`:
  // a scan has just run, so what is missing counts as not heard. Raises *found by the listed
  // networks that have a profile; *aux_error is written only with 100, when the BSS list is
  // unreadable. Of a list beyond its limit (wlan_limits.h) the connection and the strongest count.
  void Read(bool scanned, bool first, std::int32_t* found, std::int32_t* aux_error);

 private:
  // The listed networks by the bytes of their SSIDs, which lie in the platform's list.
  using ListedNetworks = std::unordered_map<std::string_view, CWlanNetwork*>;

  WlanBuffer<platform::WLAN_AVAILABLE_NETWORK_LIST> GetAvailableNetworkList();
  WlanBuffer<platform::WLAN_BSS_LIST> GetNetworkBssList();
  void ClearScanMarks();
  ListedNetworks TakeNetworks(const platform::WLAN_AVAILABLE_NETWORK_LIST& list,
                              std::int32_t* found);
  bool FindProfile(CWlanNetwork& network);
  void TakeBssEntries(const platform::WLAN_BSS_LIST& list, const ListedNetworks& listed);
  CWlanNetwork* NetworkOf(const platform::DOT11_SSID& ssid, const ListedNetworks& listed);
  void TakeBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
               CWlanNetwork& network, const MacAddress& connected, const ScoreContext& context);
  // Once for a list that is cut, and anew after one that was not.
  void TellOfCut(const char* what, std::uint32_t listed, std::uint32_t limit, bool* told);
  void BumpUnscannedCounter();
  void MarkConnected();

  const AdapterIdentity& m_Adapter;
  AdapterLink& m_Link;
  AdapterAir& m_Air;
  AdapterProfiles& m_Profiles;
  NetworkMap& m_Networks{m_Air.Networks()};
  bool m_bNetworksCut = false, m_bEntriesCut = false;  // the last list was, and that is told
};

}  // namespace corvane
