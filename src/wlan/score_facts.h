#pragma once
#include "model/score_context.h"
#include "settings/interface_config.h"

namespace corvane {

// What scores take from elsewhere, at this moment. The filters, the network list and the load map
// come as tables that are replaced, never changed: three pointers are copied, and no entry that is
// scored by them takes a lock. Without a configuration the adapter's facts are their defaults.
ScoreContext GatherScoreContext(const CQUAYInterfaceConfig* config);

}  // namespace corvane
