#include "corvane_lab/peer_rules.h"

#include <gtest/gtest.h>

#include "platform/wlan_types.h"

namespace corvane::lab {
namespace {

using namespace platform;

PeerEntry Entry(int number, int band, double dbm, int widthMhz = 80) {
  PeerEntry entry;
  entry.accessPoint = number;
  entry.ssid = "Home";
  entry.band = band;
  entry.dbm = dbm;
  entry.phy = band == 2 ? dot11_phy_type_ht : dot11_phy_type_vht;
  entry.widthMhz = band == 2 ? 20 : widthMhz;
  entry.streams = 2;
  return entry;
}

PeerLink On(int number, int band, double dbm) { return {number, "Home", dbm, band}; }

TEST(PeerRulesTest, TheSupplicantEstimatesByOneStream) {
  PeerEntry entry = Entry(1, 5, -40);
  EXPECT_NEAR(EstimateKbps(entry), 433'333, 2) << "MCS 9 in 80 MHz, short guard interval";
  entry.streams = 4;
  EXPECT_NEAR(EstimateKbps(entry), 433'333, 2);
  // Between two rows: SNR 16.5 dB in 20 MHz lies half way from MCS 4 to MCS 5.
  const PeerEntry low = Entry(2, 2, -72.5);
  EXPECT_NEAR(EstimateKbps(low), (43'333 + 57'777) / 2.0, 2);
  EXPECT_EQ(EstimateKbps(Entry(3, 5, -89)), 0.0) << "too weak for 80 MHz";
}

TEST(PeerRulesTest, TheSupplicantRanksByThroughputWhereSignalsAreNear) {
  EXPECT_TRUE(SupplicantPrefers(Entry(1, 5, -60), Entry(2, 2, -57)));
  EXPECT_TRUE(SupplicantPrefers(Entry(2, 2, -55), Entry(1, 5, -80))) << "far apart: by signal";
  // Above 25 dB no signal is better than another.
  EXPECT_TRUE(SupplicantPrefers(Entry(1, 5, -65), Entry(2, 2, -30)));
}

TEST(PeerRulesTest, TheSupplicantRoamsByThroughputThenByMargin) {
  struct Case {
    PeerEntry current, selected;
    bool roams;
    const char* what;
  };
  const Case cases[] = {
      {Entry(1, 2, -60), Entry(2, 5, -65), true, "5 Mbps more are enough"},
      {Entry(1, 5, -60), Entry(2, 2, -40), false, "5 Mbps less are never"},
      {Entry(1, 2, -55), Entry(2, 2, -45), false, "equal rates, and the signal is great already"},
      {Entry(1, 2, -78), Entry(2, 2, -77.6), false, "0.4 dB are no margin"},
      {Entry(1, 2, -91), Entry(2, 2, -90.4), false, "too weak to estimate: by a dB at least"},
      {Entry(1, 2, -91), Entry(2, 2, -90), true, "which this is"},
      {Entry(1, 5, -77, 20), Entry(2, 2, -74), false, "a lower band takes more"},
  };
  for (const Case& one : cases)
    EXPECT_EQ(SupplicantRoams(one.current, one.selected), one.roams) << one.what;
}

TEST(PeerRulesTest, IwdWeighsLoadSignalAndDomain) {
  const PeerEntry plain = Entry(1, 5, -70);
  const double rank = IwdRank(plain, std::nullopt);
  PeerEntry full = plain, empty = plain;
  full.utilisation = 200;
  empty.utilisation = 20;
  EXPECT_NEAR(IwdRank(full, std::nullopt), rank * 0.8, 0.01);
  EXPECT_NEAR(IwdRank(empty, std::nullopt), rank * 1.2, 0.01);
  PeerEntry domain = plain;
  domain.mobilityDomain = 7;
  EXPECT_NEAR(IwdRank(domain, 7), rank * 1.3, 0.01);
  EXPECT_NEAR(IwdRank(domain, 8), rank, 0.01);
}

// The seconds at which a rule scans on a link that stays as it is.
std::vector<int> Scans(PeerRule& rule, const PeerLink& link, int seconds,
                       const std::vector<PeerEntry>& heard) {
  std::vector<int> scans;
  for (int second = 0; second < seconds; ++second) {
    const auto ms = static_cast<std::uint64_t>(second) * 1000;
    if (!rule.WantsScan(ms, link)) continue;
    scans.push_back(second);
    rule.Choose(ms, link, heard);
  }
  return scans;
}

TEST(PeerRulesTest, ScansAreFewWhereTheSignalIsGood) {
  const std::vector<PeerEntry> heard{Entry(1, 5, -60), Entry(2, 2, -60)};
  const auto good = SupplicantRule(), weak = SupplicantRule(), alone = SupplicantRule();
  EXPECT_EQ(Scans(*good, On(1, 5, -60), 700, heard), (std::vector{30, 330, 630}));
  // Each 30 s for a budget of eleven, then as seldom as on a good one.
  const auto scans = Scans(*weak, On(1, 5, -75), 1000, heard);
  ASSERT_GE(scans.size(), 13u);
  EXPECT_EQ(scans[0], 30);
  EXPECT_EQ(scans[11], 360);
  EXPECT_EQ(scans[12], 660);
  EXPECT_FALSE(good->WantsScan(700'000, On(1, 5, -64)));
  EXPECT_TRUE(good->WantsScan(701'000, On(1, 5, -66))) << "at once when it falls";
  EXPECT_EQ(Scans(*alone, On(1, 5, -60), 3000, {Entry(1, 5, -60)}), (std::vector{30}));

  const auto iwd = IwdRule(), strongest = StrongestRule();
  EXPECT_TRUE(Scans(*iwd, On(1, 5, -75), 600, heard).empty());
  EXPECT_EQ(Scans(*iwd, On(1, 2, -75), 140, heard), (std::vector{5, 65, 125}));
  EXPECT_EQ(Scans(*strongest, On(1, 5, -40), 61, heard), (std::vector{0, 30, 60}));
}

TEST(PeerRulesTest, ChoosesAmongItsOwnNetworkAndLeavesAloneWhatFailed) {
  PeerEntry other = Entry(3, 5, -45);
  other.ssid = "Other";
  const std::vector<PeerEntry> heard{Entry(1, 5, -80), Entry(2, 5, -55), other};
  const auto supplicant = SupplicantRule(), iwd = IwdRule(), strongest = StrongestRule();
  EXPECT_EQ(supplicant->Choose(0, On(1, 5, -80), heard), 2);
  EXPECT_EQ(iwd->Choose(0, On(1, 5, -80), heard), 2);
  EXPECT_EQ(strongest->Choose(0, On(1, 5, -80), heard), 3) << "it knows of no networks";
  EXPECT_EQ(strongest->Choose(0, On(2, 5, -50), heard), std::nullopt) << "6 dB are its margin";

  supplicant->OnFailed(1000, 2);
  EXPECT_EQ(supplicant->Choose(10'999, On(1, 5, -80), heard), std::nullopt);
  EXPECT_EQ(supplicant->Choose(11'000, On(1, 5, -80), heard), 2);
  for (int i = 0; i < 2; ++i) supplicant->OnFailed(20'000, 2);
  EXPECT_EQ(supplicant->Choose(79'999, On(1, 5, -80), heard), std::nullopt) << "a minute by now";
}

}  // namespace
}  // namespace corvane::lab
