#pragma once
// The JSON of the AP lists: an array of rows, each an array of strings. What can be read counts: an
// element of another shape is passed over, and a text that is no JSON array has no rows.

#include <string>
#include <string_view>

#include "store/ap_list_row.h"

namespace corvane {

// Append the rows of a UTF-8 text to *rows; true when the text has at least one. Deny and allow
// rows that the list holds already (same SSID, same BSSID text or address) are not appended again.
//
// [ssid, bssid]
bool ReadDenyRows(std::string_view json, ApListRows* rows);
// [ssid], [ssid, bssid] or [bssid, ssid]
bool ReadAllowRows(std::string_view json, ApListRows* rows);
// [ssid, bssid, min_lq]; rows may repeat
bool ReadPreferredRows(std::string_view json, PreferredApRows* rows);

// The compact array of [ssid, bssid], UTF-8.
std::string ApListJson(const ApListRows& rows);

}  // namespace corvane
