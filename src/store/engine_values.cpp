// The values of the engine's key.

#include "engine/value_names.h"
#include "store/value_rows.h"

namespace corvane {

namespace {

using enum ValueKind;

constexpr ValueRow kRows[] = {
    {.name = value::kDeviceDiscoveryTO,
     .key = ValueKey::kEngine,
     .kind = kNumber,
     .start = 2000,
     .writers = "an administrator",
     .meaning = "The time between two looks at the adapters, in ms."},
    {.name = value::kEnable11AD,
     .key = ValueKey::kEngine,
     .kind = kNumber,
     .start = 1,
     .writers = "an administrator",
     .meaning = "1: 802.11ad and mobile adapters are managed, too."},
    {.name = value::kEnableOpenVpn,
     .key = ValueKey::kEngine,
     .kind = kNumber,
     .start = 0,
     .writers = "an administrator",
     .meaning = "1: TAP adapters are managed, too."},
    {.name = value::kSupportOemDevice,
     .key = ValueKey::kEngine,
     .kind = kNumber,
     .start = 3,
     .writers = "an administrator",
     .meaning = "Bit 0: the last gateway slot takes what fits in no other."},
    {.name = value::kSvcLib_TraceEnabled,
     .key = ValueKey::kEngine,
     .kind = kNumber,
     .start = 0,
     .writers = "an administrator",
     .meaning = "Not 0: the engine's steps are in the log."},
};

}  // namespace

std::span<const ValueRow> EngineValues() { return kRows; }

}  // namespace corvane
