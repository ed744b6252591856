#pragma once
#include <cstdint>
#include <string>

#include "foundation/smart_obj.h"
#include "foundation/text.h"

namespace corvane {

// One stored WLAN profile.
class CWlanProfileData : public SmartObjEx<CWlanProfileData, SmartObj<>> {
 public:
  const char* GetClassName() const override { return "CWlanProfileData"; }
  virtual void SetData(WStringView name, WStringView xml, std::uint32_t flags,
                       std::uint32_t grantedAccess);

  WString m_Name;
  std::string m_SSIDA;  // filled on demand from the name
  WString m_Xml;
  bool m_bAutoConnect = false;
  bool m_bNonBroadcast = false;
  std::uint32_t m_Flags = 0;
  std::uint32_t m_GrantedAccess = 0;
};

}  // namespace corvane
