#include "model/score_context.h"

#include <tuple>

namespace corvane {

const ChannelLoadMap& ScoreContext::LoadMap() const {
  static const ChannelLoadMap kNothingHeard;
  return loadMap ? *loadMap : kNothingHeard;
}

const KnownNetwork* ScoreContext::FindNetwork(WStringView ssid) const {
  if (!networks) return nullptr;
  const auto at = networks->find(ssid);
  return at == networks->end() ? nullptr : &at->second;
}

std::int32_t ScoreContext::CategoryOf(WStringView ssid) const {
  const KnownNetwork* const known = FindNetwork(ssid);
  return known ? known->category : kCategoryUnknown;
}

const char16_t* ScoreContext::CategoryText(WStringView ssid) const {
  const std::int32_t category = CategoryOf(ssid);
  return category >= 0 ? NetworkCategoryName(category) : u"unknown";
}

ScoreContext ScoreContext::WithoutAverages() const {
  ScoreContext context = *this;
  context.averageScore5 = context.averageScore2 = -1;
  context.averageLoad5 = context.averageLoad2 = -1.0;
  return context;
}

bool operator==(const ScoreContext& a, const ScoreContext& b) {
  const auto single = [](const ScoreContext& c) {
    return std::tie(c.subtotalRule, c.weights, c.heCapable, c.shared, c.averageScore5,
                    c.averageScore2, c.averageLoad5, c.averageLoad2, c.loadMapValid,
                    c.logUnknownNetworks, c.allowBonus, c.vpnFound);
  };
  return single(a) == single(b) && IsSame(a.loadMap, b.loadMap) && IsSame(a.networks, b.networks) &&
         IsSame(a.filters, b.filters);
}

std::uint32_t ScoreContext::FilterOf(WStringView ssid) const {
  if (!filters) return kFilterNone;
  const auto at = filters->find(ssid);
  return at == filters->end() ? std::uint32_t{kFilterNone} : at->second;
}

}  // namespace corvane
