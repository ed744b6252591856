#pragma once
#include "foundation/text.h"

namespace corvane {

// The class of an adapter or of an access point as clients read it: "802.11ax" for "ax", "802.11"
// for "802.11" and for "11". Pure.
WString StandardText(WStringView letters);

// Looks at the first adapter, its connection and the link; gives the whole reply. The link is
// measured for a second, except during a scan. Under the global configuration lock; takes the
// second one.
WString Diagnose();

}  // namespace corvane
