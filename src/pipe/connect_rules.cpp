#include "pipe/connect_rules.h"

#include <algorithm>

namespace corvane {

ConnectRefusal RefusalFor(const ConnectObstacles& obstacles) {
  if (obstacles.vpn) return {u"vpn", u"VPN INHIBITION"};
  if (obstacles.radioOff) return {u"radio disabled", u"RADIO INHIBITION"};
  if (obstacles.airplane) return {u"airplane mode", u"AIRPLANE INHIBITION"};
  if (obstacles.adapterOff) return {u"adapter disabled", u"ADAPTER DISABLED"};
  return {};
}

WString NormalBssid(WStringView text) {
  WString bssid = ToLower(text);
  std::replace(bssid.begin(), bssid.end(), u':', u'-');
  return bssid;
}

}  // namespace corvane
