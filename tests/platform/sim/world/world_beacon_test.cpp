// Elements that the beacon builder makes, beside bytes written by hand.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "model/ie_blob.h"
#include "platform/sim/world/world_text.h"
#include "support/beacon.h"
#include "support/platform_test.h"

namespace corvane::test {
namespace {

using platform::BYTE;
using platform::sim::CarryNoSsid;
using platform::sim::PhyOf;
using platform::sim::RateSetOf;
using platform::sim::SecurityOf;
using platform::sim::SetQbssLoad;
using platform::sim::SsidOf;

using Bytes = std::vector<BYTE>;

Bytes Hex(const std::string& spaced) {
  std::string text, bytes;
  for (const char character : spaced) {
    if (character != ' ') text += character;
  }
  EXPECT_TRUE(platform::sim::ReadHex(text, &bytes)) << spaced;
  return Bytes(bytes.begin(), bytes.end());
}

struct Case {
  const char* name;
  Beacon beacon;
  const char* hex;
};

TEST(BeaconBuilder, MakesTheBytesOfTheStandard) {
  const Case kCases[] = {
      {"802.11b", Beacon("ab").Channel(1).Only80211b(), "0002 6162 0104 82848b96 0301 01"},
      {"802.11g with all that is old", Beacon("ab").Channel(11).Country("DE").QbssLoad(258, 77),
       "0002 6162 0108 82848b960c121824 0301 0b 0706 444520 010d14 2a01 00 3204 3048606c"
       "0b05 0201 4d 0000"},
      {"802.11a with RSN", Beacon("").Channel(36).Rsn({AKM_PSK}),
       "0000 0108 8c129824b048606c 3014 0100 000fac04 0100 000fac04 0100 000fac02 0000"},
      {"SAE alone wants protected frames", Beacon("").Channel(36).Rsn({AKM_SAE}),
       "0000 0108 8c129824b048606c 3014 0100 000fac04 0100 000fac04 0100 000fac08 c000"},
      {"PSK and SAE offer them, with a mobility domain",
       Beacon("").Channel(36).Rsn({AKM_PSK, AKM_SAE}).FastTransition(0x1234),
       "0000 0108 8c129824b048606c 3018 0100 000fac04 0100 000fac04 0200 000fac02 000fac08 8000"
       "3603 341200"},
      {"WPA", Beacon("").Channel(36).Wpa(),
       "0000 0108 8c129824b048606c dd16 0050f201 0100 0050f202 0100 0050f202 0100 0050f202"},
      {"HT 40 MHz, secondary below", Beacon("").Channel(40).Ht40(2),
       "0000 0108 8c129824b048606c"
       "2d1a 6f00 17 ffff0000000000000000 0000 01 000000 0000 00000000 00"
       "3d16 28 07 0000000000000000000000000000000000000000"},
      {"VHT 80 MHz", Beacon("").Channel(36).Vht80(2),
       "0000 0108 8c129824b048606c"
       "2d1a 6f00 17 ffff0000000000000000 0000 01 000000 0000 00000000 00"
       "3d16 24 05 0000000000000000000000000000000000000000"
       "bf0c 32008003 faff 0000 faff 0000"
       "c005 01 2a 00 fcff"},
      {"HE 20 MHz in 2.4 GHz", Beacon("").Channel(6).He20(1),
       "0000 0108 82848b960c121824 0301 06 2a01 00 3204 3048606c"
       "2d1a 2d00 17 ff000000000000000000 0000 01 000000 0000 00000000 00"
       "3d16 06 00 0000000000000000000000000000000000000000"
       "ff16 23 000000000000 0000000000000000000000 feff feff"
       "ff07 24 f43f00 01 fcff"},
      {"HE 160 MHz in 6 GHz", Beacon("").Channel6GHz(37).He160(2),
       "0000 0108 8c129824b048606c"
       "ff1a 23 000000000000 0c00000000000000000000 faff faff faff faff"
       "ff0c 24 f43f02 01 fcff 25 03 27 2f 06"
       "ff03 3b b800"},
      {"vendor", Beacon("").Channel(36).Vendor(0x0017F2, {1, 2}),
       "0000 0108 8c129824b048606c dd05 0017f2 0102"},
  };
  for (const Case& each : kCases) EXPECT_EQ(each.beacon.Bytes(), Hex(each.hex)) << each.name;
}

TEST(BeaconBuilder, RefusesWhatNoAccessPointCanBe) {
  EXPECT_THROW(Beacon(std::string_view("123456789012345678901234567890123")),
               std::invalid_argument);
  EXPECT_THROW(Beacon("x").Channel(6).Vht80(1).Bytes(), std::invalid_argument);
  EXPECT_THROW(Beacon("x").Channel(60).Vht80(9), std::invalid_argument);
  EXPECT_THROW(Beacon("x").Channel(132).Vht160(1).Bytes(), std::invalid_argument);
  EXPECT_THROW(Beacon("x").Channel6GHz(5).Vht80(1).Bytes(), std::invalid_argument);
  EXPECT_THROW(Beacon("x").Append(1, Bytes(256)), std::invalid_argument);
}

TEST(BeaconBuilder, FrequencyOfTheChannel) {
  EXPECT_EQ(Beacon().Channel(1).FrequencyMhz(), 2412u);
  EXPECT_EQ(Beacon().Channel(13).FrequencyMhz(), 2472u);
  EXPECT_EQ(Beacon().Channel(14).FrequencyMhz(), 2484u);
  EXPECT_EQ(Beacon().Channel(36).FrequencyMhz(), 5180u);
  EXPECT_EQ(Beacon().Channel6GHz(1).FrequencyMhz(), 5955u);
  EXPECT_EQ(Beacon().Channel6GHz(2).FrequencyMhz(), 5935u);
}

class BeaconDecoded : public PlatformTest {};

// The program's own decoder reads what the builder wrote: both follow the same tables.
TEST_F(BeaconDecoded, ReadsBackWhatWasBuilt) {
  const Beacon beacon =
      Beacon("Office").Channel(100).He160(4).MuBeamformer().Rsn({AKM_PSK}).QbssLoad(7, 51);
  const Bytes bytes = beacon.Bytes();
  platform::WLAN_BSS_ENTRY bss;
  bss.ulChCenterFrequency = beacon.FrequencyMhz() * 1000;
  auto blob = CIEBlob();
  blob.Load(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 100, 20, bss);
  EXPECT_EQ(blob.m_SSID, "Office");
  EXPECT_TRUE(blob.m_HTPresent);
  EXPECT_TRUE(blob.m_VHTPresent);
  EXPECT_TRUE(blob.m_HECapsGood);
  EXPECT_TRUE(blob.m_VHTMUBeamformer);
  EXPECT_EQ(blob.m_VHTTxStreams, 4u);
  EXPECT_EQ(blob.m_HTPrimaryChannel, 100u);
  EXPECT_EQ(blob.m_StationCount, 7);
  EXPECT_NEAR(blob.m_QBSSLoadPct, 20.0, 0.5);
}

TEST(ElementFacts, HidingTakesTheNameAndNothingElse) {
  const Bytes bytes = Beacon("Office").Channel(36).Ht20(1).Bytes();
  EXPECT_EQ(CarryNoSsid(bytes), Beacon("").Channel(36).Ht20(1).Bytes());
  EXPECT_EQ(SsidOf(bytes), "Office");
  EXPECT_EQ(CarryNoSsid({}), Bytes());
  EXPECT_EQ(SsidOf(Hex("0005 6162")), "");  // runs past the end
}

TEST(ElementFacts, LoadIsChangedInPlaceOrAdded) {
  Bytes bytes = Beacon("x").Channel(36).QbssLoad(1, 2).Bytes();
  SetQbssLoad(&bytes, 300, -1);
  EXPECT_EQ(bytes, Beacon("x").Channel(36).QbssLoad(300, 2).Bytes());
  bytes = Beacon("x").Channel(36).Bytes();
  SetQbssLoad(&bytes, -1, 9);
  EXPECT_EQ(bytes, Beacon("x").Channel(36).Append(11, {0, 0, 9, 0, 0}).Bytes());
}

TEST(ElementFacts, RatesOfBothElementsInOneSet) {
  const auto rates = RateSetOf(Beacon("x").Channel(1).Bytes());
  ASSERT_EQ(rates.uRateSetLength, 24u);
  EXPECT_EQ(rates.usRateSet[0], 0x8002);
  EXPECT_EQ(rates.usRateSet[11], 108);
  // More rates than the set has room for.
  const auto full = RateSetOf(Beacon("x").Channel(1).Rates(Bytes(200, 0x02)).Bytes());
  EXPECT_LE(full.uRateSetLength, sizeof(full.usRateSet));
}

TEST(ElementFacts, GenerationAndSecurity) {
  using namespace platform;
  EXPECT_EQ(PhyOf(Beacon("x").Channel(1).Only80211b().Bytes(), 2412), dot11_phy_type_hrdsss);
  EXPECT_EQ(PhyOf(Beacon("x").Channel(1).Bytes(), 2412), dot11_phy_type_erp);
  EXPECT_EQ(PhyOf(Beacon("x").Channel(36).Bytes(), 5180), dot11_phy_type_ofdm);
  EXPECT_EQ(PhyOf(Beacon("x").Channel(36).Ht40(1).Bytes(), 5180), dot11_phy_type_ht);
  EXPECT_EQ(PhyOf(Beacon("x").Channel(36).He80(1).Bytes(), 5180), dot11_phy_type_he);

  EXPECT_FALSE(SecurityOf(Beacon("x").Bytes()).Enabled());
  EXPECT_EQ(SecurityOf(Beacon("x").Rsn({AKM_8021X}).Bytes()).auth, DOT11_AUTH_ALGO_RSNA);
  EXPECT_EQ(SecurityOf(Beacon("x").Rsn({AKM_SAE}).Bytes()).auth, DOT11_AUTH_ALGO_WPA3_SAE);
  EXPECT_EQ(SecurityOf(Beacon("x").Wpa().Bytes()).cipher, DOT11_CIPHER_ALGO_TKIP);
  // Pairwise suites that are said to run past the element's end.
  EXPECT_EQ(SecurityOf(Hex("3008 0100 000fac04 ffff")).auth, DOT11_AUTH_ALGO_RSNA);
}

}  // namespace
}  // namespace corvane::test
