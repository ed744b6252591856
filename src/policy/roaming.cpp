#include "policy/roaming.h"

namespace corvane {

bool IsRoam(const Round& round, const CWlanBssEntry& target) {
  RoamFacts facts;
  facts.index = round.idx;
  facts.sameSsid = target.m_SSIDW == round.facts.ssid;
  facts.gatewayRoaming = round.settings.gatewayRoaming;
  const IPInfo here = round.adapter.Link().Addresses();
  facts.current = {here.ip4GatewayMacs, here.ip6GatewayMacs};
  facts.bssid = target.GetBssid();
  facts.candidate = {target.m_IP4GatewayMacs, target.m_IP6GatewayMacs};
  return IsRoam(facts, [&target] {
    return CGlobalAPGatewayMapMemo::GetInstance().LookUp(target.m_BSSIDText);
  });
}

}  // namespace corvane
