// The decision of a connected adapter.

#include "model/base_netname.h"
#include "policy/bss_entry_reports.h"
#include "policy/policy.h"
#include "policy/policy_log.h"
#include "policy/round_watch.h"
#include "policy/suggesting.h"
#include "wlan/wifi_client_container.h"

namespace corvane {

namespace {

// Shows beside each entry whether its network looks like a band of the connected one; changes
// nothing.
void LogFirstLetters(int idx, const BssEntryList& entries, const ConnectionFacts& facts) {
  const log::Open open(idx, kCandidateDetailLog);
  if (!open) return;
  WString connected = facts.ssid;
  StripBandWord(&connected);
  for (const auto& entry : entries) {
    const bool match = !connected.empty() && !entry->m_BaseNetname.empty() &&
                       connected.front() == entry->m_BaseNetname.front();
    LOG_ADAPTER(idx, kCandidateDetailLog, u"[%i] [_DEBUG_][FIRST LETTER %s] %s, %s\n", idx,
                match ? u"MATCH" : u"MISMATCH", connected, entry->m_BaseNetname);
  }
}

class ConnectedDecision {
 public:
  ConnectedDecision(CWlanInterface& adapter, const BssEntryList& entries,
                    const ConnectionFacts& facts)
      : m_Adapter(adapter),
        m_Idx(adapter.GetConfigIdx()),
        m_pConfig(adapter.Config()),
        m_Entries(entries),
        m_Facts(facts),
        m_Mbps(adapter.GetTrafficMbps()) {}

  void Run() {
    const bool alreadyBest =
        CGlobalQUAYPolicy::IsConnectedToBest(&m_Adapter, m_Entries, m_Facts, &m_pBest);
    const std::int32_t score = ConnectedScore();
    if (alreadyBest) {
      StayOnBest();
    } else if (IsLinkBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
                          m_pConfig->m_rate_gate_high)) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"\n[%i][DEFERRED] IF-STATE: %i [CONNECTED to non preferred SSID %s, HOWEVER Connected "
          u"Bitrate too high: %0.3lf > %0.3lf] ...\n",
          m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, m_Mbps,
          m_pConfig->m_rate_gate_high.load());
      RoundWatches::Step(m_Idx, RoundStep::kLinkBusy);
      m_Adapter.RollSwitchPeriod();
    } else if (HasReadyCandidate(score)) {
      Switch(score);
    }
  }

 private:
  std::int32_t ConnectedScore() {
    const std::int32_t score = m_Adapter.GetScoreFromBssEntry(m_Facts.ssid, m_Facts.bssid, false);
    if (score >= 0) return score;
    const std::int32_t backup = m_Adapter.m_backup_score;
    LOG_ADAPTER(m_Idx, kPolicyLog,
                u"\n[%i] MakeChoice_connected: IF-STATE: %i [Connected to SSID: %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}] USING BACKUP SCORE: %i ____________________\n",
                m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid),
                backup);
    return backup;
  }

  void StayOnBest() {
    m_Adapter.ClearAllCandidateCounters(
        "MakeChoice_connected - ALREADY CONNECTED TO BEST (DO NOTHING / CLEAR)");
    m_Adapter.RollSwitchPeriod();
    RoundWatches::Step(m_Idx, m_pBest ? RoundStep::kOnBest : RoundStep::kOnUnlisted);
    const bool eventMode = ModeOf(*m_pConfig).IsEventMode();
    if (m_pBest) {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [already CONNECTED to preferred AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
                  m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid),
                  m_Facts.quality, m_Mbps);
      if (eventMode) TellBest();
    } else {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i] INTERFACE STATE: %i [CONNECTED to only AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] Channel Unknown\n",
                  m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Facts.ssid, MAC_ARGS(m_Facts.bssid),
                  m_Facts.quality, m_Mbps);
      if (eventMode) {
        ReportSignalQuality(*m_pConfig, m_Facts.ssid, MacText(m_Facts.bssid), u"[Channel unknown]",
                            m_Facts.quality);
      }
    }
  }

  // A suggestion that the user has taken up is closed; any other that stands is answered by the
  // best one.
  void TellBest() {
    CSmartPointer<CWlanBssEntry> suggested;
    if (CGlobalQUAYPolicy::IsConnectedToSuggestedBest_ETW(&m_Adapter, m_Entries, m_Facts.ssid,
                                                          m_Facts.bssid, &suggested) &&
        suggested) {
      NotifyAlreadyBestAP(*suggested, m_pConfig->m_Etw, true);
    } else if (!m_pConfig->m_Etw.GetMemo().IsEmpty()) {
      NotifyAlreadyBestAP(*m_pBest, m_pConfig->m_Etw, false);
    }
    ReportSignalQuality(*m_pConfig, *m_pBest, m_Facts.quality);
  }

  bool HasReadyCandidate(std::int32_t score) {
    CSmartPointer<CWlanBssEntry> qualifier;
    CandidateSummary summary;
    if (CGlobalQUAYPolicy::IncrementCandidateCounters(&m_Adapter, m_Facts.bssid, m_Entries, score,
                                                      &qualifier, &summary)) {
      return true;
    }
    if (qualifier) {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to diff SSID %s vs preferred "
          u"%s(center %u)(or other), waiting: counter %i ++> %i]\n",
          m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Mbps, m_Facts.ssid, qualifier->m_SSIDW,
          qualifier->GetFrequencyKhz(), qualifier->PeekCandidate(),
          CGlobalQUAYPolicy::RequiredCandidateCount());
    } else {
      LOG_ADAPTER(
          m_Idx, kPolicyLog,
          u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to SSID %s with NO Other "
          u"Qualifying AP]\n",
          m_Idx, m_Adapter.GetInterfaceStateForLog(), m_Mbps, m_Facts.ssid);
    }
    RoundWatches::Step(m_Idx, qualifier ? RoundStep::kRipening : RoundStep::kNoQualifier,
                       qualifier.get());
    m_Adapter.RollSwitchPeriod();
    return false;
  }

  // A failing restore ends the round; the adapter then stays disconnected until it is decided anew.
  void Switch(std::int32_t score) {
    if (CGlobalQUAYPolicy::SwitchConnectionToBest(&m_Adapter, m_Entries, score, m_Facts)) {
      m_Adapter.ClearAllCandidateCounters("AFTER SUCCESSFUL SwitchConnectionToBest()");
      if (m_pConfig->IsAutoswitch()) {
        LOG_ADAPTER(m_Idx, kPolicyLog, u"\n[%i] Connection to new preferred Network succeeded\n",
                    m_Idx);
      }
    } else {
      LOG_ADAPTER(m_Idx, kPolicyLog,
                  u"\n[%i] Connection to preferred Network failed, trying to restore %s\n", m_Idx,
                  m_Facts.ssid);
      RoundWatches::Step(m_Idx, RoundStep::kRestore);
      m_Adapter.ConnectToNetwork(m_Facts.ssid);
      LOG_ADAPTER(m_Idx, kPolicyLog, u"\n[%i] Restoring %s succeeded\n", m_Idx, m_Facts.ssid);
    }
    if (m_pConfig->m_force_scan_counter > 0) {
      m_pConfig->m_force_scan_counter = 0;
      LOG_ADAPTER(m_Idx, kPolicyLog, u"\n[%i] Clear Force Counter\n", m_Idx);
    }
  }

  CWlanInterface& m_Adapter;
  const int m_Idx;
  const CSmartPointer<CQUAYInterfaceConfig> m_pConfig;
  const BssEntryList& m_Entries;
  const ConnectionFacts& m_Facts;
  const double m_Mbps;
  CSmartPointer<CWlanBssEntry> m_pBest;
};

}  // namespace

bool CGlobalQUAYPolicy::IsConnectedToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                          const ConnectionFacts& facts,
                                          CSmartPointer<CWlanBssEntry>* best) {
  best->reset();
  LogFirstLetters(pIf->GetConfigIdx(), entries, facts);
  if (entries.empty()) {
    pIf->FindBssEntry(facts.ssid, facts.bssid, best);
    return true;
  }
  const auto& first = entries.front();
  if (first->m_SSIDW == facts.ssid && first->GetBssid() == facts.bssid) {
    *best = first;
    return true;
  }
  if (!CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(first.get(), pIf)) {
    *best = first;
    return false;
  }
  RoundWatches::Standing(pIf->GetConfigIdx(), *first, CandidateStanding::kTakenElsewhere);
  if (entries.size() < 2) return false;
  *best = entries[1];
  return entries[1]->GetBssid() == facts.bssid;
}

void CGlobalQUAYPolicy::MakeChoice_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                             const ConnectionFacts& facts) {
  if (!pIf) {
    LOG_DEBUG(kNullInterfaceLog, u"MakeChoice_connected: pIf is NULL!\n");
    return;
  }
  ConnectedDecision(*pIf, entries, facts).Run();
}

}  // namespace corvane
