#include "notify/ap_summary.h"

#include <gtest/gtest.h>

namespace corvane::test {
namespace {

ApSummary Office() {
  ApSummary ap{.score = 61,
               .bssid = u"02-00-00-00-00-01",
               .quality = 88,
               .channel = 36,
               .txKbps = 866700,
               .rxKbps = 780000,
               .ssid = u"A\"b",
               .details = {}};
  ap.details = ApSummaryDetails{.frequencyKHz = 5180000,
                                .rssi = -52,
                                .muMimo = true,
                                .channelWidth = u"80 MHz",
                                .standard = u"802.11ac",
                                .qLoad = 12,
                                .stationCount = 7,
                                .maxRateMbps = 867};
  return ap;
}

TEST(ApSummaryText, SsidCannotBreakTheMessage) {
  EXPECT_EQ(EscapeForJson(u"A\"\u00e9\U0001F600"), u"\\u0041\\u0022\\u00E9\\uD83D\\uDE00");
  EXPECT_EQ(ShortApSummary(Office()),
            u"Score 61, 02-00-00-00-00-01, SQ 88, Channel 36, Max datarate 867 mbps, "
            u"\\u0041\\u0022\\u0062");
}

TEST(ApSummaryText, LongFormNamesEverything) {
  const WString head =
      u"Score 61, 02-00-00-00-00-01, SQ 88, Channel 36, Link rate Tx 866700 kbps, Link rate Rx "
      u"780000 kbps, ";
  const WString tail = u", \\u0041\\u0022\\u0062";
  ApSummary ap = Office();
  EXPECT_EQ(LongApSummary(ap),
            head +
                u"Band 5 Ghz, Rssi -52, MUMIMO yes, ChannelWidth 80 MHz, Standard 802.11ac, "
                u"QLoad 12, StationCount 7, Max datarate 867 mbps" +
                tail);
  ap.details->muMimo = false;
  ap.details->qLoad = -1;
  ap.details->stationCount = 65535;
  for (const char16_t* none : {u"802.11", u"11"}) {
    ap.details->standard = none;
    EXPECT_EQ(LongApSummary(ap),
              head +
                  u"Band 5 Ghz, Rssi -52, MUMIMO no, ChannelWidth 80 MHz, Standard 802.11, "
                  u"QLoad unknown, StationCount unknown, Max datarate 867 mbps" +
                  tail);
  }
  ap.details->stationCount = 65534;
  EXPECT_NE(LongApSummary(ap).find(u"StationCount 65534"), WString::npos);
}

TEST(ApSummaryText, WithoutAnEntryTheRestIsUnknown) {
  ApSummary ap = Office();
  ap.details.reset();
  EXPECT_EQ(ShortApSummary(ap),
            u"Score 61, 02-00-00-00-00-01, SQ 88, Channel 36, Max datarate unknown, "
            u"\\u0041\\u0022\\u0062");
  EXPECT_EQ(LongApSummary(ap),
            u"Score 61, 02-00-00-00-00-01, SQ 88, Channel 36, Link rate Tx 866700 kbps, Link rate "
            u"Rx 780000 kbps, "
            u"Band unknown, Rssi unknown, MUMIMO unknown, ChannelWidth unknown, Standard unknown, "
            u"QLoad unknown, "
            u"StationCount unknown, Max datarate unknown, \\u0041\\u0022\\u0062");
}

}  // namespace
}  // namespace corvane::test
