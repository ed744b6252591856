#pragma once
#include <cstdint>
#include <functional>
#include <map>

#include "foundation/text.h"
#include "score/network_facts.h"

namespace corvane {

// What the operating system's network list says of one base name.
struct NlmNetworkRecord {
  WString name;  // the instance that speaks for the base name
  WString base;
  std::map<WString, std::int32_t, std::less<>> others;  // every instance name seen
  WString desc;
  std::int32_t cat = kCategoryDomain;
  bool iscon = false;
  bool isinet = false;
  std::uint32_t connectivity = 0;
  std::uint64_t connectedTime = 0;  // FILETIME
  std::uint64_t createdTime = 0;
  bool seen = false;
};

}  // namespace corvane
