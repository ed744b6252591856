#pragma once
#include <cstdint>

#include "foundation/singleton.h"
#include "wlan/wlan_client.h"

namespace corvane {

// A claim by which a person is asked may stand as long as nobody answers.
enum class ClaimsThatCount : std::uint8_t { kAll, kUnasked };

// Holds the one WLAN client.
class CWifiClientContainer {
 public:
  static CWifiClientContainer& GetInstance() {
    return Singleton<CWifiClientContainer>::GetInstance();
  }

  // Makes the client where there is none, enumerates and publishes the adapters. Keeps failures to
  // itself: then the count is 0, and the next call tries again.
  void Initialize();
  void Shutdown();
  int GetCount();
  CSmartPointer<CWlanInterface> GetInterface(int position);  // in GUID order; null past the end
  CSmartPointer<CWlanInterface> GetInterfaceByGuid(const platform::GUID& guid);  // null: none
  bool AdapterCountChanged();
  // An adapter of a lower index is on the BSS of this one. Takes the adapters' interface locks, one
  // at a time: the caller holds none.
  bool IsBehindAnother(const CWlanInterface& adapter);
  // Another adapter is connected to this BSS or has reserved it by a claim that counts. Takes the
  // other adapters' interface locks, one at a time: the caller holds none. Throws on null.
  bool AvoidThisCandidateOnMyIF(CWlanBssEntry* bss, CWlanInterface* myInterface,
                                ClaimsThatCount claims = ClaimsThatCount::kAll);

 private:
  friend class Singleton<CWifiClientContainer>;
  CWifiClientContainer() = default;
  ~CWifiClientContainer() { Shutdown(); }
  CSmartPointer<CWlanClient> Client();
  CSmartPointer<CWlanClient> MakeClient();

  CCritSec m_Lock{"wifi client container", LockRank::kLeaf};
  CSmartPointer<CWlanClient> m_pClient;
};

}  // namespace corvane
