#pragma once
// What the elements of a BSS mean, in words and flags. Pure.

#include <string>
#include <string_view>

#include "elements/ie_blob.h"

namespace corvane {

// The newest standard: "ax", "ac", "n", "g", "a", "b", "11"; "802.11" without elements (null).
std::string_view PhyModeOf(const CIEBlob* blob);
// All standards joined by "/", oldest first; "802.11" for none.
std::string PhyModesOf(const CIEBlob& blob);
// The AP serves several stations at a time in the downlink.
bool IsMuMimo(const CIEBlob& blob);

}  // namespace corvane
