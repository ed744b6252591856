// HT, VHT and HE elements: bytes beside what they mean.

#include "elements/bss_reading.h"
#include "elements/element_bytes.h"
#include "elements/element_parsers.h"
#include "elements/rate_tables.h"

namespace corvane {
namespace {

using test::ByteList;
using test::Decode;
using test::HeCapabilities;
using test::HtCapabilities;
using test::HtOperation;
using test::Ie;
using test::Join;
using test::VhtCapabilities;
using test::VhtOperation;

std::array<std::uint8_t, 10> McsBits(std::initializer_list<std::pair<unsigned, unsigned>> runs) {
  std::array<std::uint8_t, 10> bitmap{};
  for (const auto& [first, last] : runs) {
    for (unsigned mcs = first; mcs <= last; ++mcs)
      bitmap[mcs / 8] |= static_cast<std::uint8_t>(1u << mcs % 8);
  }
  return bitmap;
}

TEST(HtMcsBitmask, RunsStreamsAndRate) {
  const struct {
    std::array<std::uint8_t, 10> bitmap;
    const char* flags;  // 40 MHz, short GI at 20, at 40
    const char* mcs;
    const char* streams;
    double rate;
  } cases[] = {
      {McsBits({{0, 15}, {32, 32}}), "111", "{0}-{15},{32}", "{1}, {2}", 300},
      {McsBits({}), "111", "", "", 0},
      {McsBits({{7, 7}}), "000", "{7}", "{1}", 65},
      {McsBits({{7, 7}}), "010", "{7}", "{1}", 72.2},
      {McsBits({{7, 7}}), "001", "{7}", "{1}", 65},   // short GI at 40 without 40 MHz
      {McsBits({{7, 7}}), "110", "{7}", "{1}", 135},  // short GI at 20 counts for nothing at 40
      {McsBits({{7, 7}}), "101", "{7}", "{1}", 150},
      {McsBits({{1, 1}, {3, 4}, {6, 6}}), "000", "{1},{3}-{4},{6}", "{1}", 58.5},
      {McsBits({{8, 9}, {30, 31}}), "101", "{8}-{9},{30}-{31}", "{2}, {4}", 600},
      {McsBits({{32, 32}}), "000", "{32}", "", 0},
      {McsBits({{32, 32}}), "101", "{32}", "", 6.7},
      {McsBits({{33, 76}}), "111", "{33}-{76}", "", 0},  // never reach the rate
      {McsBits({{76, 76}}), "111", "{76}", "", 0},
      {McsBits({{75, 79}}), "111", "{75}-{76}", "", 0},  // the bits above 76 are no MCS
      {McsBits({{0, 79}}), "111", "{0}-{76}", "{1}, {2}, {3}, {4}", 600},
      {McsBits({{0, 0}, {16, 16}}), "000", "{0},{16}", "{1}, {3}", 19.5},
  };
  for (const auto& one : cases) {
    std::string streams = "old", mcs = "old";
    double rate = 7;
    Process_HT_MCS_Support_String(one.bitmap, one.flags[0] == '1', one.flags[1] == '1',
                                  one.flags[2] == '1', &streams, &rate, &mcs);
    EXPECT_EQ(mcs, one.mcs) << one.flags;
    EXPECT_EQ(streams, one.streams) << one.mcs;
    EXPECT_DOUBLE_EQ(rate, one.rate) << one.mcs << " " << one.flags;
  }
}

TEST(McsMap, StreamsTextAndRate) {
  constexpr auto kVht = McsGeneration::kVht, kHe = McsGeneration::kHe;
  const struct {
    McsGeneration generation;
    std::uint16_t map;
    std::uint32_t width;
    bool shortGI;
    std::uint32_t streams, maxMcs;
    double rate;
    const char* text;
  } cases[] = {
      {kVht, 0xFFFA, 80, true, 2, 9, 2 * 433.333, "0-9, 0-9"},
      {kVht, 0xFFFF, 80, true, 0, 0, 0, ""},
      {kVht, 0xFFF3, 80, false, 1, 7, 292.5, "0-7"},           // a hole below the stream
      {kVht, 0xFFF6, 80, false, 2, 8, 2 * 351.0, "0-9, 0-8"},  // the lowest top wins
      {kVht, 0x3FFC, 40, false, 2, 7, 2 * 135.0, "0-7, 0-7"},  // first and last field
      {kVht, 0xFFFA, 0, true, 2, 9, 0, "0-9, 0-9"},
      {kVht, 0xFFFA, 60, true, 2, 9, 0, "0-9, 0-9"},
      // MCS 9 that does not exist counts as MCS 8; the map still says 9.
      {kVht, 0xFFFE, 20, false, 1, 9, 78, "0-9"},
      {kVht, 0xFFFA, 20, true, 2, 9, 2 * 86.666, "0-9, 0-9"},
      {kVht, 0xFFEA, 20, false, 3, 9, 3 * 86.666, "0-9, 0-9, 0-9"},
      {kVht, 0xFFAA, 20, false, 4, 9, 4 * 78.0, "0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFEAA, 20, false, 5, 9, 5 * 78.0, "0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFAAA, 20, false, 6, 9, 6 * 86.666, "0-9, 0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xEAAA, 20, false, 7, 9, 7 * 78.0, "0-9, 0-9, 0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xAAAA, 20, false, 8, 9, 8 * 78.0, "0-9, 0-9, 0-9, 0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFAAA, 40, true, 6, 9, 6 * 200.0, "0-9, 0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFAAA, 80, false, 6, 9, 6 * 351.0, "0-9, 0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFEAA, 80, false, 5, 9, 5 * 390.0, "0-9, 0-9, 0-9, 0-9, 0-9"},
      {kVht, 0xFFEA, 160, true, 3, 9, 3 * 780.0, "0-9, 0-9, 0-9"},
      {kVht, 0xFFFA, 160, true, 2, 9, 2 * 867.666, "0-9, 0-9"},
      {kHe, 0xFFFA, 80, false, 2, 11, 2 * 567.0, "0-11, 0-11"},
      {kHe, 0xFFF4, 160, true, 2, 7, 2 * 721.0, "0-7, 0-9"},
      {kHe, 0xFFFD, 20, false, 1, 9, 108, "0-9"},  // HE has every MCS 9
      {kHe, 0xFFFF, 160, true, 0, 0, 0, ""},
      {kHe, 0xFFAA, 20, true, 4, 11, 4 * 143.4, "0-11, 0-11, 0-11, 0-11"},
  };
  for (const auto& one : cases) {
    const McsMapReading reading = ReadMcsMap(one.generation, one.map, one.width, one.shortGI);
    SCOPED_TRACE(testing::Message() << std::hex << one.map << std::dec << " at " << one.width);
    EXPECT_EQ(reading.streams, one.streams);
    EXPECT_EQ(reading.maxMcs, one.maxMcs);
    EXPECT_DOUBLE_EQ(reading.rateMbps, one.rate);
    EXPECT_EQ(reading.text, one.text);
  }
}

// By data subcarriers, bits of a subcarrier and the length of a symbol (802.11-2020 19.5, 802.11ax
// 27.5); the tables are rounded.
TEST(RateTables, AreThoseOfTheStandard) {
  constexpr double kBits[] = {0.5, 1, 1.5, 2, 3, 4, 4.5, 5, 6, 20.0 / 3, 7.5, 25.0 / 3};
  for (unsigned mcs = 0; mcs < 32; ++mcs) {
    const double bits = kBits[mcs % 8] * (mcs / 8 + 1);
    EXPECT_NEAR(HtRateMbps(mcs, false, false, false), 52 * bits / 4.0, 0.6) << mcs;
    EXPECT_NEAR(HtRateMbps(mcs, false, true, false), 52 * bits / 3.6, 0.6) << mcs;
    EXPECT_NEAR(HtRateMbps(mcs, true, false, false), 108 * bits / 4.0, 0.6) << mcs;
    EXPECT_NEAR(HtRateMbps(mcs, true, false, true), 108 * bits / 3.6, 0.6) << mcs;
  }
  for (const std::uint32_t width : {20u, 40u, 80u, 160u}) {
    const double carriers = width == 20 ? 234 : width == 40 ? 468 : 12.25 * width;
    for (const unsigned top : {0u, 1u, 2u}) {  // to MCS 7, 9, 11, of one stream
      const auto map = static_cast<std::uint16_t>(0xFFFC | top);
      const double bits = kBits[7 + 2 * top];
      EXPECT_NEAR(ReadMcsMap(McsGeneration::kHe, map, width, false).rateMbps,
                  carriers * bits / 14.4, 0.95)
          << top << " at " << width;
      EXPECT_NEAR(ReadMcsMap(McsGeneration::kHe, map, width, true).rateMbps, carriers * bits / 13.6,
                  0.95)
          << top << " at " << width;
    }
  }
}

TEST(PhyElements, HtCapabilitiesNeedAll26Bytes) {
  const ByteList mcs = {0xFF, 0xFF, 0, 0, 1};
  const auto shortOne = Decode(HtCapabilities(0x62, mcs, 25));
  EXPECT_TRUE(shortOne->m_HTPresent);
  EXPECT_FALSE(shortOne->m_HTMcsValid || shortOne->m_HT40Capable);
  EXPECT_EQ(shortOne->m_HTMcsString + shortOne->m_HTStreamsString, "");
  EXPECT_EQ(MaxRateMbps(*shortOne, true, false), 0);

  const auto blob = Decode(HtCapabilities(0x62, mcs));
  EXPECT_TRUE(blob->m_HTMcsValid && blob->m_HT40Capable && blob->m_HTShortGI20 &&
              blob->m_HTShortGI40);
  EXPECT_EQ(blob->m_HTMcsString, "{0}-{15},{32}");
  EXPECT_EQ(blob->m_HTStreamsString, "{1}, {2}");
  EXPECT_EQ(blob->m_MaxHTRateKbps, 300000);
  EXPECT_EQ(Decode(HtCapabilities(0x20, {0xFF}))->m_MaxHTRateKbps, 72200);
  EXPECT_FALSE(blob->m_HTImplicitTxBF);
  ByteList beamformer(26);
  beamformer[21] = 1;
  EXPECT_TRUE(Decode(Ie(45, beamformer))->m_HTImplicitTxBF);
}

TEST(PhyElements, HtOperationPlacesTheChannelPair) {
  const struct {
    std::uint8_t primary, offset;
    std::size_t length;
    std::uint32_t center, secondary, htWidth, width;
    std::int32_t seg0, seg1;
  } cases[] = {
      {36, 0, 22, 36, 0, 20, 20, 36, 0},      {36, 1, 22, 38, 40, 40, 40, 36, 40},
      {40, 3, 22, 38, 36, 40, 40, 40, 36},    {36, 2, 22, 36, 0, 20, 20, 36, 0},
      {36, 0xFD, 22, 38, 40, 40, 40, 36, 40},  // the upper bits say nothing
      {36, 1, 21, 99, 0, 20, 20, 0, 0},        // too short: only that it is there
      {0, 1, 22, 99, 0, 20, 20, 0, 0},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(testing::Message() << int{one.primary} << "/" << int{one.offset});
    const auto blob = Decode(HtOperation(one.primary, one.offset, one.length), 99);
    EXPECT_TRUE(blob->m_HTPresent);
    EXPECT_EQ(blob->m_CenterChannel, one.center);
    EXPECT_EQ(blob->m_SecondaryChannel, one.secondary);
    EXPECT_EQ(blob->m_HTChannelWidth, one.htWidth);
    EXPECT_EQ(blob->m_ChannelWidth, one.width);
    EXPECT_EQ(blob->m_LoadSeg0Channel, one.seg0);
    EXPECT_EQ(blob->m_LoadSeg1Channel, one.seg1);
    EXPECT_EQ(blob->m_LoadCenterChannel, static_cast<std::int32_t>(one.center));
  }
}

TEST(PhyElements, HtAndVhtOperationGiveTheSameChannelInEitherOrder) {
  const struct {
    std::uint8_t code, seg0, seg1;
    std::uint32_t center, width, vhtWidth;
  } cases[] = {{1, 42, 0, 42, 80, 80},
               {2, 50, 0, 50, 160, 160},
               {0, 0, 0, 38, 40, 20},
               {4, 42, 0, 38, 40, 0}};
  for (const auto& one : cases) {
    const ByteList ht = HtOperation(36, 1), vht = VhtOperation(one.code, one.seg0, one.seg1);
    for (const ByteList& bytes : {Join({ht, vht}), Join({vht, ht})}) {
      const auto blob = Decode(bytes, 36, 20);
      EXPECT_EQ(blob->m_CenterChannel, one.center) << int{one.code};
      EXPECT_EQ(blob->m_ChannelWidth, one.width) << int{one.code};
      EXPECT_EQ(blob->m_VHTChannelWidth, one.vhtWidth) << int{one.code};
      EXPECT_EQ(blob->m_HTChannelWidth, 40u) << int{one.code};
      EXPECT_FALSE(blob->m_VHT80Plus80);
    }
  }
  // 80+80 keeps the centre that the HT element gave.
  const auto split = Decode(Join({HtOperation(36, 1), VhtOperation(3, 42, 155)}), 36, 20);
  EXPECT_TRUE(split->m_VHT80Plus80);
  EXPECT_EQ(split->m_CenterChannel, 38u);
  EXPECT_EQ(split->m_ChannelWidth, 80u);
  EXPECT_EQ(split->m_LoadSeg0Channel, 42);
  EXPECT_EQ(split->m_LoadSeg1Channel, 155);
  EXPECT_EQ(split->m_LoadCenterChannel, 38);

  const auto shortOne = Decode(Join({Ie(192, {1, 42, 0, 0}), Ie(191, {0xFF})}), 36, 20);
  EXPECT_TRUE(shortOne->m_VHTPresent);
  EXPECT_EQ(shortOne->m_CenterChannel, 36u);
  EXPECT_EQ(shortOne->m_VHTChannelWidth + shortOne->m_VHTSeg0Channel + shortOne->m_VHTMaxMpduLength,
            0u);
}

TEST(PhyElements, VhtCapabilitiesBitByBit) {
  struct Case {
    unsigned byte, bits;
    std::uint32_t (*read)(const ElementFields&);
    std::uint32_t value, without;
  };
  const Case cases[] = {
      {0, 0x00, [](const ElementFields& b) { return b.m_VHTMaxMpduLength; }, 3895, 3895},
      {0, 0x01, [](const ElementFields& b) { return b.m_VHTMaxMpduLength; }, 7991, 3895},
      {0, 0x02, [](const ElementFields& b) { return b.m_VHTMaxMpduLength; }, 11454, 3895},
      {0, 0x03, [](const ElementFields& b) { return b.m_VHTMaxMpduLength; }, 0, 3895},
      {0, 0x0C, [](const ElementFields& b) { return std::uint32_t{b.m_VHTSupportedWidthSet}; }, 3,
       0},
      {0, 0x20, [](const ElementFields& b) { return std::uint32_t{b.m_VHTShortGI80}; }, 1, 0},
      {0, 0x40, [](const ElementFields& b) { return std::uint32_t{b.m_VHTShortGI160}; }, 1, 0},
      {0, 0x80, [](const ElementFields& b) { return std::uint32_t{b.m_VHTRxLDPC}; }, 1, 0},
      {1, 0x07, [](const ElementFields& b) { return std::uint32_t{b.m_VHTRxSTBC}; }, 7, 0},
      {1, 0x08, [](const ElementFields& b) { return std::uint32_t{b.m_VHTSUBeamformer}; }, 1, 0},
      {1, 0x10, [](const ElementFields& b) { return std::uint32_t{b.m_VHTSUBeamformee}; }, 1, 0},
      {1, 0xE0, [](const ElementFields& b) { return b.m_VHTBeamformeeSts; }, 4,
       1},  // two bits of it
      {2, 0x07, [](const ElementFields& b) { return b.m_VHTSoundingDimensions; }, 4,
       1},  // two bits of it
      {2, 0x08, [](const ElementFields& b) { return std::uint32_t{b.m_VHTMUBeamformer}; }, 1, 0},
      {2, 0x10, [](const ElementFields& b) { return std::uint32_t{b.m_VHTMUBeamformee}; }, 1, 0},
  };
  for (const Case& one : cases) {
    ByteList value(12);
    EXPECT_EQ(one.read(*Decode(Ie(191, value))), one.without) << one.byte << "/" << one.bits;
    value[one.byte] = static_cast<std::uint8_t>(one.bits);
    EXPECT_EQ(one.read(*Decode(Ie(191, value))), one.value) << one.byte << "/" << one.bits;
    value.pop_back();
    EXPECT_EQ(one.read(*Decode(Ie(191, value))), 0u) << "11 bytes";
  }
}

TEST(PhyElements, RateAtTheOperatingWidth) {
  const ByteList ht20 = Join({HtCapabilities(0x20, {0xFF}), HtOperation(36, 0)});
  const ByteList ht40 = Join({HtCapabilities(0x42, {0xFF}), HtOperation(36, 1)});
  const std::vector<std::uint16_t> maps = {0xFFFA, 0xFFFA, 0xFFFE, 0xFFFE, 0xFFAA, 0xFFFF};
  const struct {
    ByteList bytes;
    std::int32_t vht, he;
  } cases[] = {
      {Join({ht20, VhtCapabilities(0, 0xFFFF, 0xFFFA)}), 173332, 0},
      {Join({ht40, VhtCapabilities(0, 0xFFFF, 0xFFFA)}), 400000, 0},
      {Join({ht40, VhtCapabilities(0x20, 0xFFFF, 0xFFFA), VhtOperation(1, 42)}), 866666, 0},
      {Join({ht40, VhtCapabilities(0x40, 0xFFFF, 0xFFFA), VhtOperation(1, 42)}), 780000, 0},
      {Join({ht40, VhtCapabilities(0x40, 0xFFFF, 0xFFFA), VhtOperation(2, 50)}), 1735332, 0},
      // 80+80: the 160 MHz guard interval, twice the rate of 80 MHz, for HE the Rx map.
      {Join({ht40, VhtCapabilities(0x40, 0xFFFF, 0xFFFA), VhtOperation(3, 42, 155),
             HeCapabilities(30, maps)}),
       1733332, 4804000},
      {Join({ht40, VhtCapabilities(0x20, 0xFFFF, 0xFFFA), VhtOperation(3, 42, 155)}), 1560000, 0},
      {Join({ht40, VhtCapabilities(0x20, 0xFFFA, 0xFFFF), VhtOperation(1, 42)}), 0,
       0},  // no Tx streams
      {Join({ht20, HeCapabilities(30, maps)}), 0, 286800},
      {Join({ht40, HeCapabilities(30, maps)}), 0, 573600},
      {Join({VhtCapabilities(0x20, 0, 0xFFFA), VhtOperation(1, 42), HeCapabilities(22, maps)}),
       866666, 1201000},
      {Join({VhtCapabilities(0x40, 0, 0xFFFA), VhtOperation(2, 50), HeCapabilities(26, maps)}),
       1735332, 1201000},
      // A map that the element does not carry has no streams.
      {Join({VhtCapabilities(0x40, 0, 0xFFFA), VhtOperation(2, 50), HeCapabilities(22, maps)}),
       1735332, 0},
      {Join({VhtCapabilities(0x40, 0, 0xFFFA), VhtOperation(3, 42, 155), HeCapabilities(26, maps)}),
       1733332, 0},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto blob = Decode(cases[i].bytes, 36, 20);
    EXPECT_EQ(blob->m_MaxVHTRateKbps, cases[i].vht) << i;
    EXPECT_EQ(blob->m_MaxHERateKbps, cases[i].he) << i;
  }
  // A width that has no rates: the Tx map is not read at all.
  const auto odd = Decode(VhtCapabilities(0, 0xFFFA, 0xFFFA), 36, 60);
  EXPECT_EQ(odd->m_VHTRxMcsString, "0-9, 0-9");
  EXPECT_EQ(odd->m_VHTRxStreams, 2u);
  EXPECT_EQ(odd->m_VHTRxMaxMcs, 9u);
  EXPECT_EQ(odd->m_VHTTxMcsString, "");
  EXPECT_EQ(odd->m_MaxVHTRateKbps, 0);
}

TEST(PhyElements, HeCapabilitiesByLength) {
  const std::vector<std::uint16_t> maps = {0xFF01, 0xFF02, 0xFF03, 0xFF04, 0xFF05, 0xFF06};
  const struct {
    std::size_t length;
    bool good;
    int maps;
    const char* word;
  } cases[] = {
      {1, false, 0, "bad"},       {21, false, 0, "bad"},  {22, true, 2, "good"},
      {23, false, 0, "bad"},      {24, false, 0, "bad"},  {25, false, 0, "bad"},
      {26, true, 4, "good"},      {27, false, 0, "bad"},  {28, false, 0, "bad"},
      {29, true, 4, "ambiguous"}, {30, true, 6, "good"},  {31, true, 6, "good"},
      {60, true, 6, "good"},      {255, true, 6, "good"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.length);
    const auto blob = Decode(HeCapabilities(one.length, maps), 0, 20, 5.18,
                             one.word == std::string("good") ? kNoteDetail : kNoteMalformed);
    EXPECT_TRUE(blob->m_ExtElementSeen && blob->m_HECapsSeen);
    EXPECT_EQ(blob->m_HECapsGood, one.good);
    EXPECT_EQ(blob->m_HEMcsDecoded, one.good);
    const std::uint16_t read[] = {blob->m_HERxMcs80,  blob->m_HETxMcs80,   blob->m_HERxMcs160,
                                  blob->m_HETxMcs160, blob->m_HERxMcs8080, blob->m_HETxMcs8080};
    for (int i = 0; i < 6; ++i)
      EXPECT_EQ(read[i], i < one.maps ? maps[static_cast<std::size_t>(i)] : 0xFFFF) << i;
    EXPECT_NE(blob->notes.find(std::string("Got ") + one.word + " HE Caps!"), std::string::npos);
  }
  ByteList value(60);
  for (std::size_t i = 0; i < value.size(); ++i) value[i] = static_cast<std::uint8_t>(i);
  value[0] = 35;
  const auto blob = Decode(Ie(255, value));
  EXPECT_EQ(blob->m_HECapsRaw.front(), 1);
  EXPECT_EQ(blob->m_HECapsRaw.back(), 42);
}

TEST(PhyElements, OtherExtensions) {
  const auto operation = [](std::size_t length) {
    ByteList value(length, 7);
    value[0] = 36;
    return Decode(Ie(255, value));
  };
  EXPECT_TRUE(operation(6)->m_HEOperSeen && !operation(6)->m_HEOperGood);
  EXPECT_TRUE(operation(7)->m_HEOperGood);
  const std::array<std::uint8_t, 12> six = {7, 7, 7, 7, 7, 7},
                                     all = {7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7};
  EXPECT_EQ(operation(7)->m_HEOperRaw, six);
  EXPECT_EQ(operation(20)->m_HEOperRaw, all);

  ByteList edca(14, 9);
  edca[0] = 38;
  EXPECT_TRUE(Decode(Ie(255, edca))->m_HEEdcaGood);
  EXPECT_EQ(Decode(Ie(255, edca))->m_HEEdcaRaw.back(), 9);
  edca.pop_back();
  const auto shortOne = Decode(Ie(255, edca));
  EXPECT_TRUE(shortOne->m_HEEdcaSeen && !shortOne->m_HEEdcaGood);

  const auto none = Decode(Join({Ie(255, {}), Ie(3, {6})}));
  EXPECT_TRUE(none->m_ExtElementSeen);
  EXPECT_FALSE(none->m_HECapsSeen || none->m_HEOperSeen || none->m_HEEdcaSeen);
}

TEST(PhyElements, HighestRateForTheAdapter) {
  struct Rates {
    bool heGood, vht, ht;
    double ghz;
  };
  const struct {
    Rates rates;
    bool adapterHE;
    std::int32_t plain, halved;
  } cases[] = {
      {{true, true, true, 5.18}, true, 1201, 600},
      {{true, true, true, 5.18}, false, 866, 433},
      {{false, true, true, 5.18}, true, 866, 433},
      {{false, true, true, 5.0}, false, 866, 433},
      {{false, true, true, 4.999999}, false, 300, 150},  // VHT on 2.4 GHz counts for nothing
      {{false, true, false, 2.437}, false, 54, 54},
      {{true, false, false, 2.437}, true, 1201, 600},
  };
  for (const auto& one : cases) {
    ElementFields fields;
    fields.m_HECapsGood = one.rates.heGood;
    fields.m_VHTPresent = one.rates.vht;
    fields.m_HTPresent = one.rates.ht;
    fields.m_CenterFreqGHz = one.rates.ghz;
    fields.m_MaxHERateKbps = 1201999;
    fields.m_MaxVHTRateKbps = 866666;
    fields.m_MaxHTRateKbps = 300000;
    fields.m_MaxLegacyRateKbps = 54000;
    EXPECT_EQ(MaxRateMbps(fields, one.adapterHE, false), one.plain) << one.rates.ghz;
    EXPECT_EQ(MaxRateMbps(fields, one.adapterHE, true), one.halved) << one.rates.ghz;
  }
  ElementFields ht;
  ht.m_HTPresent = true;
  for (const auto& [kbps, halved] : {std::pair{144999, 144}, {145000, 72}}) {
    ht.m_MaxHTRateKbps = kbps;
    EXPECT_EQ(MaxRateMbps(ht, true, true), halved);
  }
}

TEST(PhyElements, WidthText) {
  const struct {
    std::uint32_t ht, vht;
    bool split;
    const char16_t *up, *down, *top;
  } cases[] = {
      {0, 0, false, u"20", u"20", u"20"},
      {20, 20, false, u"20", u"20", u"20"},
      {40, 20, false, u"20,40", u"40,20", u"40"},
      {40, 80, false, u"20,40,80", u"80,40,20", u"80"},
      {20, 80, false, u"20,80", u"80,20", u"80"},
      {40, 160, false, u"20,40,160", u"160,40,20", u"160"},
      {40, 80, true, u"20,40,80+80", u"80+80,40,20", u"80+80"},
  };
  for (const auto& one : cases) {
    const auto text = [&one](bool descending, bool maxOnly) {
      ElementFields fields;
      fields.m_HTChannelWidth = one.ht;
      fields.m_VHTChannelWidth = one.vht;
      fields.m_VHT80Plus80 = one.split;
      return ChannelWidths(fields, descending, u",", maxOnly);
    };
    EXPECT_EQ(text(false, false), one.up);
    EXPECT_EQ(text(true, false), one.down);
    EXPECT_EQ(text(false, true), one.top);
    EXPECT_EQ(text(true, true), one.top);
  }
}

}  // namespace
}  // namespace corvane
