#pragma once
// The stored profiles of an adapter, and those that a client hands over with a connect: these are
// used at once and stored when the connection ends.

#include <vector>

#include "model/wlan_network.h"
#include "wlan/adapter_identity.h"

namespace corvane {

// Each operation takes the interface lock where it reads the networks; none blocks for long. No
// failure is told other than by the result.
class AdapterProfiles {
 public:
  AdapterProfiles(const AdapterIdentity& adapter, CCritSec& interfaceLock,
                  const NetworkMap& networks)
      : m_Adapter(adapter), m_Lock(interfaceLock), m_Networks(networks) {}

  // The maps of all adapters and the text that clients read.
  void RefreshProfiledAPList();   // rebuilds only when a name or the count differs
  void EnumerateALLAPProfiles();  // always rebuilds
  CSmartPointer<CWlanProfileData> GetProfileDataHelper(const WString& name);  // null: none
  // *hidden is left alone for a network without a profile.
  bool GetProfileProperties(const WString& ssid, bool* hidden);
  [[nodiscard]] bool DeleteWlanProfile(const WString& name);

  // Queues the XML text of the connection that now stands, and keeps it with its network.
  void QueueTempProfile(const platform::WLAN_CONNECTION_ATTRIBUTES& attrs,
                        const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  // Keeps the text with the network, unless that has a profile.
  void SaveTempProfileToNetwork(const WString& ssid,
                                const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  bool GetTempProfile(WStringView ssid, WString* xml);
  std::uint64_t TempProfilesKept() const { return m_TempProfilesKept; }  // so far
  void SaveTempProfiles();  // stores the queued texts as profiles, each once

 private:
  [[nodiscard]] bool ListProfiles(std::vector<WString>* names);
  void RebuildProfiledNetworks(const char* operation, const std::vector<WString>& names,
                               bool collectHidden);

  const AdapterIdentity& m_Adapter;
  CCritSec& m_Lock;
  const NetworkMap& m_Networks;
  std::atomic<std::uint64_t> m_TempProfilesKept{0};
  std::vector<WString> m_TempProfilesToSave;  // XML texts, under m_Lock
};

}  // namespace corvane
