#include "corvane_client/setting_names.h"

#include "foundation/text.h"
#include "store/value_names.h"
#include "store/value_table.h"

namespace corvane::client {

namespace {

SettingName Of(ValueKey key, WStringView name) {
  const ValueRow* row = FindValue(key, name);
  return {Narrow(name), key == ValueKey::kAdapter, row ? RangeText(*row) : std::string()};
}

}  // namespace

const std::vector<SettingName>& SettingNames() {
  static const std::vector<SettingName> names = {
      Of(ValueKey::kAdapter, value::kEnabled),
      Of(ValueKey::kAdapter, value::kPreferPrivateNetwork),
      Of(ValueKey::kAdapter, value::kForceAutoConnect),
      Of(ValueKey::kAdapter, value::kLatchToPrivate),
      Of(ValueKey::kAdapter, value::kGatewayRoaming),
      Of(ValueKey::kAdapter, value::kAPScoreThreshold),
      Of(ValueKey::kAdapter, value::kLQCThreshold),
      Of(ValueKey::kAdapter, value::kScanInterval),
      Of(ValueKey::kAdapter, value::kPassiveSuggestMode),
      Of(ValueKey::kHome, value::kServiceEnable),
      Of(ValueKey::kHome, value::kRoamingEnabled),
      Of(ValueKey::kHome, value::kSCOREDIFFPCT),
      Of(ValueKey::kHome, value::kPolicyProfile),
      Of(ValueKey::kHome, value::kRecordAirMB),
      Of(ValueKey::kHome, value::kIgnoreVPN),
      Of(ValueKey::kHome, value::kRTAudioMode),
      Of(ValueKey::kHome, value::kRTAudioModeMbps),
      {"POSTMode", false, "0, 1, 2"},
      Of(ValueKey::kHome, value::kDBWMEnable),
      Of(ValueKey::kHome, value::kDBWMProbeMonthBudgetMB),
      Of(ValueKey::kHome, value::kIDET),
      Of(ValueKey::kHome, value::kPalisadeOptimizer),
      Of(ValueKey::kHome, value::kTelemetryConnectionsCSVFileSizeMB),
      Of(ValueKey::kHome, value::kSurvey1),
      Of(ValueKey::kHome, value::kSurvey2),
      Of(ValueKey::kHome, value::kSurvey3),
  };
  return names;
}

const SettingName* FindSetting(const std::string& name) {
  const std::string lower = ToLower(std::string_view(name));
  for (const SettingName& one : SettingNames()) {
    if (ToLower(std::string_view(one.name)) == lower) return &one;
  }
  return nullptr;
}

}  // namespace corvane::client
