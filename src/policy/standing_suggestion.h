#pragma once
#include "rules/candidate_rules.h"
#include "settings/interface_config.h"
#include "store/value_names.h"

namespace corvane {

// The last suggestion, as the adapter's registry values tell of it.
inline StandingSuggestion ReadStandingSuggestion(const CQUAYInterfaceConfig& config) {
  StandingSuggestion out;
  out.known = config.GetString(value::kSuggestedNetworkSSID, &out.ssid) &&
              config.GetString(value::kSuggestedNetworkBSSID, &out.bssid) &&
              config.GetString(value::kConnectedBssid, &out.connectedBssid);
  return out;
}

}  // namespace corvane
