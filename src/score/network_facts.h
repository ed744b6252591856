#pragma once
// What the machine knows of networks by their names, as scores and lists of candidates take it.

#include <cstdint>
#include <map>

#include "foundation/text.h"

namespace corvane {

// NLM_NETWORK_CATEGORY; what the platform gives beyond these has no name.
enum NetworkCategory : std::int32_t {
  kCategoryUnknown = -1,  // the network list does not have the network
  kCategoryPublic = 0,
  kCategoryPrivate = 1,
  kCategoryDomain = 2,
};
// "Public", "Private", "Domain", "Unknown".
const char16_t* NetworkCategoryName(std::int32_t category);

// NLM_CONNECTIVITY, the flags in use: IPv4 or IPv6 internet; no traffic, subnet or local network.
inline constexpr std::uint32_t kConnectivityInternet = 0x440;
inline constexpr std::uint32_t kConnectivityNoInternet = 0x333;

// A network that the network list has.
struct KnownNetwork {
  std::int32_t category = kCategoryUnknown;  // NetworkCategory
  std::uint32_t connectivity = 0;            // NLM_CONNECTIVITY
  friend bool operator==(const KnownNetwork&, const KnownNetwork&) = default;
};
using KnownNetworks = std::map<WString, KnownNetwork, std::less<>>;  // by base name

// The system's filter lists.
enum NetworkFilter : std::uint32_t { kFilterNone = 0, kFilterPermitted = 1, kFilterDenied = 2 };
using NetworkFilters = std::map<WString, std::uint32_t, std::less<>>;  // by SSID

}  // namespace corvane
