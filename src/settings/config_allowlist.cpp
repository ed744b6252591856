#include "settings/config_allowlist.h"

#include "store/ap_list_json.h"
#include "store/value_names.h"

namespace corvane {

CConfigAllowlist::CConfigAllowlist() : CConfigApList(kKind) {}

const CConfigApList::Kind CConfigAllowlist::kKind = {"CConfigAllowlist",
                                                     "MoveAllowlistAPFileToBackup", "allowlist_ap",
                                                     value::kAllowlistJson, &ReadAllowRows};

}  // namespace corvane
