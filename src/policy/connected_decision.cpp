// The decision of a connected adapter.

#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/bss_entry_reports.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/round_lines.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "settings/global_config_container.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

class ConnectedDecision {
 public:
  explicit ConnectedDecision(const Round& round)
      : m_Round(round), m_Mbps(round.adapter.GetTrafficMbps()), m_Best(IsConnectedToBest(round)) {}

  void Run() {
    const std::int32_t score = ConnectedScore();
    if (m_Best.isConnected) {
      StayOnBest();
    } else if (m_Round.profile.IsBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
                                      m_Round.config->m_rate_gate_high)) {
      lines::LinkBusy(m_Round, m_Mbps);
      m_Round.memory.RollSwitchPeriod();
    } else if (HasReadyCandidate(score)) {
      Switch(score);
    }
  }

 private:
  std::int32_t ConnectedScore() {
    const std::int32_t score =
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, false);
    if (score >= 0) return score;
    const std::int32_t backup = m_Round.adapter.Link().BackupScore();
    lines::UsingBackupScore(m_Round, backup);
    return backup;
  }

  void StayOnBest() {
    m_Round.memory.ClearAllCandidateCounters(
        "MakeChoice_connected - ALREADY CONNECTED TO BEST (DO NOTHING / CLEAR)");
    m_Round.memory.RollSwitchPeriod();
    const bool eventMode = m_Round.settings.IsEventMode();
    if (m_Best.entry) {
      lines::OnBest(m_Round, m_Mbps);
      if (eventMode) TellBest();
    } else {
      lines::OnUnlisted(m_Round, m_Mbps);
      if (eventMode) {
        ReportSignalQuality(m_Round, m_Round.facts.ssid, MacText(m_Round.facts.bssid),
                            u"[Channel unknown]");
      }
    }
  }

  // A suggestion that the user has taken up is closed; any other that stands is answered by the
  // best one.
  void TellBest() {
    if (const auto suggested =
            FindSuggestedByEvent(m_Round, m_Round.facts.ssid, m_Round.facts.bssid)) {
      NotifyAlreadyBestAP(*suggested, m_Round.config->m_Etw, true);
    } else if (!m_Round.config->m_Etw.GetMemo().IsEmpty()) {
      NotifyAlreadyBestAP(*m_Best.entry, m_Round.config->m_Etw, false);
    }
    ReportSignalQuality(m_Round, *m_Best.entry);
  }

  bool HasReadyCandidate(std::int32_t score) {
    const CountedCandidates counted = IncrementCandidateCounters(m_Round, score);
    if (counted.anyReady) return true;
    if (counted.lastQualifier) {
      lines::Ripening(m_Round, *counted.lastQualifier, score, m_Mbps);
    } else {
      lines::NoQualifier(m_Round, m_Mbps);
    }
    m_Round.memory.RollSwitchPeriod();
    return false;
  }

  // A failing restore ends the round; the adapter then stays disconnected until it is decided anew.
  void Switch(std::int32_t score) {
    if (SwitchConnectionToBest(m_Round, score)) {
      const auto claimed = m_Round.memory.Claim().Held();
      m_Round.memory.ClearAllCandidateCounters("AFTER SUCCESSFUL SwitchConnectionToBest()");
      KeepSuggestionClaim(claimed);
      lines::MoveSucceeded(m_Round);
    } else {
      lines::Restoring(m_Round);
      RestoreConnection(m_Round);
      lines::Restored(m_Round);
    }
    if (m_Round.config->m_force_scan_counter > 0) {
      m_Round.config->m_force_scan_counter = 0;
      lines::ForcedScansCleared(m_Round);
    }
  }

  // What the user is asked about stays reserved while the question is open.
  void KeepSuggestionClaim(const std::optional<MacAddress>& claimed) {
    if (!m_Round.profile.GetHabits().claimsFade || !claimed) return;
    if (MacText(*claimed) != m_Round.memory.m_last_suggested_bssid) return;
    m_Round.adapter.Claim().ClaimSuggested(*claimed, Os().clock.GetTickCount64());
  }

  const Round& m_Round;
  const double m_Mbps;
  const BestChoice m_Best;
};

}  // namespace

BestChoice IsConnectedToBest(const Round& round) {
  BestChoice best;
  const ConnectionFacts& facts = round.facts;
  lines::FirstLetters(round);
  if (round.candidates.empty()) {
    best.isConnected = true;
    round.adapter.FindBssEntry(facts.ssid, facts.bssid, &best.entry);
    return best;
  }
  const auto& first = round.candidates.front();
  if (first->m_SSIDW == facts.ssid && first->GetBssid() == facts.bssid) return {true, first};
  if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(first.get(), &round.adapter))
    return {false, first};
  RoundWatches::Standing(round.idx, *first, CandidateStanding::kTakenElsewhere);
  if (round.candidates.size() < 2) return best;
  const auto& second = round.candidates[1];
  return {second->GetBssid() == facts.bssid, second};
}

void MakeChoice_connected(const Round& round) { ConnectedDecision(round).Run(); }

}  // namespace corvane
