#include "elements/phy_level.h"

namespace corvane {

std::int32_t PhyLevelOf(WStringView classText) {
  struct Level {
    WStringView text;
    std::int32_t level;
  };
  constexpr Level kLevels[] = {{u"ax", 7}, {u"ac", 5}, {u"n", 4}, {u"g", 3}, {u"b", 2}, {u"a", 1}};
  for (const Level& level : kLevels) {
    if (level.text == classText) return level.level;
  }
  return 0;
}

PhyMatch ComparePhys(WStringView adapterClass, WStringView apClass, std::uint32_t frequencyKHz) {
  const std::int32_t adapter = PhyLevelOf(adapterClass), accessPoint = PhyLevelOf(apClass);
  if (adapter == accessPoint) return PhyMatch::kSame;
  if (adapter < accessPoint) return PhyMatch::kAccessPointBetter;
  const bool lowBand = frequencyKHz >= 2'000'000 && frequencyKHz <= 2'999'999;
  const bool inVain = lowBand && adapterClass == u"ac" && apClass == u"n";
  return inVain ? PhyMatch::kAdapterBetterInVain : PhyMatch::kAdapterBetter;
}

}  // namespace corvane
