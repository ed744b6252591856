#pragma once
// An entry of the model told to the reporters.

#include "select/report/etw_trellis.h"
#include "select/report/popup_suggestion.h"
#include "wlan/model/wlan_bss_entry.h"

namespace corvane {

ReportedAp ReportedApOf(const CWlanBssEntry& entry);

// True when a suggestion was made; the next report of the best AP is then sent whatever it names.
bool SuggestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, std::int32_t percent,
               const WString& suggestedSummary, const WString& currentSummary);
// `clearSuggestion` also resolves a suggestion of this entry.
bool NotifyAlreadyBestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, bool clearSuggestion);
bool NotifySignalQualityBAD(const CWlanBssEntry& entry, CEtwTrellis& etw, std::uint32_t lq);
bool NotifySignalQualityGOOD(const CWlanBssEntry& entry, CEtwTrellis& etw, std::uint32_t lq);
// `lq` and `threshold` are those of the connection, both 0 without one.
bool PopupSuggestAP(const CWlanBssEntry& entry, CPopupSuggestion& popup, std::int32_t percent,
                    std::uint32_t lq, std::uint32_t threshold, WStringView suggestedSummary,
                    WStringView currentSummary);

}  // namespace corvane
