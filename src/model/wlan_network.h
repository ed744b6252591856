#pragma once
#include <cstdint>
#include <map>

#include "model/wlan_bss_entry.h"
#include "model/wlan_profile_data.h"

namespace corvane {

// One network (SSID) of one adapter with its BSSes. Guarded by the interface lock.
class CWlanNetwork : public SmartObjEx<CWlanNetwork, SmartObj<>> {
 public:
  CWlanNetwork();
  const char* GetClassName() const override { return "CWlanNetwork"; }

  void Update(const platform::WLAN_AVAILABLE_NETWORK& record, int ifIndex);
  // *lqDelta is the change of the link quality of a known BSS, else 0. May be null.
  void AddOrUpdateBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies,
                      std::uint32_t cbIEs, const CWlanBssEntry::Facts& facts,
                      const ScoreContext& context, std::int32_t* lqDelta);
  void Dump(int index, const ScoreContext& context) const;

  int m_IfIndex = -1;
  platform::WLAN_AVAILABLE_NETWORK m_Available;
  WString m_SSIDW;
  WString m_BaseNetname;
  std::string m_SSIDA;
  std::map<MacAddress, CSmartPointer<CWlanBssEntry>> m_BssMap;
  CSmartPointer<CWlanProfileData> m_Profile;
  WString m_TempProfileXml;
};

using NetworkMap = std::map<WString, CSmartPointer<CWlanNetwork>, std::less<>>;

}  // namespace corvane
