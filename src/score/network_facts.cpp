#include "score/network_facts.h"

namespace corvane {

const char16_t* NetworkCategoryName(std::int32_t category) {
  switch (category) {
    case kCategoryPublic:
      return u"Public";
    case kCategoryPrivate:
      return u"Private";
    case kCategoryDomain:
      return u"Domain";
    default:
      return u"Unknown";
  }
}

}  // namespace corvane
