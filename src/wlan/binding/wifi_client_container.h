#pragma once
#include "core/foundation/singleton.h"
#include "wlan/binding/wlan_client.h"

namespace corvane {

// Holds the one WLAN client.
class CWifiClientContainer {
 public:
  static CWifiClientContainer& GetInstance() { return Singleton<CWifiClientContainer>::GetInstance(); }

  void Initialize();  // keeps failures to itself: then the count is 0
  void Shutdown();
  int GetCount();
  CSmartPointer<CWlanInterface> GetInterface(int position);  // null past the end
  bool AdapterCountChanged();
  // Another adapter is connected to this BSS or has reserved it.
  bool AvoidThisCandidateOnMyIF(CWlanBssEntry* bss, CWlanInterface* myInterface);

 private:
  friend class Singleton<CWifiClientContainer>;
  CWifiClientContainer() = default;
  CSmartPointer<CWlanClient> Client();

  CCritSec m_Lock{"wifi client container", LockRank::kLeaf};
  CSmartPointer<CWlanClient> m_pClient;
};

}  // namespace corvane
