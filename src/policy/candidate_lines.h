#pragma once
// What becomes of a candidate while a round counts and looks for one: one function for each
// outcome. It only writes the log; how an entry stands is made known by its standing.

#include "policy/round.h"

namespace corvane::lines {

// --- Counting. `current` is the score of the connected access point.
void NotBetter(const Round& round, const CWlanBssEntry& entry, std::int32_t score,
               std::int32_t current);
void IsConnectedOne(const Round& round, const CWlanBssEntry& entry);
void WasUnavailable(const Round& round, const CWlanBssEntry& entry);
void IsElsewhere(const Round& round, const CWlanBssEntry& entry);
void NotCounted(const Round& round, const CWlanBssEntry& entry, std::int32_t score,
                std::int32_t current);
void Counted(const Round& round, const CWlanBssEntry& entry, std::int32_t before,
             std::int32_t counter, std::int32_t score, std::int32_t current);
void Reserved(const Round& round, const CWlanBssEntry& entry);
void NoneMetMargins(const Round& round, const CandidateMargins& margins);
void BetterIsElsewhere(const Round& round, const CWlanBssEntry& entry);

// --- The pair that was suggested by event
void NotTheSuggested(const Round& round, const WString& bssidText);
void SuggestedInEmptyList(const Round& round);
void SuggestedInFront(const Round& round);
void SuggestedInList(const Round& round);
void SuggestedNotInList(const Round& round);

}  // namespace corvane::lines
