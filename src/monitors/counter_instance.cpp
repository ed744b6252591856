#include "monitors/counter_instance.h"

#include "monitors/utils.h"

namespace corvane {

bool CounterInstanceOf(std::uint32_t ifIndex, WString* instance) {
  if (!CUtils::GetDescriptionForIfIndex(ifIndex, instance)) return false;
  for (char16_t& c : *instance) {
    if (c == u'#') c = u'_';
    if (c == u'(') c = u'[';
    if (c == u')') c = u']';
  }
  return true;
}

}  // namespace corvane
