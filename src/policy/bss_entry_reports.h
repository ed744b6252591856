#pragma once
// An entry of the model told to the reporters.

#include "model/wlan_bss_entry.h"
#include "report/etw_trellis.h"

namespace corvane {

ReportedAp ReportedApOf(const CWlanBssEntry& entry);

// `clearSuggestion` also resolves a suggestion of this entry.
bool NotifyAlreadyBestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, bool clearSuggestion);

}  // namespace corvane
