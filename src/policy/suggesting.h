#pragma once
// The reporters as the policy uses them: entries in, events and dialogs out.

#include "policy/round.h"

namespace corvane {

// Suggestion by event. True when it went out; then the next report of a best network does too.
bool SuggestByEvent(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, const WString& suggestedSummary,
                    const WString& currentSummary);
// Suggestion by the dialog; `threshold` 0 and `quality` 0 without a connection. True when it was
// made.
bool SuggestByPopup(CQUAYInterfaceConfig& config, const CWlanBssEntry& entry, std::int32_t percent,
                    std::uint32_t quality, std::uint32_t threshold, const WString& suggestedSummary,
                    const WString& currentSummary);

// The quality of the connection: GOOD from LQCThreshold on, else BAD.
void ReportSignalQuality(const Round& round, const WString& ssid, const WString& bssidText,
                         const WString& channelText);
void ReportSignalQuality(const Round& round, const CWlanBssEntry& entry);

// Remembers the suggestion by its place in the sorted list, for the check of the next rounds.
void RememberSuggestion(const Round& round, const CWlanBssEntry& entry, std::int32_t position);
void ForgetSuggestion(const Round& round);

// The entry is suggested in the mode in force, and not resolved.
bool IsSuggested(const Round& round, const CWlanBssEntry& entry);

}  // namespace corvane
