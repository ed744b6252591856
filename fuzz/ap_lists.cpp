// The JSON of the deny, allow and preferred lists: what is read and written again is read alike.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "bench_platform.h"
#include "store/ap_list_json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  static const bench::BenchPlatform os;
  const std::string_view json(reinterpret_cast<const char*>(data), size);
  ApListRows deny, allow;
  PreferredApRows preferred;
  ReadDenyRows(json, &deny);
  ReadAllowRows(json, &allow);
  ReadPreferredRows(json, &preferred);
  // No row stands twice, so that a second reading of the text adds none.
  const std::size_t denied = deny.size(), allowed = allow.size();
  ReadDenyRows(json, &deny);
  ReadAllowRows(json, &allow);
  if (deny.size() != denied || allow.size() != allowed) std::abort();
  ApListRows again;
  ReadDenyRows(ApListJson(deny), &again);
  if (again.size() != deny.size()) std::abort();
  return 0;
}
