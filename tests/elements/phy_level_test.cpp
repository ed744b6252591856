#include "elements/phy_level.h"

#include <gtest/gtest.h>

namespace corvane {

TEST(PhyLevel, OrdersTheEndsOfALink) {
  struct Case {
    const char16_t *adapter, *accessPoint;
    std::uint32_t kHz;
    PhyMatch match;
  };
  const Case cases[] = {
      {u"ax", u"ax", 5180000, PhyMatch::kSame},
      {u"802.11", u"11", 2412000, PhyMatch::kSame},  // nothing known on either side
      {u"ac", u"ax", 5180000, PhyMatch::kAccessPointBetter},
      {u"a", u"b", 2412000, PhyMatch::kAccessPointBetter},
      {u"n", u"802.11", 5180000, PhyMatch::kAdapterBetter},
      {u"ac", u"n", 5180000, PhyMatch::kAdapterBetter},
      {u"ac", u"n", 2412000, PhyMatch::kAdapterBetterInVain},
      {u"ac", u"n", 3000000, PhyMatch::kAdapterBetter},
      {u"ac", u"g", 2412000, PhyMatch::kAdapterBetter},  // this access point could do better
      {u"ax", u"n", 2412000, PhyMatch::kAdapterBetter},  // HE exists there
  };
  for (const Case& c : cases) {
    EXPECT_EQ(ComparePhys(c.adapter, c.accessPoint, c.kHz), c.match)
        << WideToUtf8(c.adapter) << " on " << WideToUtf8(c.accessPoint) << " at " << c.kHz;
  }
}

}  // namespace corvane
