// Addresses and identities as text.

#include "store/address_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  WString text;
  for (std::size_t i = 0; i < size; ++i) text += static_cast<char16_t>(data[i]);
  for (const char16_t separator : {u'-', u':'}) {
    MacAddress mac{}, again{};
    const bool read = MacStringToBinary(separator, text, &mac);
    if (read && std::count(text.begin(), text.end(), separator) < 5) std::abort();
    if (!MacStringToBinary(u'-', MacText(mac), &again) || again != mac) std::abort();
  }
  platform::GUID guid, again;
  if (GuidFromText(text, &guid) && (!GuidFromText(GuidText(guid), &again) || !(again == guid))) {
    std::abort();
  }
  return 0;
}
