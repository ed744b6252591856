#pragma once
// The reporters as the policy uses them: entries in, events and dialogs out.

#include "policy/switch_rules.h"
#include "wlan/wlan_interface.h"

namespace corvane {

SuggestionMode ModeOf(const CQUAYInterfaceConfig& config);

// Suggestion by event. True when it went out; then the next report of a best network does too.
bool SuggestByEvent(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, const WString& suggestedSummary,
                    const WString& currentSummary);
// Suggestion by the dialog; `threshold` 0 and `quality` 0 without a connection. True when it was
// made.
bool SuggestByPopup(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, std::uint32_t threshold, const WString& suggestedSummary,
                    const WString& currentSummary);

// GOOD from LQCThreshold on, else BAD.
void ReportSignalQuality(CQUAYInterfaceConfig& config, const WString& ssid,
                         const WString& bssidText, const WString& channelText,
                         std::uint32_t quality);
void ReportSignalQuality(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry,
                         std::uint32_t quality);

// Remembers the suggestion by its place in the sorted list, for the check of the next rounds.
void RememberSuggestion(CWlanInterface& adapter, const CWlanBssEntry& entry, std::int32_t position);
void ForgetSuggestion(CWlanInterface& adapter);

// The pair is suggested in the mode in force, and not resolved.
bool IsSuggested(CQUAYInterfaceConfig& config, WStringView ssid, WStringView bssidText);

}  // namespace corvane
