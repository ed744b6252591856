#include "corvane_client/setting_names.h"

#include "foundation/text.h"

namespace corvane::client {

const std::vector<SettingName>& SettingNames() {
  static const std::vector<SettingName> names = {
      {"Enabled", true, "on, off"},
      {"PreferPrivateNetwork", true, "on, off"},
      {"ForceAutoConnect", true, "on, off"},
      {"LatchToPrivate", true, "on, off"},
      {"GatewayRoaming", true, "on, off"},
      {"APScoreThreshold", true, "0 to 100"},
      {"LQCThreshold", true, "0 to 100"},
      {"ScanInterval", true, "10 to 3600 s"},
      {"PassiveSuggestMode", true, "0 autoswitch, 1 event, 2 popup"},
      {"ServiceEnable", false, "on, off"},
      {"RoamingEnabled", false, "on, off"},
      {"SCOREDIFFPCT", false, "0 to 100"},
      {"IgnoreVPN", false, "on, off"},
      {"RTAudioMode", false, "0, 1, 2"},
      {"RTAudioModeMbps", false, "not 0"},
      {"POSTMode", false, "0, 1, 2"},
      {"DBWMEnable", false, "on, off"},
      {"DBWMProbeMonthBudgetMB", false, "a number"},
      {"IDET", false, "on, off"},
      {"PalisadeOptimizer", false, "on, off"},
      {"TelemetryConnectionsCSVFileSizeMB", false, "a number, 0 for no history"},
      {"Survey1", false, "on, off"},
      {"Survey2", false, "on, off"},
      {"Survey3", false, "on, off"}};
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
