#include "policy/round.h"

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
      idx(wlan.GetConfigIdx()),
      config(wlan.Config()),
      settings(*config),
      scores(wlan.GetScoreContext()) {}

CandidateMargins Round::Margins() const {
  return {settings.qualityThreshold, config->m_APScoreThreshold, settings.scorePercent};
}

std::int32_t Round::Required() const { return CGlobalQUAYPolicy::RequiredCandidateCount(); }

SuggestionMode Round::Mode() const {
  return {settings.passive, settings.popup, config->m_bForcePopupOverride,
          config->m_allowlist_active};
}

}  // namespace corvane
