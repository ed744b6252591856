#pragma once
// What a person wrote, checked before it is sent. Pure.

#include <string>
#include <string_view>

namespace corvane::client {

enum class ListKind { kDeny, kAllow, kPreferred };

// Empty for a list that the service takes as it is meant; otherwise what is wrong, with line and
// column, both from 1, as "3:7: a row takes an SSID and a BSSID". A row that the service would pass
// over or read as something else is wrong, too.
std::string CheckApList(std::string_view json, ListKind kind);

// The same for weights: an object of the seven weights, whole numbers up to 4,294,967,295.
std::string CheckWeights(std::string_view json);

}  // namespace corvane::client
