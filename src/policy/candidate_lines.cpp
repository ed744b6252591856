#include "policy/candidate_lines.h"

#include "policy/policy_log.h"

namespace corvane::lines {

void NotBetter(const Round& round, const CWlanBssEntry& entry, std::int32_t score,
               std::int32_t current) {
  LOG_ADAPTER(round.idx, kCandidateDetailLog,
              u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center %u] "
              u"due to: %i <= %i\n",
              round.idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
              entry.GetFrequencyKhz(), score, current);
}

void IsConnectedOne(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(round.idx, kCandidateDetailLog,
              u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center %u] "
              u"[CURRENT AP BSSID!]\n",
              round.idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
              entry.GetFrequencyKhz());
}

void WasUnavailable(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(round.idx, kCandidateDetailLog,
              u"___[%i]IncrementCandidateCounters: CLEARING CANDIDATE(%i): SSID %s %s [center %u] "
              u"[BAD prev reason-code %i]\n",
              round.idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
              entry.GetFrequencyKhz(), entry.m_last_reason_code);
}

void IsElsewhere(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i] IncrementCandidateCounters: SKIP candidate(connected on other IF): %s, %s, current "
      u"counter=%i",
      round.idx, entry.m_SSIDW, entry.m_BSSIDText, entry.m_candidate_counter);
}

void NotCounted(const Round& round, const CWlanBssEntry& entry, std::int32_t score,
                std::int32_t current) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"_[%i]IncrementCandidateCounters: NO BUMP CANDIDATE(%i): SSID %s %s [center %u] "
              u"score: %i vs %i\n",
              round.idx, entry.m_candidate_counter, entry.m_SSIDW, entry.m_BSSIDText,
              entry.GetFrequencyKhz(), score, current);
}

void Counted(const Round& round, const CWlanBssEntry& entry, std::int32_t before,
             std::int32_t counter, std::int32_t score, std::int32_t current) {
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"_[%i]IncrementCandidateCounters: [AllowStaleDecision=%i] %s CANDIDATE(%i, before=%i): "
      u"SSID %s %s [center %u] score: %i vs %i\n",
      round.idx, 0, counter != 0 ? u"BUMPED" : u"_FAILED_ BUMP", counter, before, entry.m_SSIDW,
      entry.m_BSSIDText, entry.GetFrequencyKhz(), score, current);
}

void Reserved(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IncrementCandidateCounters: RESERVING CANDIDATE: %s, %s, current counter=%i",
              round.idx, entry.m_SSIDW, entry.m_BSSIDText, entry.m_candidate_counter);
}

void NoneMetMargins(const Round& round, const CandidateMargins& margins) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IncrementCandidateCounters: _NO_ Candidate met Score difference threshold [%i "
              u"points & %lu percent] <<<=====************************",
              round.idx, static_cast<std::int32_t>(margins.scoreThreshold), margins.scorePercent);
}

void BetterIsElsewhere(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i] IsBetterCandidatePossible: SKIP candidate(connected on other IF): %s, %s, current "
      u"counter=%i",
      round.idx, entry.m_SSIDW, entry.m_BSSIDText, entry.m_candidate_counter);
}

void NotTheSuggested(const Round& round, const WString& bssidText) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"[%i] IsConnectedToSuggestedBest_ETW: %s != %s, return false",
              round.idx, round.config->m_Etw.GetSuggestedNetworkText(), bssidText);
}

void SuggestedInEmptyList(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IsConnectedToSuggestedBest_ETW: BssEntriesList.size() <= 0, return false",
              round.idx);
}

void SuggestedInFront(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IsConnectedToSuggestedBest_ETW: Found ETW BssEntry in front(), return true",
              round.idx);
}

void SuggestedInList(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IsConnectedToSuggestedBest_ETW: Found ETW BssEntry in list, return true",
              round.idx);
}

void SuggestedNotInList(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] IsConnectedToSuggestedBest_ETW: Failed to find BssEntry in list, return false",
              round.idx);
}

}  // namespace corvane::lines
