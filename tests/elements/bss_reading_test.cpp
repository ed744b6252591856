#include "elements/bss_reading.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(BssReading, StandardsByWhatIsListedAndTheBand) {
  EXPECT_EQ(PhyModeOf(nullptr), "802.11");
  const struct {
    const char* facts;  // 11 Mbps, 54 Mbps, ERP, HT, VHT, HE capabilities, HE operation
    double ghz;
    const char* newest;
    const char* all;
  } cases[] = {
      {"0000000", 2.437, "11", "802.11"},   {"1000000", 2.437, "b", "b"},
      {"1000000", 2.4999, "b", "b"},        {"1000000", 2.5, "11", "802.11"},
      {"1110000", 2.437, "g", "b/g"},       {"0110000", 5.18, "a", "a"},
      {"0110000", 5.0, "a", "a"},           {"0110000", 4.9999, "g", "g"},
      {"1111000", 2.437, "n", "b/g/n"},     {"1111100", 2.437, "n", "b/g/n"},
      {"0111100", 5.18, "ac", "a/n/ac"},    {"0000100", 4.9999, "11", "802.11"},
      {"0111110", 5.18, "ax", "a/n/ac/ax"}, {"1111101", 2.437, "ax", "b/g/n/ax"},
      {"0000001", 5.955, "ax", "ax"},
  };
  for (const auto& one : cases) {
    ElementFields fields;
    bool* const facts[] = {&fields.m_Has11Mbps, &fields.m_Has54Mbps,  &fields.m_HasErp,
                           &fields.m_HTPresent, &fields.m_VHTPresent, &fields.m_HECapsSeen,
                           &fields.m_HEOperSeen};
    for (std::size_t i = 0; i < std::size(facts); ++i) *facts[i] = one.facts[i] == '1';
    fields.m_CenterFreqGHz = one.ghz;
    EXPECT_EQ(PhyModeOf(&fields), one.newest) << one.facts << " " << one.ghz;
    EXPECT_EQ(PhyModesOf(fields), one.all) << one.facts << " " << one.ghz;
  }
}

TEST(BssReading, MuMimoNeedsABeamformerAndWidthOrStreams) {
  const struct {
    bool beamformer;
    std::uint32_t width, streams;
    bool vht, caps, oper, mu;
  } cases[] = {
      {true, 160, 1, true, false, false, true}, {true, 80, 3, true, false, false, false},
      {true, 80, 4, true, false, false, true},  {true, 20, 4, false, true, false, true},
      {true, 20, 4, false, false, true, true},  {true, 160, 8, false, false, false, false},
      {false, 160, 8, true, true, true, false},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& one = cases[i];
    ElementFields fields;
    fields.m_VHTMUBeamformer = one.beamformer;
    fields.m_VHTChannelWidth = one.width;
    fields.m_VHTTxStreams = one.streams;
    fields.m_VHTPresent = one.vht;
    fields.m_HECapsSeen = one.caps;
    fields.m_HEOperSeen = one.oper;
    EXPECT_EQ(IsMuMimo(fields), one.mu) << i;
  }
}

}  // namespace
}  // namespace corvane
