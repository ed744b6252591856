#pragma once
#include "store/ap_list_row.h"

namespace corvane {

// The preferred APs, which go ahead of the score order from a stated link quality on. Comes from a
// file beside the executable, which stays there; the rows belong to the adapter's worker.
class CConfigSelectArbitrary {
 public:
  // Appends the rows of the file; true when it has at least one.
  bool LoadConfiguration(PreferredApRows* rows) const;
};

}  // namespace corvane
