#include "policy/suggesting.h"

#include "policy/bss_entry_reports.h"

namespace corvane {

SuggestionMode ModeOf(const CQUAYInterfaceConfig& config) {
  return {config.m_bPassive, config.m_bPassive && config.m_bPopupMode, config.m_bForcePopupOverride,
          config.m_allowlist_active};
}

bool SuggestByEvent(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, const WString& suggestedSummary,
                    const WString& currentSummary) {
  if (!config.m_Etw.SuggestAP(ReportedApOf(entry), percent, quality, suggestedSummary,
                              currentSummary)) {
    return false;
  }
  config.m_Etw.ResetBest();
  return true;
}

bool SuggestByPopup(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, std::uint32_t threshold, const WString& suggestedSummary,
                    const WString& currentSummary) {
  return config.m_Popup.PopupSuggestAP(ReportedApOf(entry), percent, quality, threshold,
                                       suggestedSummary, currentSummary);
}

void ReportSignalQuality(CQUAYInterfaceConfig& config, const WString& ssid,
                         const WString& bssidText, const WString& channelText,
                         std::uint32_t quality) {
  // The option asks for the next report even if nothing has changed.
  if (config.m_bForceLQEtw.exchange(false)) {
    config.m_Etw.ResetQualityBad();
    config.m_Etw.ResetQualityGood();
  }
  if (quality >= config.m_LQCThreshold) {
    config.m_Etw.NotifySignalQualityGOOD(ssid, bssidText, channelText, quality);
  } else {
    config.m_Etw.NotifySignalQualityBAD(ssid, bssidText, channelText, quality);
  }
}

void ReportSignalQuality(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry,
                         std::uint32_t quality) {
  const ReportedAp ap = ReportedApOf(entry);
  ReportSignalQuality(config, ap.ssid, ap.bssid, ap.channelText, quality);
}

void RememberSuggestion(CWlanInterface& adapter, const CWlanBssEntry& entry,
                        std::int32_t position) {
  adapter.m_last_suggested_bssid = entry.m_BSSIDText;
  adapter.m_last_suggested_ssid = entry.m_SSIDW;
  adapter.m_last_suggested_pos = position;
}

void ForgetSuggestion(CWlanInterface& adapter) {
  adapter.m_last_suggested_bssid.clear();
  adapter.m_last_suggested_ssid.clear();
  adapter.m_last_suggested_pos = -1;
}

bool IsSuggested(CQUAYInterfaceConfig& config, WStringView ssid, WStringView bssidText) {
  const SuggestionMode mode = ModeOf(config);
  if (!mode.passive) return false;
  return (mode.popup ? config.m_Popup.GetMemo() : config.m_Etw.GetMemo()).HasAp(ssid, bssidText);
}

}  // namespace corvane
