// The plain text of a client's token.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/exception.h"
#include "pipe/token_fields.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  const std::string_view plain(reinterpret_cast<const char*>(data), size);
  try {
    const auto fields = ParseToken(plain);
    if (fields && fields->guid.find(u',') != WString::npos) std::abort();
  } catch (const Exception&) {
    // A number that is none, or too large.
  }
  return 0;
}
