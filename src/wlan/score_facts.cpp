#include "wlan/score_facts.h"

#include "balanced/profile_set.h"
#include "model/global_wireless_maps.h"
#include "monitors/network_list_manager.h"
#include "settings/global_config_container.h"
#include "store/process_flags.h"

namespace corvane {

ScoreContext GatherScoreContext(const CQUAYInterfaceConfig* config) {
  ScoreContext context;
  if (config) {
    context.weights = config->GetScoreWeights();
    context.heCapable = config->m_bHECapable;
    context.averageScore5 = config->m_AvgQBSSScore5;
    context.averageScore2 = config->m_AvgQBSSScore2;
    context.averageLoad5 = config->m_AvgLoad5;
    context.averageLoad2 = config->m_AvgLoad2;
  }
  context.loadMap = CGlobalWirelessMaps::GetInstance().LoadMap(&context.loadMapValid);
  context.networks = CNetworkListManager::Known();
  context.logUnknownNetworks = CNetworkListManager::LogsUnknownNetworks();
  const auto& global = CGlobalConfigContainer::GetInstance();
  context.filters = global.GetNetworkFilters();
  context.allowBonus = global.m_AllowFilterScoreBonus;
  context.vpnFound = g_bVPNFound;
  context.subtotalRule = SubtotalRuleOf(PolicyProfileOf(global.m_PolicyProfile));
  return context;
}

}  // namespace corvane
