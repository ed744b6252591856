// Candidates: the counters that ripen, and the tests of readiness.

#include <algorithm>

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/candidate_lines.h"
#include "policy/decisions.h"
#include "policy/round_watch.h"
#include "policy/standing_suggestion.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

// One pass over the list on behalf of IncrementCandidateCounters.
class CounterPass {
 public:
  CounterPass(const Round& round, std::int32_t current) : m_Round(round), m_Current(current) {}

  void Visit(const CSmartPointer<CWlanBssEntry>& entry) {
    RoundWatches::Standing(m_Round.idx, *entry, Judge(entry));
  }

  const CountedCandidates& Counted() const { return m_Counted; }
  const CandidateSummary& Summary() const { return m_Summary; }
  bool MetThreshold() const { return m_bMetThreshold; }

 private:
  CandidateStanding Judge(const CSmartPointer<CWlanBssEntry>& entry) {
    const std::int32_t score = entry->GetScore(false, m_Round.scores);
    const CandidateInputs in{score,
                             m_Current,
                             entry->GetLQ(),
                             entry->IsArbitraryEligible(),
                             entry->GetBssid() == m_Round.facts.bssid,
                             m_Round.IsBarred(*entry)};
    const CandidateMargins margins = m_Round.Margins(*entry, m_Current);
    const CandidateVerdict verdict = JudgeCandidate(in, margins);
    Clear(*entry, verdict, score);
    if (verdict.standing != CandidateStanding::kQualified) {
      return verdict.lostClaim ? CandidateStanding::kNotBetter : verdict.standing;
    }
    if (IsTakenElsewhere(*entry)) return CandidateStanding::kTakenElsewhere;

    m_Counted.lastQualifier = entry;
    if (PassesPointTest(score, m_Current, margins.scoreThreshold)) Widen(score - m_Current);
    if (m_Round.settings.IsMonitorMode() &&
        entry->GetCandidate() > m_Round.Required(*entry, m_Current)) {
      lines::NotCounted(m_Round, *entry, score, m_Current);
    } else {
      Bump(*entry, score);
    }
    ReserveIfNearlyRipe(*entry);
    if (!IsCandidateReady(m_Round, *entry, m_Current)) return CandidateStanding::kRipening;
    m_Counted.anyReady = true;
    return CandidateStanding::kReady;
  }

  // An entry that has lost its claim starts anew; one that is merely not good enough in this round
  // keeps its count.
  void Clear(CWlanBssEntry& entry, const CandidateVerdict& verdict, std::int32_t score) {
    if (verdict.lostClaim) {
      lines::NotBetter(m_Round, entry, score, m_Current);
      entry.m_candidate_counter = 0;
    }
    if (verdict.standing == CandidateStanding::kConnectedBss) {
      lines::IsConnectedOne(m_Round, entry);
      entry.m_candidate_counter = 0;
    }
    if (verdict.standing == CandidateStanding::kUnavailable) {
      lines::WasUnavailable(m_Round, entry);
      entry.m_candidate_counter = 0;
    }
  }

  bool IsTakenElsewhere(CWlanBssEntry& entry) {
    if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(&entry, &m_Round.adapter))
      return false;
    lines::IsElsewhere(m_Round, entry);
    return true;
  }

  void Widen(std::int32_t difference) {
    m_Summary.min = m_bMetThreshold ? std::min(m_Summary.min, difference) : difference;
    m_Summary.max = m_bMetThreshold ? std::max(m_Summary.max, difference) : difference;
    m_bMetThreshold = true;
  }

  // An access point on the allow list that the user has been asked about need not ripen anew.
  bool IsOpenAllowedSuggestion(const CWlanBssEntry& entry) const {
    return m_Round.settings.allowlistEnabled &&
           IsAllowed(m_Round.config->m_Allowlist.Rows(), entry.m_SSIDW, entry.GetBssid()) &&
           IsOpenSuggestion(ReadStandingSuggestion(*m_Round.config), entry.m_SSIDW,
                            entry.m_BSSIDText, m_Round.settings.forceAutoConnect,
                            m_Round.adapter.IsConnected());
  }

  void Bump(CWlanBssEntry& entry, std::int32_t score) {
    const std::int32_t before = entry.m_candidate_counter;
    const std::int32_t counter = entry.IncrementCandidate(
        ForcedCount(m_Current, m_Round.Required(entry, m_Current), IsOpenAllowedSuggestion(entry)));
    lines::Counted(m_Round, entry, before, counter, score, m_Current);
  }

  void ReserveIfNearlyRipe(CWlanBssEntry& entry) {
    CandidateClaim& claim = m_Round.memory.Claim();
    const std::uint64_t now = Os().clock.GetTickCount64();
    const bool fades = m_Round.profile.GetHabits().claimsFade;
    if (fades && !claim.HeldWithin(kClaimFadesMs, now)) claim.Drop();
    const auto held = claim.Held();
    if (held && !(fades && held == entry.GetBssid())) return;
    if (entry.GetCandidate() < m_Round.Required(entry, m_Current) - 1) return;
    claim.ClaimRipening(entry.GetBssid(), now);
    if (!held) lines::Reserved(m_Round, entry);
  }

  const Round& m_Round;
  const std::int32_t m_Current;
  CountedCandidates m_Counted;
  CandidateSummary m_Summary;
  bool m_bMetThreshold = false;
};

}  // namespace

bool IsCandidateReady(const Round& round, CWlanBssEntry& entry, std::int32_t current) {
  return IsReady({entry.GetLQ(), entry.GetCandidate(), round.Required(entry, current),
                  entry.GetScore(false, round.scores), current},
                 round.Margins(entry, current));
}

CountedCandidates IncrementCandidateCounters(const Round& round, std::int32_t current) {
  CounterPass pass(round, current);
  for (const auto& entry : round.candidates) pass.Visit(entry);
  round.memory.AddScoreDiffSummary(pass.Summary());
  if (!pass.MetThreshold()) {
    lines::NoneMetMargins(round, round.Settings());
  }
  return pass.Counted();
}

bool IsBetterCandidatePossible(const Round& round, std::int32_t current) {
  for (const auto& entry : round.candidates) {
    const CandidateMargins margins = round.Margins(*entry, current);
    if (entry->GetLQ() < margins.qualityThreshold) continue;
    if (!PassesPointTest(entry->GetScore(false, round.scores), current, margins.scoreThreshold))
      continue;
    if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(entry.get(), &round.adapter))
      return true;
    lines::BetterIsElsewhere(round, *entry);
  }
  return false;
}

CSmartPointer<CWlanBssEntry> FindSuggestedByEvent(const Round& round, const WString& ssid,
                                                  const MacAddress& bssid) {
  CEtwTrellis& reporter = round.config->m_Etw;
  const BssEntryList& entries = round.candidates;
  const WString bssidText = MacText(bssid);
  if (!reporter.GetMemo().HasAp(ssid, bssidText)) {
    lines::NotTheSuggested(round, bssidText);
    return nullptr;
  }
  if (entries.empty()) {
    lines::SuggestedInEmptyList(round);
    return nullptr;
  }
  if (entries.front()->m_SSIDW == ssid && entries.front()->GetBssid() == bssid) {
    lines::SuggestedInFront(round);
    return entries.front();
  }
  const auto found = std::find_if(entries.begin() + 1, entries.end(),
                                  [&](const auto& one) { return one->GetBssid() == bssid; });
  if (found == entries.end()) {
    lines::SuggestedNotInList(round);
    return nullptr;
  }
  lines::SuggestedInList(round);
  return *found;
}

}  // namespace corvane
