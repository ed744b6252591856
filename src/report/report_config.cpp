#include "report/report_config.h"

namespace corvane {

WString SuggestedNetworkText(const ReportedAp& ap) {
  return ap.ssid + u" [" + ap.bssid + u"] " + ap.channelText + u" " + ap.bandText;
}

}  // namespace corvane
