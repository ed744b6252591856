#pragma once
#include <cstdint>
#include <memory>
#include <optional>

#include "score/channel_load_map.h"
#include "score/network_facts.h"
#include "score/subtotal_rule.h"
#include "store/address_text.h"
#include "store/score_weights.h"

namespace corvane {

// What a score takes from elsewhere than its entry: gathered once a pass by the adapter and handed
// down, so that all entries of a pass are scored by the same facts and none takes a lock for them.
// The tables behind the pointers never change; null means that nothing is known.
struct ScoreContext {
  // Of the policy's profile: what an access point is worth.
  SubtotalRule subtotalRule = ClassicSubtotal;

  // Of the adapter: its weights, whether it does HE, the BSS that an adapter before it shares with
  // it, and the averages of its last finished scores (points, percent; below 0 for none) in the
  // 5 GHz range and in all else.
  ScoreWeights weights;
  bool heCapable = false;
  std::optional<MacAddress> shared;
  std::int32_t averageScore5 = -1, averageScore2 = -1;
  double averageLoad5 = -1.0, averageLoad2 = -1.0;

  // Of the air; valid once the map has been worked out to its end.
  std::shared_ptr<const ChannelLoadMap> loadMap;
  bool loadMapValid = false;

  // Of the machine.
  std::shared_ptr<const KnownNetworks> networks;
  bool logUnknownNetworks = false;  // one line for each score of a network that is not in the list
  std::shared_ptr<const NetworkFilters> filters;
  std::uint32_t allowBonus = 20;  // points for a network on a permit list
  bool vpnFound = false;

  const ChannelLoadMap& LoadMap() const;
  const KnownNetwork* FindNetwork(WStringView ssid) const;  // null: not in the list
  std::int32_t CategoryOf(WStringView ssid) const;          // NetworkCategory
  // "Public", "Private", "Domain", "Unknown", or "unknown" for a network that is not in the list.
  const char16_t* CategoryText(WStringView ssid) const;
  std::uint32_t FilterOf(WStringView ssid) const;  // NetworkFilter
  ScoreContext WithoutAverages() const;

  // By what the tables hold, not where they lie.
  friend bool operator==(const ScoreContext& a, const ScoreContext& b);
};

// Both null, or with the same content.
template <class T>
bool IsSame(const std::shared_ptr<const T>& a, const std::shared_ptr<const T>& b) {
  return a == b || (a && b && *a == *b);
}

}  // namespace corvane
