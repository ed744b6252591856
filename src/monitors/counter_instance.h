#pragma once
#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// The interface's instance name of the object "Network Adapter" of the performance counters: its
// description, with "#", "(" and ")" as "_", "[" and "]". False without such an interface.
bool CounterInstanceOf(std::uint32_t ifIndex, WString* instance);

}  // namespace corvane
