#include "pipe/connect_rules.h"

#include <algorithm>

namespace corvane {

WStringView RefusalFor(const ConnectObstacles& obstacles) {
  if (obstacles.vpn) return u"vpn";
  if (obstacles.radioOff) return u"radio disabled";
  if (obstacles.airplane) return u"airplane mode";
  if (obstacles.adapterOff) return u"adapter disabled";
  return {};
}

WString NormalBssid(WStringView text) {
  WString bssid = ToLower(text);
  std::replace(bssid.begin(), bssid.end(), u':', u'-');
  return bssid;
}

}  // namespace corvane
