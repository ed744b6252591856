#include "corvane_client/setting_names.h"

#include "foundation/text.h"
#include "store/value_names.h"

namespace corvane::client {

const std::vector<SettingName>& SettingNames() {
  static const std::vector<SettingName> names = {
      {Narrow(value::kEnabled), true, "on, off"},
      {Narrow(value::kPreferPrivateNetwork), true, "on, off"},
      {Narrow(value::kForceAutoConnect), true, "on, off"},
      {Narrow(value::kLatchToPrivate), true, "on, off"},
      {Narrow(value::kGatewayRoaming), true, "on, off"},
      {Narrow(value::kAPScoreThreshold), true, "0 to 100"},
      {Narrow(value::kLQCThreshold), true, "0 to 100"},
      {Narrow(value::kScanInterval), true, "10 to 3600 s"},
      {Narrow(value::kPassiveSuggestMode), true, "0 autoswitch, 1 event, 2 popup"},
      {Narrow(value::kServiceEnable), false, "on, off"},
      {Narrow(value::kRoamingEnabled), false, "on, off"},
      {Narrow(value::kSCOREDIFFPCT), false, "0 to 100"},
      {Narrow(value::kIgnoreVPN), false, "on, off"},
      {Narrow(value::kRTAudioMode), false, "0, 1, 2"},
      {Narrow(value::kRTAudioModeMbps), false, "not 0"},
      {"POSTMode", false, "0, 1, 2"},
      {Narrow(value::kDBWMEnable), false, "on, off"},
      {Narrow(value::kDBWMProbeMonthBudgetMB), false, "a number"},
      {Narrow(value::kIDET), false, "on, off"},
      {Narrow(value::kPalisadeOptimizer), false, "on, off"},
      {Narrow(value::kTelemetryConnectionsCSVFileSizeMB), false, "a number, 0 for no history"},
      {Narrow(value::kSurvey1), false, "on, off"},
      {Narrow(value::kSurvey2), false, "on, off"},
      {Narrow(value::kSurvey3), false, "on, off"}};
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
