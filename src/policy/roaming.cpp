#include "policy/roaming.h"

namespace corvane {

bool IsRoam(CWlanInterface* pIf, CWlanBssEntry* target, WStringView ssid) {
  RoamFacts facts;
  facts.index = pIf->GetConfigIdx();
  facts.sameSsid = target->m_SSIDW == ssid;
  facts.gatewayRoaming = pIf->Config()->IsGatewayRoaming();
  facts.current = {pIf->GetIP4GatewayMacs(), pIf->GetIP6GatewayMacs()};
  facts.bssid = target->GetBssid();
  facts.candidate = {target->m_IP4GatewayMacs, target->m_IP6GatewayMacs};
  return IsRoam(facts, [target] {
    return CGlobalAPGatewayMapMemo::GetInstance().LookUp(target->m_BSSIDText);
  });
}

}  // namespace corvane
