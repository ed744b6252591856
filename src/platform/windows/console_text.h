#pragma once
#include <string_view>

#include "platform/types.h"

namespace corvane::platform::windows {

// Writes UTF-8 text, all of it, to a console or to whatever stands in its place. `which` as
// GetStdHandle has it. 0, or the system's error code.
DWORD WriteText(std::string_view text, DWORD which);

}  // namespace corvane::platform::windows
