#include "history/history_row.h"

#include <gtest/gtest.h>

namespace corvane {

TEST(HistoryRow, HasTheColumnsOfItsHeader) {
  ApSummary ap;
  ap.score = 47;
  ap.bssid = u"02-50-00-00-00-01";
  ap.channel = 36;
  ap.txKbps = 866'700;
  ap.rxKbps = 780'000;
  ap.ssid = u"Office";
  ap.details.emplace();
  ap.details->frequencyKHz = 5'180'000;
  ap.details->rssi = -61;
  ap.details->muMimo = true;
  ap.details->channelWidth = u"80";
  ap.details->standard = u"ac";
  ap.details->stationCount = 65535;
  ap.details->maxRateMbps = 866;
  const platform::SYSTEMTIME time{2026, 3, 0, 7, 5, 4, 9, 321};
  EXPECT_EQ(ConnectedHistoryRow(time, u"02-ad-00-00-00-01", ap, 12.5),
            u"2026-03-07T05:04:09Z,02-ad-00-00-00-01,connected,Office,02-50-00-00-00-01,47,-61,"
            u"5Ghz,36,80,ac,"
            u"12.500000,-1,yes,866.700000,780.000000,866");
  ap.details->stationCount = 65534;
  EXPECT_NE(ConnectedHistoryRow(time, u"", ap, -1.0).find(u",-1.000000,65534,"), WString::npos);
  EXPECT_EQ(DisconnectedHistoryRow(time, u"02-ad-00-00-00-01"),
            u"2026-03-07T05:04:09Z,02-ad-00-00-00-01,disconnected,na,na,na,na,na,na,na,na,na,na,na,"
            u"na,na,na");
}

}  // namespace corvane
