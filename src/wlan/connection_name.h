#pragma once
#include "foundation/text.h"

namespace corvane {

// The name under which the user knows the adapter, from the registry; empty without one.
// `keyPath` is below HKEY_LOCAL_MACHINE.
WString ConnectionKeyPath(WStringView guidText);
WString ReadConnectionName(WStringView keyPath);

}  // namespace corvane
