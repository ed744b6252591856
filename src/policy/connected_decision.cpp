// The decision of a connected adapter.

#include "model/base_netname.h"
#include "policy/bss_entry_reports.h"
#include "policy/decisions.h"
#include "policy/policy_log.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "settings/global_config_container.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

// Shows beside each entry whether its network looks like a band of the connected one; changes
// nothing.
void LogFirstLetters(const Round& round) {
  const log::Open open(round.idx, kCandidateDetailLog);
  if (!open) return;
  WString connected = round.facts.ssid;
  StripBandWord(&connected);
  for (const auto& entry : round.candidates) {
    const bool match = !connected.empty() && !entry->m_BaseNetname.empty() &&
                       connected.front() == entry->m_BaseNetname.front();
    LOG_ADAPTER(round.idx, kCandidateDetailLog, u"[%i] [_DEBUG_][FIRST LETTER %s] %s, %s\n",
                round.idx, match ? u"MATCH" : u"MISMATCH", connected, entry->m_BaseNetname);
  }
}

class ConnectedDecision {
 public:
  explicit ConnectedDecision(const Round& round)
      : m_Round(round), m_Mbps(round.adapter.GetTrafficMbps()), m_Best(IsConnectedToBest(round)) {}

  void Run() {
    const std::int32_t score = ConnectedScore();
    if (m_Best.isConnected) {
      StayOnBest();
    } else if (IsLinkBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
                          m_Round.config->m_rate_gate_high)) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"\n[%i][DEFERRED] IF-STATE: %i [CONNECTED to non preferred SSID %s, HOWEVER Connected "
          u"Bitrate too high: %0.3lf > %0.3lf] ...\n",
          m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid, m_Mbps,
          m_Round.config->m_rate_gate_high.load());
      RoundWatches::Step(m_Round.idx, RoundStep::kLinkBusy);
      m_Round.adapter.RollSwitchPeriod();
    } else if (HasReadyCandidate(score)) {
      Switch(score);
    }
  }

 private:
  std::int32_t ConnectedScore() {
    const std::int32_t score =
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, false);
    if (score >= 0) return score;
    const std::int32_t backup = m_Round.adapter.m_backup_score;
    LOG_ADAPTER(m_Round.idx, kPolicyLog,
                u"\n[%i] MakeChoice_connected: IF-STATE: %i [Connected to SSID: %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}] USING BACKUP SCORE: %i ____________________\n",
                m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
                MAC_ARGS(m_Round.facts.bssid), backup);
    return backup;
  }

  void StayOnBest() {
    m_Round.adapter.ClearAllCandidateCounters(
        "MakeChoice_connected - ALREADY CONNECTED TO BEST (DO NOTHING / CLEAR)");
    m_Round.adapter.RollSwitchPeriod();
    RoundWatches::Step(m_Round.idx, m_Best.entry ? RoundStep::kOnBest : RoundStep::kOnUnlisted);
    const bool eventMode = m_Round.settings.IsEventMode();
    if (m_Best.entry) {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [already CONNECTED to preferred AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
                  m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
                  MAC_ARGS(m_Round.facts.bssid), m_Round.facts.quality, m_Mbps);
      if (eventMode) TellBest();
    } else {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [CONNECTED to only AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] Channel Unknown\n",
                  m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Round.facts.ssid,
                  MAC_ARGS(m_Round.facts.bssid), m_Round.facts.quality, m_Mbps);
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
    CSmartPointer<CWlanBssEntry> qualifier;
    CandidateSummary summary;
    if (IncrementCandidateCounters(m_Round, score, &qualifier, &summary)) {
      return true;
    }
    if (qualifier) {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to diff SSID %s vs preferred "
          u"%s(center %u)(or other), waiting: counter %i ++> %i]\n",
          m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Mbps, m_Round.facts.ssid,
          qualifier->m_SSIDW, qualifier->GetFrequencyKhz(), qualifier->PeekCandidate(),
          m_Round.settings.required);
    } else {
      LOG_ADAPTER(
          m_Round.idx, kPolicyLog,
          u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to SSID %s with NO Other "
          u"Qualifying AP]\n",
          m_Round.idx, m_Round.adapter.GetInterfaceStateForLog(), m_Mbps, m_Round.facts.ssid);
    }
    RoundWatches::Step(m_Round.idx, qualifier ? RoundStep::kRipening : RoundStep::kNoQualifier,
                       qualifier.get());
    m_Round.adapter.RollSwitchPeriod();
    return false;
  }

  // A failing restore ends the round; the adapter then stays disconnected until it is decided anew.
  void Switch(std::int32_t score) {
    if (SwitchConnectionToBest(m_Round, score)) {
      m_Round.adapter.ClearAllCandidateCounters("AFTER SUCCESSFUL SwitchConnectionToBest()");
      if (!m_Round.settings.passive) {
        LOG_ADAPTER(m_Round.idx, kPolicyLog,
                    u"\n[%i] Connection to new preferred Network succeeded\n", m_Round.idx);
      }
    } else {
      LOG_ADAPTER(m_Round.idx, kPolicyLog,
                  u"\n[%i] Connection to preferred Network failed, trying to restore %s\n",
                  m_Round.idx, m_Round.facts.ssid);
      RoundWatches::Step(m_Round.idx, RoundStep::kRestore);
      m_Round.adapter.ConnectToNetwork(m_Round.facts.ssid);
      LOG_ADAPTER(m_Round.idx, kPolicyLog, u"\n[%i] Restoring %s succeeded\n", m_Round.idx,
                  m_Round.facts.ssid);
    }
    if (m_Round.config->m_force_scan_counter > 0) {
      m_Round.config->m_force_scan_counter = 0;
      LOG_ADAPTER(m_Round.idx, kPolicyLog, u"\n[%i] Clear Force Counter\n", m_Round.idx);
    }
  }

  const Round& m_Round;
  const double m_Mbps;
  const BestChoice m_Best;
};

}  // namespace

BestChoice IsConnectedToBest(const Round& round) {
  BestChoice best;
  const ConnectionFacts& facts = round.facts;
  LogFirstLetters(round);
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
