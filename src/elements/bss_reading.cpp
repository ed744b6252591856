#include "elements/bss_reading.h"

namespace corvane {

namespace {

struct Standards {
  bool b, a, g, n, ac, ax;
};

Standards StandardsOf(const ElementFields& fields) {
  const double ghz = fields.m_CenterFreqGHz;
  return {fields.m_Has11Mbps && ghz < 2.5,   fields.m_Has54Mbps && ghz >= 5.0,
          fields.m_HasErp && ghz < 5.0,      fields.m_HTPresent,
          fields.m_VHTPresent && ghz >= 5.0, fields.m_HECapsSeen || fields.m_HEOperSeen};
}

}  // namespace

std::string_view PhyModeOf(const ElementFields* fields) {
  if (!fields) return "802.11";
  const Standards has = StandardsOf(*fields);
  if (has.ax) return "ax";
  if (has.ac) return "ac";
  if (has.n) return "n";
  if (has.g) return "g";
  if (has.a) return "a";
  if (has.b) return "b";
  return "11";
}

std::string PhyModesOf(const ElementFields& fields) {
  const Standards has = StandardsOf(fields);
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

std::int32_t MaxRateMbps(const ElementFields& fields, bool adapterHE, bool halved) {
  const std::int32_t divisor = halved ? 2 : 1;
  const auto mbps = [](std::int32_t kbps) { return static_cast<std::int32_t>(kbps / 1000.0); };
  if (fields.m_HECapsGood && adapterHE) return mbps(fields.m_MaxHERateKbps) / divisor;
  if (fields.m_VHTPresent && fields.m_CenterFreqGHz >= 5.0)
    return mbps(fields.m_MaxVHTRateKbps) / divisor;
  if (fields.m_HTPresent) {
    constexpr std::int32_t kTwoStreams20MHz = 144;
    const std::int32_t rate = mbps(fields.m_MaxHTRateKbps);
    return rate > kTwoStreams20MHz ? rate / divisor : rate;
  }
  return mbps(fields.m_MaxLegacyRateKbps);
}

WString ChannelWidths(const ElementFields& fields, bool descending, WStringView separator,
                      bool widestOnly) {
  WStringView top;
  bool forty = fields.m_HTChannelWidth == 40;
  if (fields.m_VHT80Plus80) {
    top = u"80+80";
  } else if (fields.m_VHTChannelWidth == 160) {
    top = u"160";
  } else if (fields.m_VHTChannelWidth == 80) {
    top = u"80";
  } else if (forty) {
    // Without a VHT width the text follows the operating width.
    top = u"40";
    forty = false;
  }
  if (top.empty()) return u"20";
  if (widestOnly) return WString(top);
  const WStringView parts[] = {u"20", forty ? WStringView(u"40") : WStringView(), top};
  WString widths;
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    const WStringView part = parts[descending ? std::size(parts) - 1 - i : i];
    if (part.empty()) continue;
    if (!widths.empty()) widths += separator;
    widths += part;
  }
  return widths;
}

bool IsMuMimo(const ElementFields& fields) {
  constexpr std::uint32_t kFourStreams = 4;
  return fields.m_VHTMUBeamformer &&
         (fields.m_VHTChannelWidth > 80 || fields.m_VHTTxStreams >= kFourStreams) &&
         (fields.m_VHTPresent || fields.m_HECapsSeen || fields.m_HEOperSeen);
}

}  // namespace corvane
