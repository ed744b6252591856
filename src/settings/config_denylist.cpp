#include "settings/config_denylist.h"

#include "settings/global_config_container.h"
#include "store/ap_list_json.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kFilterDenied = 2;

}  // namespace

CConfigDenylist::CConfigDenylist(CQUAYInterfaceConfig& owner) : CConfigApList(owner, kKind) {}

const CConfigApList::Kind CConfigDenylist::kKind = {"CConfigDenylist", "MoveDenylistAPFileToBackup",
                                                    "denylist_ap", value::kDenylistJson,
                                                    &ReadDenyRows};

void CConfigDenylist::ClearSuggestions() {
  for (const ApListRow& row : Rows()) {
    const WString bssid = Widen(row.bssid);
    Owner().m_Popup.ClearPopupSuggestedAP_If_Equal(row.ssid, bssid);
    Owner().m_Etw.ClearSuggestedAP_If_Equal(row.ssid, bssid);
  }
}

bool IsDenied(const ApListRows& rows, WStringView ssid, const MacAddress& mac) {
  return IsListed(rows, ssid, mac) ||
         CGlobalConfigContainer::GetInstance().GetNetworkFilter(ssid) == kFilterDenied;
}

}  // namespace corvane
