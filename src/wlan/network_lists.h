#pragma once
// The platform's two lists, merged into the tree of networks and BSS entries.

#include "foundation/generic_malloc.h"
#include "wlan/adapter_air.h"
#include "wlan/adapter_profiles.h"

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
  // unreadable.
  void Read(bool scanned, bool first, std::int32_t* found, std::int32_t* aux_error);

 private:
  CSmartPointer<CGenericMalloc> GetAvailableNetworkList();
  CSmartPointer<CGenericMalloc> GetNetworkBssList();
  void ClearScanMarks();
  void TakeNetworks(const CGenericMalloc& list, std::int32_t* found);
  bool FindProfile(CWlanNetwork& network);
  void TakeBssEntries(const CGenericMalloc& list);
  void TakeBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
               const MacAddress& connected, const ScoreContext& context);
  void BumpUnscannedCounter();
  void MarkConnected();

  const AdapterIdentity& m_Adapter;
  AdapterLink& m_Link;
  AdapterAir& m_Air;
  AdapterProfiles& m_Profiles;
  NetworkMap& m_Networks{m_Air.Networks()};
};

}  // namespace corvane
