#pragma once
#include "model/wlan_network.h"
#include "store/ap_list_row.h"

namespace corvane {

// What the AP lists write on the entries of one adapter; under the interface lock. Nothing clears
// the marks while an entry lives. Both are true when they changed something.

// Gives the entries of the rows their arbitrary priority, an earlier row a higher one, and the link
// quality from which it counts. Entries that were missing from three scans or more are left alone.
bool MarkPreferred(const PreferredApRows& rows, NetworkMap* networks);
// Sets m_bDenied. An SSID that has no exact match goes to the first network, in map order, that
// differs from it in the case of ASCII letters only.
bool MarkDenied(const ApListRows& rows, NetworkMap* networks);

}  // namespace corvane
