#include "policy/suggesting.h"

#include "policy/bss_entry_reports.h"

namespace corvane {

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

void ReportSignalQuality(const Round& round, const WString& ssid, const WString& bssidText,
                         const WString& channelText) {
  CQUAYInterfaceConfig& config = *round.config;
  // The option asks for the next report even if nothing has changed.
  if (config.m_bForceLQEtw.exchange(false)) {
    config.m_Etw.ResetQualityBad();
    config.m_Etw.ResetQualityGood();
  }
  if (round.HasGoodQuality()) {
    config.m_Etw.NotifySignalQualityGOOD(ssid, bssidText, channelText, round.facts.quality);
  } else {
    config.m_Etw.NotifySignalQualityBAD(ssid, bssidText, channelText, round.facts.quality);
  }
}

void ReportSignalQuality(const Round& round, const CWlanBssEntry& entry) {
  const ReportedAp ap = ReportedApOf(entry);
  ReportSignalQuality(round, ap.ssid, ap.bssid, ap.channelText);
}

void RememberSuggestion(const Round& round, const CWlanBssEntry& entry, std::int32_t position) {
  // What it takes the place of is no longer told to anybody.
  const WString& earlier = round.memory.m_last_suggested_ssid;
  if (round.profile.GetHabits().suggestsAnew && round.settings.IsEventMode() &&
      earlier != entry.m_SSIDW) {
    round.config->m_Etw.ClearSuggestedAP_If_Equal(earlier, round.memory.m_last_suggested_bssid);
  }
  round.memory.m_last_suggested_bssid = entry.m_BSSIDText;
  round.memory.m_last_suggested_ssid = entry.m_SSIDW;
  round.memory.m_last_suggested_pos = position;
}

void ForgetSuggestion(const Round& round) {
  round.memory.m_last_suggested_bssid.clear();
  round.memory.m_last_suggested_ssid.clear();
  round.memory.m_last_suggested_pos = -1;
}

bool IsSuggested(const Round& round, const CWlanBssEntry& entry) {
  if (!round.settings.passive) return false;
  CApSetMemo& memo =
      round.settings.popup ? round.config->m_Popup.GetMemo() : round.config->m_Etw.GetMemo();
  return memo.HasAp(entry.m_SSIDW, entry.m_BSSIDText);
}

}  // namespace corvane
