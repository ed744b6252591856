// The reader of recordings. Whatever the text: a recording whose positions all lead somewhere, or
// an error that names file and line.

#include "record/recording.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

void Check(const corvane::Recording& run) {
  const auto inside = [](std::size_t place, const auto& of) { return place < of.size(); };
  std::uint64_t lastMs = 0;
  for (const auto& reading : run.readings) {
    for (const auto& heard : reading.heard) {
      Require(inside(heard.accessPoint, run.accessPoints));
      Require(inside(heard.elements, run.elementBytes));
      Require(heard.quality <= 100);
    }
    for (const std::size_t gone : reading.gone) Require(inside(gone, run.accessPoints));
    lastMs = std::max(lastMs, reading.ms);
  }
  Require(lastMs <= run.lengthMs);
  for (const auto& ap : run.accessPoints) Require(ap.ssid.size() <= 32);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  const RecordingPart part{"part", std::string(reinterpret_cast<const char*>(data), size)};
  try {
    for (const Recording& run : ReadRecording({&part, 1})) Check(run);
  } catch (const std::runtime_error& error) {
    Require(std::string_view(error.what()).starts_with("part:"));
  }
  return 0;
}
