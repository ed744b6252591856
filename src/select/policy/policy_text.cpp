#include "select/policy/policy_text.h"

#include "core/foundation/format.h"

namespace corvane {

WString ShortSummary(CWlanBssEntry& entry) {
  return Format(u"Score %i, %s, SQ %lu, Channel %lu, Max datarate %i mbps, %s", entry.GetScore(false),
                entry.m_BSSIDText, entry.GetLQ(), entry.m_Channel, entry.GetMaxRate(), entry.m_SSIDW);
}

WString ShortSummaryOfConnection(CWlanInterface& adapter, const ConnectionFacts& facts,
                                 std::int32_t score) {
  CSmartPointer<CWlanBssEntry> entry;
  const bool known = adapter.FindBssEntry(facts.ssid, facts.bssid, &entry);
  const WString rate = known ? Format(u"%i mbps", entry->GetMaxRate()) : WString(u"unknown");
  return Format(u"Score %i, %s, SQ %lu, Channel %lu, Max datarate %s, %s", score, MacText(facts.bssid),
                facts.quality, adapter.GetCurrentChannel(), rate, facts.ssid);
}

WString NetworkDisplayName(WStringView ssid, std::uint32_t channel) {
  return Format(u"%s [Channel %lu]", ssid, channel);
}

}  // namespace corvane
