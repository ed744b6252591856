// The element decoder: whatever stands in a beacon.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "bench_platform.h"
#include "elements/frequency_table.h"
#include "elements/ie_blob.h"
#include "foundation/log_lines.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  static const bench::BenchPlatform os;
  g_DebugMask = 0;
  if (size < 1 || size > 8192) return 0;
  constexpr std::uint32_t kFrequencies[] = {2412000, 2484000, 5180000, 5825000,
                                            5955000, 4915000, 1};
  platform::WLAN_BSS_ENTRY bss;
  bss.ulChCenterFrequency = kFrequencies[data[0] % std::size(kFrequencies)];
  const auto place = ChannelOfFrequency(bss.ulChCenterFrequency);
  // In a block of just that size, so that a read beyond it is seen.
  const std::size_t length = size - 1;
  const auto bytes = std::make_unique<std::uint8_t[]>(length);
  std::copy_n(data + 1, length, bytes.get());
  const auto load = [&] {
    const auto blob = CIEBlob::CreateObject();
    blob->Load(bytes.get(), static_cast<std::uint32_t>(length), place.channel, place.width, bss);
    return blob;
  };
  const auto blob = load(), again = load();
  if (blob->SecurityMask != again->SecurityMask || blob->SecurityMask > 0xFF) std::abort();
  constexpr std::int32_t kFastest = 20000;  // Mbps; eight streams at 160 MHz give 9608
  for (const bool he : {false, true}) {
    const std::int32_t whole = blob->GetMaxRateMbps(he, false);
    const std::int32_t halved = blob->GetMaxRateMbps(he, true);
    if (whole < 0 || whole > kFastest || halved < 0 || halved > whole) std::abort();
    if (again->GetMaxRateMbps(he, false) != whole) std::abort();
  }
  const WString& widths = blob->GetChannelWidthString(false, u",", false);
  if (widths.empty() || again->GetChannelWidthString(false, u",", false) != widths) std::abort();
  return 0;
}
