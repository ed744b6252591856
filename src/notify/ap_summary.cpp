#include "notify/ap_summary.h"

#include "foundation/format.h"

namespace corvane {

namespace {

constexpr std::uint32_t kUnknownStations = 65535;
constexpr std::uint32_t kKHzInGHz = 1'000'000;

WString Head(const ApSummary& ap) {
  return Format(u"Score %i, %s, SQ %lu, Channel %lu", ap.score, ap.bssid, ap.quality, ap.channel);
}

// The highest rate and the SSID.
WString Tail(const ApSummary& ap) {
  const WString rate =
      ap.details ? Format(u"%lu mbps", ap.details->maxRateMbps) : WString(u"unknown");
  return u", Max datarate " + rate + u", " + EscapeForJson(ap.ssid);
}

// What follows "Standard 802.11" for a class text: its letters.
WStringView StandardLetters(WStringView standard) {
  constexpr WStringView kPrefix = u"802.11";
  if (standard == kPrefix || standard == u"11") return {};
  return standard.starts_with(kPrefix) ? standard.substr(kPrefix.size()) : standard;
}

}  // namespace

WString EscapeForJson(WStringView text) {
  WString escaped;
  escaped.reserve(text.size() * 6);
  for (const char16_t unit : text) escaped += Format(u"\\u%04X", static_cast<std::uint32_t>(unit));
  return escaped;
}

WString ShortApSummary(const ApSummary& ap) { return Head(ap) + Tail(ap); }

WString LongApSummary(const ApSummary& ap) {
  WString text =
      Head(ap) + Format(u", Link rate Tx %lu kbps, Link rate Rx %lu kbps", ap.txKbps, ap.rxKbps);
  if (!ap.details) {
    text +=
        u", Band unknown, Rssi unknown, MUMIMO unknown, ChannelWidth unknown, Standard unknown, "
        u"QLoad unknown, "
        u"StationCount unknown";
    return text + Tail(ap);
  }
  const ApSummaryDetails& details = *ap.details;
  text += Format(u", Band %lu Ghz, Rssi %i", details.frequencyKHz / kKHzInGHz, details.rssi);
  text += details.muMimo ? u", MUMIMO yes" : u", MUMIMO no";
  text += Format(u", ChannelWidth %s, Standard 802.11%s", details.channelWidth,
                 StandardLetters(details.standard));
  text += details.qLoad < 0 ? u", QLoad unknown" : Format(u", QLoad %i", details.qLoad);
  text += details.stationCount >= kUnknownStations
              ? u", StationCount unknown"
              : Format(u", StationCount %lu", details.stationCount);
  return text + Tail(ap);
}

}  // namespace corvane
