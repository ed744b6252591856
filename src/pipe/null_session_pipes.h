#pragma once
// The system's list of pipes that are open to sessions without a user.

#include <optional>

#include "foundation/text.h"

namespace corvane {

// `list` is the value as it is stored: texts with their NULs, and a NUL at the end. The list with
// the name behind it; nothing when it holds the name (compared exactly). Pure.
std::optional<WString> WithPipeName(WStringView list, WStringView name);

// Puts the name on the machine's list. A list that is not there or can't be read stays as it is.
void EnsureNullSessionPipe(WStringView name);

}  // namespace corvane
