#pragma once
#include "foundation/text.h"

namespace corvane {

// Where the service keeps its files; without a separator at its end. Empty while there is no such
// folder.
WString DataFolder();

}  // namespace corvane
