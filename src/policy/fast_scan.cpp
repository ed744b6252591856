// A connected adapter's rounds without fresh scan data: they bump no counters, but may ask for
// scans.

#include "policy/bss_entry_reports.h"
#include "policy/decisions.h"
#include "policy/round_lines.h"
#include "policy/standing_suggestion.h"
#include "policy/suggesting.h"
#include "rules/choice_rules.h"
#include "settings/global_config_container.h"

namespace corvane {

namespace {

class FastScanRound {
 public:
  explicit FastScanRound(const Round& round)
      : m_Round(round), m_Mbps(round.adapter.GetTrafficMbps()), m_Best(IsConnectedToBest(round)) {}

  void Run() {
    if (!m_Best.entry) {
      lines::FastScanWithoutBest(m_Round);
      return;
    }
    if (m_Best.isConnected) {
      lines::FastScanOnBest(m_Round, m_Mbps);
      return;
    }
    Act(JudgeFastScan(Gather()));
  }

 private:
  FastScanInputs Gather() {
    FastScanInputs in;
    in.matchesSuggestion = MatchesSuggestion();
    std::int32_t score =
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, false);
    if (score < 0 && !m_Round.facts.ssid.empty()) score = m_Round.adapter.Link().BackupScore();
    in.betterPossible = IsBetterCandidatePossible(m_Round, score);
    in.openSuggestion = IsOpenSuggestion(
        ReadStandingSuggestion(*m_Round.config), m_Best.entry->m_SSIDW, m_Best.entry->m_BSSIDText,
        m_Round.settings.forceAutoConnect, m_Round.adapter.IsConnected());
    if (in.openSuggestion) {
      lines::IgnoresOldSuggestion(m_Round, in.matchesSuggestion, m_Mbps);
    }
    in.linkBusy = m_Round.profile.IsBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
                                         m_Round.config->m_rate_gate_high);
    in.forcedScans = m_Round.config->m_force_scan_counter;
    return in;
  }

  bool MatchesSuggestion() {
    if (m_Round.settings.IsEventMode()) {
      return FindSuggestedByEvent(m_Round, m_Best.entry->m_SSIDW, m_Best.entry->GetBssid()) !=
             nullptr;
    }
    return m_Round.settings.popup && m_Round.config->m_Popup.GetMemo().HasAp(
                                         m_Best.entry->m_SSIDW, m_Best.entry->m_BSSIDText);
  }

  void Act(FastScan outcome) {
    const std::int32_t forced = m_Round.config->m_force_scan_counter;
    if (outcome == FastScan::kNothingBetter) m_Round.config->m_force_scan_counter = 0;
    if (outcome == FastScan::kForceScans) m_Round.config->m_force_scan_counter = kForcedScans;
    lines::FastScanEnded(m_Round, outcome, *m_Best.entry, m_Mbps, forced);
  }

  const Round& m_Round;
  const double m_Mbps;
  const BestChoice m_Best;
};

}  // namespace

void EnabledFastScan_connected(const Round& round) { FastScanRound(round).Run(); }

void CheckEarlySuggestedBest(const Round& round) {
  const ConnectionFacts& facts = round.facts;
  const auto entry = FindSuggestedByEvent(round, facts.ssid, facts.bssid);
  if (!entry) return;
  lines::OnSuggestedEarlier(round);
  NotifyAlreadyBestAP(*entry, round.config->m_Etw, true);
  ReportSignalQuality(round, *entry);
}

}  // namespace corvane
