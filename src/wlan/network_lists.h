#pragma once
// The platform's two lists, merged into the tree of networks and BSS entries.

#include <optional>
#include <vector>

#include "foundation/log_lines.h"
#include "wlan/adapter_air.h"
#include "wlan/adapter_profiles.h"
#include "wlan/air_inputs.h"

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
  // unreadable. A merge that would write what stands there already is passed over (air_inputs.h).
  // Of a list beyond its limit (wlan_limits.h) the connection and the strongest count.
  void Read(bool scanned, bool first, std::int32_t* found, std::int32_t* aux_error);

 private:
  struct Listed {
    std::uint32_t place = 0;  // in the platform's list
    CWlanNetwork* network = nullptr;
  };
  struct Merged {
    bool repeats = false;  // the lists were there, and no entry's elements grow old
    bool said = false;     // to the log
    ScoreContext scoredBy;
  };
  // The gates of the log.
  struct LogWatch {
    static LogWatch Now() { return {g_DebugMask, g_DebugIFMask}; }
    std::uint64_t lines = 0;
    std::uint32_t adapters = 0;
    friend bool operator==(const LogWatch&, const LogWatch&) = default;
  };

  WlanBuffer<platform::WLAN_AVAILABLE_NETWORK_LIST> GetAvailableNetworkList();
  WlanBuffer<platform::WLAN_BSS_LIST> GetNetworkBssList();
  // What is asked of others for a merge, in the order in which it is asked. GatherLists is false
  // without a list of networks; GatherScoring gives the network of the connection when that is
  // known to have no internet.
  [[nodiscard]] bool GatherLists(AirInputs* now, std::int32_t* found, std::int32_t* aux_error);
  void GatherNetworks(AirInputs* now, std::int32_t* found);
  std::optional<WString> GatherScoring(AirInputs* now);
  Merged Merge(const AirInputs& now, const std::optional<WString>& noInternet, bool scanned);
  void Remember(AirInputs now, const Merged& merged);
  void Keep(const AirInputs& now, const std::optional<WString>& noInternet);
  void Forget();
  void ClearScanMarks();
  void TakeNetworks(const platform::WLAN_AVAILABLE_NETWORK_LIST& list);
  bool FindProfile(CWlanNetwork& network);
  // False: some entry has no elements, and those that it had before grow old.
  bool TakeBssEntries(const AirInputs& now);
  void TakeBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies, std::uint32_t cbIEs,
               CWlanNetwork& network, const LinkSeen& link, const ScoreContext& context);
  void BumpUnscannedCounter();
  void MarkConnected(const LinkSeen& link);
  // Once for a list that is cut, and anew after one that was not.
  void TellOfCut(const char* what, std::uint32_t listed, std::uint32_t limit, bool* told);

  const AdapterIdentity& m_Adapter;
  AdapterLink& m_Link;
  AdapterAir& m_Air;
  AdapterProfiles& m_Profiles;
  NetworkMap& m_Networks{m_Air.Networks()};
  std::vector<Listed> m_Listed;         // of the newest list of networks
  std::optional<AirInputs> m_Last;      // of the newest merge, where the same would come out again
  std::optional<LogWatch> m_LastWatch;  // under which that merge said nothing
  std::uint64_t m_KeptTick = 0;  // at which a merge was last passed over; 0: not since the last
  bool m_bNetworksCut = false, m_bEntriesCut = false;  // the last list was, and that is told
};

}  // namespace corvane
