#include "wlan/model/bss_entry_reports.h"

#include "core/foundation/format.h"

namespace corvane {

ReportedAp ReportedApOf(const CWlanBssEntry& entry) {
  return {entry.m_SSIDW, entry.m_BSSIDText, Format(u"[%s]", entry.GetBandText()),
          Format(u"[Channel %lu]", entry.m_Channel)};
}

bool SuggestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, std::int32_t percent, const WString& suggestedSummary,
               const WString& currentSummary) {
  if (!etw.SuggestAP(ReportedApOf(entry), percent, entry.GetLQ(), suggestedSummary, currentSummary)) return false;
  etw.ResetBest();
  return true;
}

bool NotifyAlreadyBestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, bool clearSuggestion) {
  if (clearSuggestion) etw.ClearSuggestedAP_If_Equal(entry.m_SSIDW, entry.m_BSSIDText);
  return etw.NotifyAlreadyBestAP(ReportedApOf(entry));
}

bool NotifySignalQualityBAD(const CWlanBssEntry& entry, CEtwTrellis& etw, std::uint32_t lq) {
  const ReportedAp ap = ReportedApOf(entry);
  return etw.NotifySignalQualityBAD(ap.ssid, ap.bssid, ap.channelText, lq);
}

bool NotifySignalQualityGOOD(const CWlanBssEntry& entry, CEtwTrellis& etw, std::uint32_t lq) {
  const ReportedAp ap = ReportedApOf(entry);
  return etw.NotifySignalQualityGOOD(ap.ssid, ap.bssid, ap.channelText, lq);
}

bool PopupSuggestAP(const CWlanBssEntry& entry, CPopupSuggestion& popup, std::int32_t percent, std::uint32_t lq,
                    std::uint32_t threshold, WStringView suggestedSummary, WStringView currentSummary) {
  return popup.PopupSuggestAP(ReportedApOf(entry), percent, lq, threshold, suggestedSummary, currentSummary);
}

}  // namespace corvane
