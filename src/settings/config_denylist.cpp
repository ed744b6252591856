#include "settings/config_denylist.h"

#include "report/etw_trellis.h"
#include "report/popup_suggestion.h"
#include "score/network_facts.h"
#include "settings/global_config_container.h"
#include "store/ap_list_json.h"
#include "store/value_names.h"

namespace corvane {

CConfigDenylist::CConfigDenylist() : CConfigApList(kKind) {}

const CConfigApList::Kind CConfigDenylist::kKind = {"CConfigDenylist", "MoveDenylistAPFileToBackup",
                                                    "denylist_ap", value::kDenylistJson,
                                                    &ReadDenyRows};

void CConfigDenylist::ClearSuggestions(CPopupSuggestion& popup, CEtwTrellis& events) const {
  for (const ApListRow& row : Rows()) {
    const WString bssid = Widen(row.bssid);
    popup.ClearPopupSuggestedAP_If_Equal(row.ssid, bssid);
    events.ClearSuggestedAP_If_Equal(row.ssid, bssid);
  }
}

bool IsDenied(const ApListRows& rows, WStringView ssid, const MacAddress& mac) {
  return IsListed(rows, ssid, mac) ||
         CGlobalConfigContainer::GetInstance().GetNetworkFilter(ssid) == kFilterDenied;
}

}  // namespace corvane
