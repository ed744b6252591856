#include "platform/sim/world/connect_rules.h"

namespace corvane::platform::sim {

namespace {

enum class Kind { kOpen, kShared, kPersonal, kEnterprise };

Kind KindOf(LONG auth) {
  switch (auth) {
    case DOT11_AUTH_ALGO_WPA_PSK:
    case DOT11_AUTH_ALGO_RSNA_PSK:
    case DOT11_AUTH_ALGO_WPA3_SAE:
      return Kind::kPersonal;
    case DOT11_AUTH_ALGO_WPA:
    case DOT11_AUTH_ALGO_RSNA:
    case DOT11_AUTH_ALGO_WPA3:
      return Kind::kEnterprise;
    case DOT11_AUTH_ALGO_80211_SHARED_KEY:
      return Kind::kShared;
    default:
      return Kind::kOpen;
  }
}

}  // namespace

bool Agree(const Security& ours, const Security& theirs) {
  return KindOf(ours.auth) == KindOf(theirs.auth) && ours.Enabled() == theirs.Enabled();
}

bool KeyFits(const Security& ours, const Security& theirs) {
  return !theirs.Enabled() || theirs.key.empty() || ours.key == theirs.key;
}

DWORD FilterReason(const std::vector<Filter>& filters, const std::string& ssid) {
  bool permits = false;
  bool permitted = false;
  for (const Filter& filter : filters) {
    const bool named = filter.ssid == ssid;
    if (filter.type == wlan_filter_list_type_gp_deny && named) return WLAN_REASON_CODE_GP_DENIED;
    if (filter.type == wlan_filter_list_type_user_deny && named)
      return WLAN_REASON_CODE_USER_DENIED;
    if (filter.type == wlan_filter_list_type_gp_permit) permits = true, permitted |= named;
  }
  return permits && !permitted ? WLAN_REASON_CODE_GP_DENIED : WLAN_REASON_CODE_SUCCESS;
}

}  // namespace corvane::platform::sim
