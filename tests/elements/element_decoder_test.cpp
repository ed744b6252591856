// The walk over the elements, the legacy elements, and any bytes at all.

#include "elements/element_decoder.h"

#include <random>

#include "elements/bss_reading.h"
#include "elements/element_bytes.h"
#include "support/beacon.h"

namespace corvane {
namespace {

using test::ByteList;
using test::Decode;
using test::Ie;
using test::Join;
using test::Printed;

TEST(ElementDecoder, AnElementThatStartsInTheLastTwoBytesIsNotLookedAt) {
  const struct {
    ByteList bytes;
    bool ds;
    unsigned channel;
    bool erp;
  } cases[] = {
      {{0, 1, 'a', 3, 1, 6}, true, 6, false},
      {{0, 1, 'a', 3, 0}, false, 0, false},  // of no length at the very end
      {{0, 1, 'a', 3}, false, 0, false},     // an id alone
      {{3, 0, 0, 1, 'a'}, true, 0, false},   // of no length in the middle
      {{3, 1, 6, 42, 0}, true, 6, false},
      {{3, 1, 6, 42, 1, 0}, true, 6, true},
      {{3, 2, 6}, false, 0, false},              // runs past the end: dropped
      {{3, 200, 6, 42, 1, 0}, false, 0, false},  // and ends the walk
      {{250, 1, 0, 3, 1, 7}, true, 7, false},    // unknown ids are passed over
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(testing::PrintToString(one.bytes));
    const auto blob = Decode(one.bytes);
    EXPECT_EQ(blob->m_HasPhyParamSet, one.ds);
    EXPECT_EQ(blob->m_DSChannel, one.channel);
    EXPECT_EQ(blob->m_HasErp, one.erp);
  }
}

TEST(ElementDecoder, LegacyRates) {
  const struct {
    std::uint8_t id;
    ByteList rates;
    std::int32_t maxKbps;
    std::size_t count;
    const char* flags;  // 1-or-2, 11, 54, DSSS, OFDM, ERP
  } cases[] = {
      {1, {0x82, 0x84, 0x8b, 0x96}, 11000, 4, "110100"},
      {1, {0x0c, 0x12, 0x18, 0x24, 0x30, 0x48, 0x60, 0x6c}, 54000, 8, "001011"},
      {1, {0xec}, 54000, 1, "001011"},  // 54 with the basic bit
      {1, {0x0b}, 5500, 1, "000000"},   // 5.5 alone is no DSSS mark
      {1, {0x8c}, 6000, 1, "000000"},
      {1, {0x98}, 12000, 1, "000010"},
      {1, {0x2c, 0x42}, 33000, 2, "000010"},                            // 22 and 33
      {1, {0x7f, 0xff, 0x00, 0x80, 0x03, 0x6d, 0x6b}, 0, 0, "000000"},  // none of them a rate
      {1, {2, 0x82, 2}, 1000, 1, "100100"},
      {50, {0x16}, 11000, 1, "010101"},  // element 50 is an ERP mark by itself
      {50, {0x7f}, 0, 0, "000001"},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(testing::PrintToString(one.rates));
    const auto blob = Decode(Ie(one.id, one.rates));
    EXPECT_EQ(blob->m_MaxLegacyRateKbps, one.maxKbps);
    EXPECT_EQ(blob->m_LegacyRates.size(), one.count);
    std::string flags;
    for (const bool flag : {blob->m_Has1Or2Mbps, blob->m_Has11Mbps, blob->m_Has54Mbps,
                            blob->m_HasDsssRate, blob->m_HasOfdmRate, blob->m_HasErp}) {
      flags += flag ? '1' : '0';
    }
    EXPECT_EQ(flags, one.flags);
  }
  const auto blob = Decode(Join({Ie(50, {0x6c, 0x30}), Ie(1, {0x96, 0x82, 0x0c})}));
  std::vector<std::int32_t> rates;
  for (const auto& [kbps, present] : blob->m_LegacyRates) {
    EXPECT_TRUE(present);
    rates.push_back(kbps);
  }
  EXPECT_EQ(rates, (std::vector<std::int32_t>{1000, 6000, 11000, 24000, 54000}));
}

TEST(ElementDecoder, LoadElementCountsOnlyInItsExactLength) {
  const struct {
    ByteList value;
    double percent;
    unsigned stations;
  } cases[] = {
      {{0x34, 0x12, 255, 0, 0}, 100.0, 0x1234},
      {{1, 0, 0, 9, 9}, 0.0, 1},
      {{2, 0, 51, 0, 0}, 20.0, 2},
      {{1, 0, 51, 0}, -1.0, 65535},
      {{1, 0, 51, 0, 0, 0}, -1.0, 65535},
      {{}, -1.0, 65535},
  };
  for (const auto& one : cases) {
    const auto blob = Decode(Join({Ie(11, one.value), Ie(0, {'x'})}));
    EXPECT_DOUBLE_EQ(blob->m_QBSSLoadPct, one.percent) << one.value.size();
    EXPECT_EQ(blob->m_StationCount, one.stations) << one.value.size();
  }
}

TEST(ElementDecoder, TheLastSsidStandsWithAllItsBytes) {
  EXPECT_EQ(Decode(Join({Ie(0, {'o', 'n', 'e'}), Ie(0, {'t', 0, 'o'})}))->m_SSID,
            std::string("t\0o", 3));
  EXPECT_EQ(Decode(Join({Ie(0, {'o'}), Ie(0, {}), Ie(3, {1})}))->m_SSID, "");
}

TEST(ElementDecoder, MarksOfThePhysicalLayer) {
  for (const std::uint8_t id : ByteList{2, 8, 9}) {
    const auto blob = Decode(Ie(id, {1}));
    EXPECT_TRUE(blob->m_HasPhyParamSet) << int{id};
    EXPECT_EQ(blob->m_DSChannel, 0);
  }
  for (const std::uint8_t id : ByteList{42, 47})
    EXPECT_TRUE(Decode(Ie(id, {0}))->m_HasErp) << int{id};
  for (const std::uint8_t id : ByteList{4, 10, 41, 46, 51, 222, 254}) {
    EXPECT_EQ(Printed(*Decode(Ie(id, {1, 2, 3, 4, 5, 6, 7, 8}))), Printed(*Decode({0, 0})))
        << int{id};
  }
}

// The bounds of every parser at once: bytes cut anywhere read as the whole elements that are left.
TEST(ElementDecoder, CutBytesReadAsTheElementsThatAreWhole) {
  const auto beacon = test::Beacon(u8"Office")
                          .Channel(36)
                          .He160(4)
                          .MuBeamformer()
                          .Wpa()
                          .QbssLoad(5, 51)
                          .Rsn({test::AKM_SAE, test::AKM_FT_PSK});
  const ByteList bytes = Join(
      {beacon.Bytes(), test::HeCapabilities(30, {0xFFFA, 0xFFFA, 0xFFFA, 0xFFFA, 0xFFFA, 0xFFFA})});
  std::size_t whole = 0;
  for (std::size_t size = 2; size <= bytes.size(); ++size) {
    if (whole + 2 < size && whole + 2 + bytes[whole + 1] == size) whole = size;
    if (whole == 0) continue;
    const ByteList cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    const ByteList elements(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(whole));
    ASSERT_EQ(Printed(*Decode(cut)), Printed(*Decode(elements))) << size;
  }
  EXPECT_EQ(whole, bytes.size());
}

// Read under the address sanitizer.
TEST(ElementDecoder, AnyBytesAreReadWithinTheirBoundsAndAlwaysAlike) {
  constexpr std::uint8_t kIds[] = {0, 1, 3, 11, 45, 48, 50, 61, 191, 192, 221, 255};
  std::mt19937 random(20261118);
  for (int round = 0; round < 3000; ++round) {
    ByteList bytes(random() % 300);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    // Mostly elements that a parser knows, of lengths around those that it expects.
    for (std::size_t at = 0; round % 4 != 0 && at + 2 < bytes.size();) {
      bytes[at] = kIds[random() % std::size(kIds)];
      bytes[at + 1] = static_cast<std::uint8_t>(random() % 34);
      if (bytes[at] == 255) bytes[at + 2] = static_cast<std::uint8_t>(34 + random() % 6);
      if (bytes[at] == 48 && at + 9 < bytes.size()) {
        bytes[at + 8] = static_cast<std::uint8_t>(random() % 4);
        bytes[at + 9] = 0;
      }
      at += 2u + bytes[at + 1];
    }
    // The notes are part of what must stand any bytes.
    const auto blob = Decode(bytes, 36, 80, 5.18, ~0u);
    const auto again = Decode(bytes, 36, 80, 5.18, ~0u);
    ASSERT_EQ(blob->notes, again->notes) << round;
    ASSERT_EQ(blob->m_HETxMcsString, again->m_HETxMcsString) << round;
    ASSERT_EQ(blob->SecurityMask, again->SecurityMask) << round;
    ASSERT_EQ(blob->m_HECapsRaw, again->m_HECapsRaw) << round;
    ASSERT_EQ(blob->m_HEOperRaw, again->m_HEOperRaw) << round;
    for (const bool he : {false, true}) {
      ASSERT_EQ(MaxRateMbps(*blob, he, false), MaxRateMbps(*again, he, false)) << round;
      ASSERT_GE(MaxRateMbps(*blob, he, true), 0) << round;
      ASSERT_LE(MaxRateMbps(*blob, he, false), 8 * 1201 * 2) << round;
    }
    ASSERT_LE(blob->SecurityMask, 0xFFu) << round;
    ASSERT_LE(blob->m_VHTTxStreams + blob->m_HETxStreams, 16u) << round;
    ASSERT_FALSE(ChannelWidths(*blob, false, u",", false).empty()) << round;
  }
}

TEST(ElementDecoder, OnlyNotesThatSomebodyWatchesAreTaken) {
  const ByteList bytes =
      Join({Ie(255, {36, 1}), Ie(255, {36, 1, 2, 3, 4, 5, 6}), Ie(48, {1, 0, 0, 0x0f, 0xac, 4})});
  const std::string bad = "CIEBlob::ParseExtendedIEData_internal:[] Got bad HE Oper! [2 <= 6]\n";
  const std::string good = "CIEBlob::ParseExtendedIEData_internal:[] Got good HE Oper!\n";
  const std::string version = "[ - chan 6]ParseRSN: version 1\n";
  const struct {
    std::uint32_t topics;
    std::string notes;
  } cases[] = {
      {0, ""},
      {kNoteMalformed, bad},
      {kNoteDetail, good},
      {kNoteSecurity, version},
      {kNoteSecurity | kNoteMalformed | kNoteDetail, bad + good + version},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.topics);
    const auto decoded = Decode(bytes, 6, 20, 5.18, one.topics);
    EXPECT_TRUE(decoded->m_HEOperGood);
    EXPECT_EQ(decoded->notes, one.notes);
  }
}

}  // namespace
}  // namespace corvane
