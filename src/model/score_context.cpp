#include "model/score_context.h"

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

std::uint32_t ScoreContext::FilterOf(WStringView ssid) const {
  if (!filters) return kFilterNone;
  const auto at = filters->find(ssid);
  return at == filters->end() ? std::uint32_t{kFilterNone} : at->second;
}

}  // namespace corvane
