#include "policy/round.h"

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/policy.h"
#include "settings/global_config_container.h"

namespace corvane {

RoundSettings::RoundSettings(const CQUAYInterfaceConfig& config) {
  const auto& global = CGlobalConfigContainer::GetInstance();
  enabled = config.m_Enabled;
  serviceEnabled = global.m_bServiceEnable;
  monitorWhileDisabled = global.m_bMonitorWhileDisabled;
  passive = config.m_bPassive;
  popup = passive && config.m_bPopupMode;
  forceAutoConnect = config.m_ForceAutoConnect;
  preferPrivate = config.m_PreferPrivateNetwork;
  networkSwitching = config.m_network_switching;
  allowlistEnabled = global.m_bAllowlistEnabled;
  decideStale = global.m_bULScan;
  pilot = global.m_bEnablePilot;
  roaming = config.IsRoamingEnabled();
  gatewayRoaming = config.IsGatewayRoaming();
  qualityThreshold = config.m_LQCThreshold;
  scorePercent = global.m_ScoreDiffPct;
}

Round::Round(CWlanInterface& wlan)
    : adapter(wlan),
      memory(wlan.Policy()),
      profile(wlan.Profile()),
      idx(wlan.GetConfigIdx()),
      config(wlan.Config()),
      settings(*config),
      scores(wlan.GetScoreContext()) {}

CandidateMargins Round::Settings() const {
  return {settings.qualityThreshold, config->m_APScoreThreshold, settings.scorePercent};
}

Contender Round::ContenderOf(CWlanBssEntry& entry, std::int32_t current) const {
  return {entry.GetBssid(), entry.GetScore(false, scores), current, entry.GetLQ(),
          entry.m_SSIDW == facts.ssid};
}

CandidateMargins Round::Margins(CWlanBssEntry& entry, std::int32_t current) const {
  return profile.Margins(Settings(), ContenderOf(entry, current));
}

std::int32_t Round::Required(CWlanBssEntry& entry, std::int32_t current) const {
  return profile.RoundsToWin(CGlobalQUAYPolicy::RequiredCandidateCount(),
                             ContenderOf(entry, current));
}

bool Round::IsBarred(const CWlanBssEntry& entry) const {
  return profile.IsBarred(
      entry.GetBssid(), entry.GetLQ(),
      entry.m_last_reason_code == platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE,
      Os().clock.GetTickCount64());
}

SuggestionMode Round::Mode(const CWlanBssEntry& entry) const {
  return profile.Mode(
      {settings.passive, settings.popup, config->m_bForcePopupOverride, config->m_allowlist_active},
      facts.connected && entry.m_SSIDW == facts.ssid);
}

}  // namespace corvane
