#pragma once
// What the elements of a BSS mean, in words and flags. Pure.

#include <cstdint>
#include <string>
#include <string_view>

#include "elements/element_fields.h"

namespace corvane {

// The newest standard: "ax", "ac", "n", "g", "a", "b", "11"; "802.11" without elements (null).
std::string_view PhyModeOf(const ElementFields* fields);
// All standards joined by "/", oldest first; "802.11" for none.
std::string PhyModesOf(const ElementFields& fields);
// The highest rate in Mbps for an adapter that does HE or not; halved where the rules allow it.
std::int32_t MaxRateMbps(const ElementFields& fields, bool adapterHE, bool halved);
// The operating widths in MHz, such as "20,40,80", or the widest alone.
WString ChannelWidths(const ElementFields& fields, bool descending, WStringView separator,
                      bool widestOnly);
// The AP serves several stations at a time in the downlink.
bool IsMuMimo(const ElementFields& fields);

}  // namespace corvane
