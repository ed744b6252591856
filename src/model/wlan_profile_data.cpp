#include "model/wlan_profile_data.h"

namespace corvane {

void CWlanProfileData::SetData(WStringView name, WStringView xml, std::uint32_t flags,
                               std::uint32_t grantedAccess) {
  constexpr std::size_t kShortestSearched = 41;
  m_Name = name;
  m_Xml = xml;
  m_bAutoConnect = m_bNonBroadcast = false;
  m_Flags = flags;
  m_GrantedAccess = grantedAccess;
  if (xml.size() < kShortestSearched) return;
  m_bAutoConnect = xml.find(u"<connectionMode>auto</connectionMode>") != WStringView::npos;
  m_bNonBroadcast = xml.find(u"<nonBroadcast>true</nonBroadcast>") != WStringView::npos;
}

}  // namespace corvane
