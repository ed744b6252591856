#include "elements/bss_reading.h"

namespace corvane {

namespace {

struct Standards {
  bool b, a, g, n, ac, ax;
};

Standards StandardsOf(const CIEBlob& blob) {
  const double ghz = blob.m_CenterFreqGHz;
  return {blob.m_Has11Mbps && ghz < 2.5,   blob.m_Has54Mbps && ghz >= 5.0,
          blob.m_HasErp && ghz < 5.0,      blob.m_HTPresent,
          blob.m_VHTPresent && ghz >= 5.0, blob.m_HECapsSeen || blob.m_HEOperSeen};
}

}  // namespace

std::string_view PhyModeOf(const CIEBlob* blob) {
  if (!blob) return "802.11";
  const Standards has = StandardsOf(*blob);
  if (has.ax) return "ax";
  if (has.ac) return "ac";
  if (has.n) return "n";
  if (has.g) return "g";
  if (has.a) return "a";
  if (has.b) return "b";
  return "11";
}

std::string PhyModesOf(const CIEBlob& blob) {
  const Standards has = StandardsOf(blob);
  std::string modes;
  const auto add = [&modes](bool present, std::string_view word) {
    if (!present) return;
    if (!modes.empty()) modes += '/';
    modes += word;
  };
  add(has.b, "b");
  add(has.a, "a");
  add(has.g, "g");
  add(has.n, "n");
  add(has.ac, "ac");
  add(has.ax, "ax");
  return modes.empty() ? "802.11" : modes;
}

bool IsMuMimo(const CIEBlob& blob) {
  constexpr std::uint32_t kFourStreams = 4;
  return blob.m_VHTMUBeamformer &&
         (blob.m_VHTChannelWidth > 80 || blob.m_VHTTxStreams >= kFourStreams) &&
         (blob.m_VHTPresent || blob.m_HECapsSeen || blob.m_HEOperSeen);
}

}  // namespace corvane
