#pragma once
#include <map>

#include "platform/sim/world/world.h"
#include "wlan/wlan_interface.h"

namespace corvane::lab {

// The number of an adapter is its position in the world's list. The service counts in an order of
// its own, by connection name, and anew at each of its passes.
class AdapterNumbers {
 public:
  explicit AdapterNumbers(const platform::sim::World& world);

  int Of(const CWlanInterface& adapter) const;  // -1 for one that is not of this world
  // By the index of the service, as OnRoundBegins tells it.
  void Learn(int index, const CWlanInterface& adapter) { m_ByIndex[index] = Of(adapter); }
  int OfIndex(int index) const;
  // The adapter of this number; null while the service has none.
  CSmartPointer<CWlanInterface> Find(int number) const;

 private:
  std::map<WString, int> m_ByGuid;
  std::map<int, int> m_ByIndex;
};

}  // namespace corvane::lab
