// RSN and WPA elements: suites beside the strength classes that they stand for.

#include "elements/element_bytes.h"

namespace corvane {
namespace {

using test::ByteList;
using test::Decode;
using test::Ie;
using test::Join;
using test::LittleEndian;

class SecurityElements : public testing::Test {
 protected:
  static constexpr unsigned kMfpRequired = 0x40, kMfpCapable = 0x80;

  static ByteList Suite(unsigned nn) { return {0x00, 0x0F, 0xAC, static_cast<std::uint8_t>(nn)}; }
  static ByteList WpaSuite(unsigned nn) {
    return {0x00, 0x50, 0xF2, static_cast<std::uint8_t>(nn)};
  }
  static ByteList Counted(const std::vector<unsigned>& suites, ByteList (*one)(unsigned)) {
    ByteList all = LittleEndian(static_cast<std::uint16_t>(suites.size()));
    for (const unsigned nn : suites) all = Join({all, one(nn)});
    return all;
  }
  static ByteList RsnValue(const std::vector<unsigned>& akms, unsigned group,
                           const std::vector<unsigned>& pairwise, unsigned capabilities) {
    return Join({{1, 0},
                 Suite(group),
                 Counted(pairwise, &Suite),
                 Counted(akms, &Suite),
                 LittleEndian(static_cast<std::uint16_t>(capabilities))});
  }
  static ByteList WpaValue(const std::vector<unsigned>& akms, unsigned group,
                           const std::vector<unsigned>& pairwise) {
    return Join({WpaSuite(1),
                 {1, 0},
                 WpaSuite(group),
                 Counted(pairwise, &WpaSuite),
                 Counted(akms, &WpaSuite)});
  }
};

TEST_F(SecurityElements, KeyManagementAndCiphersOfRsn) {
  const struct {
    std::vector<unsigned> akms;
    unsigned group;
    std::vector<unsigned> pairwise;
    unsigned capabilities;
    std::uint32_t mask;
    bool ft;
  } cases[] = {
      // Personal: PSK, PSK with SHA-256, FT over PSK, SAE.
      {{2}, 4, {4}, 0, 0x04, false},
      {{2}, 4, {4}, kMfpCapable, 0x04, false},
      {{2}, 4, {4}, kMfpRequired, 0x08, false},
      {{6}, 4, {4}, kMfpRequired, 0x04, false},
      {{4}, 4, {4}, kMfpRequired, 0x04, true},
      {{8}, 4, {4}, 0, 0x08, false},
      {{9}, 4, {4}, 0, 0x08, true},
      {{2, 8}, 4, {4}, 0, 0x08, false},
      {{6, 8}, 4, {4}, kMfpRequired, 0x08, false},
      // Enterprise.
      {{1}, 4, {4}, 0, 0x40, false},
      {{1}, 4, {4}, kMfpRequired, 0x80, false},
      {{3}, 4, {4}, 0, 0x40, true},
      {{5}, 4, {4}, kMfpRequired, 0x80, false},
      {{11}, 9, {9}, 0, 0x40, false},
      {{12}, 8, {8}, kMfpRequired, 0x80, false},
      {{13}, 8, {8}, 0, 0x40, true},
      {{1, 2}, 4, {4}, 0, 0x40, false},  // both: enterprise alone
      {{1, 6}, 4, {4}, kMfpRequired, 0x40, false},
      // Ciphers.
      {{2}, 2, {4}, 0, 0x06, false},
      {{2}, 1, {5}, 0, 0x01, false},
      {{1}, 5, {2, 4}, 0, 0x70, false},
      {{2}, 3, {7}, 0, 0, false},
      {{2}, 6, {6}, 0, 0x04, false},
      {{8}, 6, {6}, 0, 0x08, false},
      {{1}, 6, {6}, kMfpRequired, 0, false},  // for enterprise BIP says nothing
      {{2}, 10, {11}, 0, 0x04, false},
      {{2}, 12, {}, 0, 0x08, false},
      {{1}, 13, {}, 0, 0x80, false},
      {{2}, 14, {0}, 0, 0, false},
      // Neither personal nor enterprise: OWE, none at all.
      {{18}, 4, {4}, 0, 0, false},
      {{}, 4, {4}, kMfpRequired, 0, false},
      {{7, 10, 14}, 4, {4}, 0, 0, false},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& one = cases[i];
    const auto blob = Decode(Ie(48, RsnValue(one.akms, one.group, one.pairwise, one.capabilities)));
    EXPECT_EQ(blob->SecurityMask, one.mask) << i;
    EXPECT_EQ(blob->m_FastTransition, one.ft) << i;
  }
}

TEST_F(SecurityElements, AnRsnElementThatEndsEarlySetsNothing) {
  const ByteList whole = RsnValue({4, 2}, 4, {4, 2}, 0);  // 2 + 4 + 2 + 8 + 2 + 8 + 2 bytes
  ASSERT_EQ(whole.size(), 28u);
  for (std::size_t size = 1; size <= whole.size(); ++size) {
    const auto blob =
        Decode(Ie(48, ByteList(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))));
    EXPECT_EQ(blob->SecurityMask, size == 28 ? 0x06u : 0u) << size;
    EXPECT_EQ(blob->m_FastTransition, size >= 26) << size;  // its list was read to the end
  }
  // Counts that promise more than is there.
  for (const std::size_t at : {6u, 16u}) {
    ByteList greedy = whole;
    greedy[at] = 0xFF;
    greedy[at + 1] = 0xFF;
    EXPECT_EQ(Decode(Ie(48, greedy))->SecurityMask, 0u) << at;
    EXPECT_FALSE(Decode(Ie(48, greedy))->m_FastTransition) << at;
  }
}

TEST_F(SecurityElements, GroupManagementCipherStandsBehindThePmkids) {
  const ByteList head = RsnValue({2}, 3, {3}, 0);  // ciphers that say nothing
  const ByteList pmkid(16, 0xEE);
  const struct {
    ByteList tail;
    std::uint32_t mask;
  } cases[] = {
      {{}, 0},
      {LittleEndian(0), 0},
      {Join({LittleEndian(0), Suite(6)}), 0x04},
      {Join({LittleEndian(0), {0x00, 0x0F, 0xAC}}), 0},
      {Join({LittleEndian(1), pmkid, Suite(6)}), 0x04},
      {Join({LittleEndian(2), pmkid, pmkid, Suite(13)}), 0x08},
      {Join({LittleEndian(2), pmkid, Suite(13)}), 0},  // too few bytes for the second
      {Join({LittleEndian(0xFFFF), pmkid, Suite(13)}), 0},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(Decode(Ie(48, Join({head, cases[i].tail})))->SecurityMask, cases[i].mask) << i;
  }
}

TEST_F(SecurityElements, WpaVendorElement) {
  const struct {
    std::vector<unsigned> akms;
    unsigned group;
    std::vector<unsigned> pairwise;
    std::uint32_t mask;
  } cases[] = {
      {{2}, 2, {2}, 0x02},    {{1}, 2, {2}, 0x20},    {{2}, 1, {5}, 0x01}, {{1}, 5, {1}, 0x10},
      {{2}, 4, {4}, 0},  // CCMP in this element says nothing
      {{2}, 2, {4, 5}, 0x03}, {{1, 2}, 2, {1}, 0x30}, {{3}, 2, {2}, 0},    {{}, 2, {2}, 0},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto blob = Decode(Ie(221, WpaValue(cases[i].akms, cases[i].group, cases[i].pairwise)));
    EXPECT_EQ(blob->SecurityMask, cases[i].mask) << i;
  }
  const ByteList whole = WpaValue({2}, 2, {2});
  for (std::size_t size = 1; size < whole.size(); ++size) {
    const ByteList cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_EQ(Decode(Ie(221, cut))->SecurityMask, 0u) << size;
  }
  ByteList other = whole;
  other[3] = 4;  // another vendor type
  EXPECT_EQ(Decode(Ie(221, other))->SecurityMask, 0u);
  // RSN suites don't count here, nor do WPA suites there.
  const ByteList mixed =
      Join({WpaSuite(1), {1, 0}, Suite(2), Counted({2}, &Suite), Counted({2}, &WpaSuite)});
  EXPECT_EQ(Decode(Ie(221, mixed))->SecurityMask, 0u);
  const ByteList foreign =
      Join({{1, 0}, WpaSuite(2), Counted({2}, &WpaSuite), Counted({2}, &Suite), {0, 0}});
  EXPECT_EQ(Decode(Ie(48, foreign))->SecurityMask, 0u);
}

TEST_F(SecurityElements, BothElementsAddUp) {
  const auto blob =
      Decode(Join({Ie(221, WpaValue({2}, 2, {2})), Ie(48, RsnValue({2}, 2, {4}, 0))}));
  EXPECT_EQ(blob->SecurityMask, 0x06u);
}

TEST_F(SecurityElements, NotesWhatItFoundForThoseWhoAsk) {
  const ByteList open = Join({Ie(0, {'L', 'a', 'b'}), Ie(48, RsnValue({18}, 4, {4}, 0))});
  const ByteList secured =
      Join({Ie(0, {'L', 'a', 'b'}), Ie(48, RsnValue({6}, 4, {4}, kMfpRequired)),
            Ie(221, WpaValue({2}, 2, {2}))});
  EXPECT_EQ(Decode(secured, 6)->notes, "");
  const std::string told = Decode(secured, 6, 20, 5.18, kNoteSecurity)->notes;
  for (const char* line :
       {"[Lab - chan 6]ParseRSN: rsn_caps=0x0040 [__MFPR is true__]\n",
        "[Lab - chan 6]ParseRSN: [UPDATED] [f2=1/f3=0] SecurityMask=0x00000004\n",
        "[Lab - chan 6]ParseVendorSpecificData: [UPDATED] SecurityMask=0x00000006\n"}) {
    EXPECT_NE(told.find(line), std::string::npos) << line << told;
  }
  EXPECT_NE(Decode(open, 6, 20, 5.18, kNoteSecurity)
                ->notes.find("[Lab - chan 6]ParseRSN: [NO CHANGE] [f2=0/f3=0] "
                             "SecurityMask=0x00000000\n"
                             "\n[Lab - chan 6]ParseRSN: WPA IE (NO SECURITY BITS SET!)\n"
                             "01 00 00 0f \nac 04 01 00 \n"),
            std::string::npos);
}

}  // namespace
}  // namespace corvane
