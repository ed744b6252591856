#pragma once
// The subtotal: what one BSS is worth by a fresh look at it, in points. Pure.

#include <cstdint>
#include <optional>
#include <string>

#include "store/score_weights.h"

namespace corvane {

// What the elements of the BSS say; absent without elements.
struct RadioFacts {
  bool htPresent = false;
  bool vhtPresent = false;
  bool heCapsGood = false;
  bool muMimo = false;
  std::uint32_t securityMask = 0;
  std::int32_t maxRateMbps = 0;  // for this adapter
  double loadPct = -1.0;         // of the load element, -1.0 without
  bool loadMapValid = false;     // the channel load map has been worked out
  bool quietChannel = false;     // by that map
};

// What the network list knows of the SSID.
struct NetworkFacts {
  bool isPrivate = false;
  bool connectivityKnown = false;  // the SSID is in the list
  std::uint32_t connectivity = 0;  // NLM_CONNECTIVITY
};

// What the entry remembers of its internet connectivity.
struct InternetState {
  bool internet = true;
  bool latch = true;      // as remembered or last set
  bool known = false;     // has been observed
  bool vpnMuted = false;  // a verdict of no internet was muted because a VPN was up
  friend bool operator==(const InternetState&, const InternetState&) = default;
};

// A rate that stands for signal, generation, rate, load and noise together.
struct WorthTerm {
  std::int32_t points = 0;
  std::int32_t mbps = 0;
};

struct SubtotalInputs {
  std::uint32_t quality = 0;     // link quality, 0 to 100
  std::uint32_t pegQuality = 0;  // replaces it when higher
  ScoreWeights weights;
  const RadioFacts* radio = nullptr;  // null without elements
  NetworkFacts network;
  bool allowed = false;  // on a permit list of the system
  std::uint32_t allowBonus = 20;
  bool vpnFound = false;
  InternetState internet;
  std::optional<WorthTerm> worth;
};

struct SubtotalResult {
  std::int32_t points = 0;          // never below 0
  std::uint32_t peggedQuality = 0;  // the quality that replaced the scanned one, 0 if none did
  std::int32_t loadPoints = -1;  // of the load element, -1 without a usable one; 0 beside a worth
  InternetState internet;
};

// With a log, rewrites it with the terms.
SubtotalResult ComputeSubtotal(const SubtotalInputs& in, std::string* log);

}  // namespace corvane
