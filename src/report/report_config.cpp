#include "report/report_config.h"

namespace corvane {

WString ReportedValueName(WStringView name, int index) {
  return WString(name) + (index == 1 ? u"2" : u"");
}

WString SuggestedNetworkText(const ReportedAp& ap) {
  return ap.ssid + u" [" + ap.bssid + u"] " + ap.channelText + u" " + ap.bandText;
}

}  // namespace corvane
