#include "policy/policy_text.h"

#include "foundation/format.h"
#include "notify/notification_manager.h"
#include "policy/policy_log.h"
#include "policy/round.h"
#include "store/value_names.h"

namespace corvane {

namespace {

ApSummaryDetails DetailsOf(CWlanBssEntry& entry, const ScoreContext& scores) {
  ApSummaryDetails details;
  details.frequencyKHz = entry.GetFrequencyKhz();
  details.rssi = entry.m_Bss.lRssi;
  details.muMimo = entry.GetMuMimo();
  details.channelWidth = entry.GetChannelWidthText();
  details.standard = entry.GetPhyMode();
  details.qLoad = static_cast<std::int32_t>(entry.GetRawLoadPct());
  details.stationCount = entry.GetStationCount();
  details.maxRateMbps = static_cast<std::uint32_t>(entry.GetMaxRate(scores));
  return details;
}

void TakeLinkRates(const CWlanInterface& adapter, ApSummary* ap) {
  const auto association = adapter.GetConnAttrs().wlanAssociationAttributes;
  ap->txKbps = association.ulTxRate;
  ap->rxKbps = association.ulRxRate;
}

const char16_t* InternetLetter(const CWlanBssEntry& entry) {
  if (!entry.m_bConnectivityKnown) return u"U";
  return entry.m_bInternet ? u"I" : u"N";
}

}  // namespace

ApSummary SummaryOf(CWlanBssEntry& entry, const ScoreContext& scores) {
  ApSummary ap;
  ap.score = entry.GetScore(false, scores);
  ap.bssid = entry.m_BSSIDText;
  ap.quality = entry.GetLQ();
  ap.channel = entry.m_Channel;
  ap.ssid = entry.m_SSIDW;
  ap.details = DetailsOf(entry, scores);
  return ap;
}

ApSummary SummaryOf(CWlanBssEntry& entry, const ScoreContext& scores,
                    const CWlanInterface& adapter) {
  ApSummary ap = SummaryOf(entry, scores);
  TakeLinkRates(adapter, &ap);
  return ap;
}

ApSummary SummaryOfConnection(CWlanInterface& adapter, const ConnectionFacts& facts,
                              std::int32_t score) {
  ApSummary ap;
  ap.score = score;
  ap.bssid = MacText(facts.bssid);
  ap.quality = facts.quality;
  ap.channel = adapter.GetCurrentChannel();
  ap.ssid = facts.ssid;
  TakeLinkRates(adapter, &ap);
  CSmartPointer<CWlanBssEntry> entry;
  if (adapter.FindBssEntry(facts.ssid, facts.bssid, &entry))
    ap.details = DetailsOf(*entry, adapter.GetScoreContext());
  return ap;
}

WString BriefText(const ApSummary& ap) {
  return Format(u"%s %s, SQ %lu, Score %i", ap.ssid, ap.bssid, ap.quality, ap.score);
}

WString NetworkDisplayName(WStringView ssid, std::uint32_t channel) {
  return Format(u"%s [Channel %lu]", ssid, channel);
}

void PublishConnection(const CWlanInterface& adapter, CQUAYInterfaceConfig& config,
                       const CWlanBssEntry& entry) {
  config.SetConnectedNetwork(NetworkDisplayName(entry.m_SSIDW, entry.m_Channel), entry.m_SSIDW,
                             entry.m_BSSIDText);
  const auto association = adapter.GetConnAttrs().wlanAssociationAttributes;
  config.SetDWORD(value::kConnectedLinkRateTX, association.ulTxRate);
  config.SetDWORD(value::kConnectedLinkRateRX, association.ulRxRate);
}

void NotifyConnectionChange(const CWlanInterface& adapter, const CQUAYInterfaceConfig& config,
                            WStringView type, WStringView newAp, WStringView oldAp) {
  WString description;
  config.GetString(value::kAdapterDescription, &description);
  QueueNotification(u"Corvane", u"ConnectionChange", type, newAp, oldAp, adapter.GetMacText(),
                    description);
}

WString SortLine(const Round& round, CWlanBssEntry& entry, const char* prefix) {
  const MacAddress mac = entry.GetBssid();
  const CIEBlob* blob = entry.m_IEBlob.get();
  const bool pending = !entry.m_bss_scanned && entry.m_unscanned_count == 0;
  return Format(
      u"[%i] %S:[ec %i/%02i][% 16s][%s] {%02x-%02x-%02x-%02x-%02x-%02x}[%s][%02i/%02i] [cls % "
      u"10s], LQ "
      u"%lu/%u, SCO %i[rssi %i] cent % 3u/%u, scn %i/%i/%i, BLACK %i, auto %i, cat %s, ld %0.2lf, "
      u"%i "
      u"[%i/%i] mbps, %i mbps, auth %i, CWs [%s], GWs %u+%u\n",
      round.idx, prefix, entry.m_ever_connected, entry.m_connect_good, entry.m_SSIDW, u"unknown ",
      MAC_ARGS(mac), InternetLetter(entry), entry.PeekCandidate(), entry.m_candidate_counter,
      entry.GetPhyModes(), entry.GetLQ(), entry.m_Bss.uLinkQuality,
      entry.GetScore(false, round.scores), entry.m_Bss.lRssi, entry.m_Channel,
      entry.GetFrequencyKhz(), entry.m_bss_scanned, entry.m_unscanned_count, pending,
      entry.m_bDenied, entry.m_AutoConnect,
      WString(round.scores.CategoryText(entry.m_SSIDW)).substr(0, 4),
      entry.GetLoadPct(round.scores), entry.GetMaxRate(round.scores),
      (blob ? blob->m_MaxVHTRateKbps : 0) / 1000, (blob ? blob->m_MaxHERateKbps : 0) / 1000,
      (blob ? blob->m_MaxLegacyRateKbps : 0) / 1000, entry.m_AuthAlgorithm,
      entry.GetChannelWidthText(), entry.m_IP4GatewayMacs.size(), entry.m_IP6GatewayMacs.size());
}

}  // namespace corvane
