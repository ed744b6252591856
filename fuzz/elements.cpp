// The element decoder: whatever stands in a beacon.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "elements/bss_reading.h"
#include "elements/element_decoder.h"
#include "elements/frequency_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  if (size < 1 || size > 8192) return 0;
  constexpr std::uint32_t kFrequencies[] = {2412000, 2484000, 5180000, 5825000,
                                            5955000, 4915000, 1};
  const std::uint32_t khz = kFrequencies[data[0] % std::size(kFrequencies)];
  const auto place = ChannelOfFrequency(khz);
  // In a block of just that size, so that a read beyond it is seen.
  const std::size_t length = size - 1;
  const auto bytes = std::make_unique<std::uint8_t[]>(length);
  std::copy_n(data + 1, length, bytes.get());
  const auto decode = [&] {
    ElementFields fields;
    fields.m_CenterChannel = place.channel;
    fields.m_ChannelWidth = place.width;
    fields.m_CenterFreqGHz = khz / 1e6;
    ElementNotes notes(~std::uint32_t{0});
    DecodeElements({bytes.get(), length}, fields, notes);
    return fields;
  };
  const ElementFields fields = decode(), again = decode();
  if (fields.SecurityMask != again.SecurityMask || fields.SecurityMask > 0xFF) std::abort();
  constexpr std::int32_t kFastest = 20000;  // Mbps; eight streams at 160 MHz give 9608
  for (const bool he : {false, true}) {
    const std::int32_t whole = MaxRateMbps(fields, he, false);
    const std::int32_t halved = MaxRateMbps(fields, he, true);
    if (whole < 0 || whole > kFastest || halved < 0 || halved > whole) std::abort();
    if (MaxRateMbps(again, he, false) != whole) std::abort();
  }
  const WString widths = ChannelWidths(fields, false, u",", false);
  if (widths.empty() || ChannelWidths(again, false, u",", false) != widths) std::abort();
  return 0;
}
