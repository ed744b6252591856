#pragma once
// What an access point is worth, by the rule of a profile.

#include <cstdint>
#include <string>

#include "elements/element_fields.h"
#include "score/subtotal.h"

namespace corvane {

// How an access point is heard, beside what its subtotal asks for.
struct HeardLink {
  const ElementFields* elements = nullptr;  // null without elements
  double dbm = -100.0;
  int band = 0;                    // 2, 5 or 6; 0 for none
  bool adapterHe = false;          // the adapter does HE
  std::uint8_t channelLoad = 255;  // percent, of others on the channel; 255 for no information
  bool shared = false;             // another adapter of this machine is there, and before this one
};

// With a log, rewrites it with the terms.
using SubtotalRule = SubtotalResult (*)(const SubtotalInputs& in, const HeardLink& link,
                                        std::string* log);

inline SubtotalResult ClassicSubtotal(const SubtotalInputs& in, const HeardLink&,
                                      std::string* log) {
  return ComputeSubtotal(in, log);
}

}  // namespace corvane
