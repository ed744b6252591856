// The decision of a connected adapter.

#include "config/settings/global_config_container.h"
#include "core/log/log.h"
#include "select/policy/policy.h"
#include "select/policy/policy_text.h"
#include "wlan/binding/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kDecisionLog = DBG(16) | DBG(17);
constexpr std::uint64_t kFastScanLog = DBG(3);
constexpr std::int32_t kForcedScans = 3;

// A busy link, or a call in progress, is left alone.
bool IsLinkBusy(const CQUAYInterfaceConfig& config, double mbps) {
  return CGlobalConfigContainer::GetInstance().m_rt_audio || !(mbps < config.m_rate_gate_high);
}

}  // namespace

bool CGlobalQUAYPolicy::IsConnectedToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                          const ConnectionFacts& facts,
                                          CSmartPointer<CWlanBssEntry>* best) {
  best->reset();
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
  if (entries.size() < 2) return false;
  *best = entries[1];
  return entries[1]->GetBssid() == facts.bssid;
}

void CGlobalQUAYPolicy::MakeChoice_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                             const ConnectionFacts& facts) {
  if (!pIf) {
    LOG_DEBUG(DBG(18), u"MakeChoice_connected: pIf is NULL!\n");
    return;
  }
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  CSmartPointer<CWlanBssEntry> best;
  const bool alreadyBest = IsConnectedToBest(pIf, entries, facts, &best);

  std::int32_t score = pIf->GetScoreFromBssEntry(facts.ssid, facts.bssid, false);
  if (score < 0) {
    score = pIf->m_backup_score;
    LOG_ADAPTER(idx, kDecisionLog,
                u"\n[%i] MakeChoice_connected: IF-STATE: %i [Connected to SSID: %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}] USING BACKUP SCORE: %i ____________________\n",
                idx, pIf->GetInterfaceState(), facts.ssid, MAC_ARGS(facts.bssid), score);
  }
  const double mbps = pIf->GetTrafficMbps();

  if (alreadyBest) {
    pIf->ClearAllCandidateCounters(
        "MakeChoice_connected - ALREADY CONNECTED TO BEST (DO NOTHING / CLEAR)");
    pIf->RollSwitchPeriod();
    if (best) {
      LOG_ADAPTER(idx, kDecisionLog,
                  u"\n[%i] INTERFACE STATE: %i [already CONNECTED to preferred AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
                  idx, pIf->GetInterfaceState(), facts.ssid, MAC_ARGS(facts.bssid), facts.quality, mbps);
    } else {
      LOG_ADAPTER(idx, kDecisionLog,
                  u"\n[%i] INTERFACE STATE: %i [CONNECTED to only AP - SSID: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] Channel Unknown\n",
                  idx, pIf->GetInterfaceState(), facts.ssid, MAC_ARGS(facts.bssid), facts.quality, mbps);
    }
    return;
  }

  if (IsLinkBusy(*config, mbps)) {
    LOG_ADAPTER(idx, kDecisionLog,
                u"\n[%i][DEFERRED] IF-STATE: %i [CONNECTED to non preferred SSID %s, HOWEVER Connected "
                u"Bitrate too high: %0.3lf > %0.3lf] ...\n",
                idx, pIf->GetInterfaceState(), facts.ssid, mbps, config->m_rate_gate_high.load());
    pIf->RollSwitchPeriod();
    return;
  }

  CSmartPointer<CWlanBssEntry> qualifier;
  CandidateSummary summary;
  if (!IncrementCandidateCounters(pIf, facts.bssid, entries, score, &qualifier, &summary)) {
    if (qualifier) {
      LOG_ADAPTER(idx, kDecisionLog,
                  u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to diff SSID %s vs preferred "
                  u"%s(center %u)(or other), waiting: counter %i ++> %i]\n",
                  idx, pIf->GetInterfaceState(), mbps, facts.ssid, qualifier->m_SSIDW,
                  qualifier->GetFrequencyKhz(), qualifier->GetCandidate(), RequiredCandidateCount());
    } else {
      LOG_ADAPTER(idx, kDecisionLog,
                  u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to SSID %s with NO Other "
                  u"Qualifying AP]\n",
                  idx, pIf->GetInterfaceState(), mbps, facts.ssid);
    }
    pIf->RollSwitchPeriod();
    return;
  }

  if (SwitchConnectionToBest(pIf, entries, score, facts)) {
    pIf->ClearAllCandidateCounters("AFTER SUCCESSFUL SwitchConnectionToBest()");
    if (config->IsAutoswitch()) {
      LOG_ADAPTER(idx, kDecisionLog, u"\n[%i] Connection to new preferred Network succeeded\n", idx);
    }
  } else {
    LOG_ADAPTER(idx, kDecisionLog,
                u"\n[%i] Connection to preferred Network failed, trying to restore %s\n", idx, facts.ssid);
    pIf->ConnectToNetwork(facts.ssid);
    LOG_ADAPTER(idx, kDecisionLog, u"\n[%i] Restoring %s succeeded\n", idx, facts.ssid);
  }
  if (config->m_force_scan_counter > 0) {
    config->m_force_scan_counter = 0;
    LOG_ADAPTER(idx, kDecisionLog, u"\n[%i] Clear Force Counter\n", idx);
  }
}

void CGlobalQUAYPolicy::EnabledFastScan_connected(CWlanInterface* pIf, const BssEntryList& entries,
                                                  const ConnectionFacts& facts) {
  if (!pIf) {
    LOG_DEBUG(DBG(18), u"EnabledFastScan_connected: pIf is NULL!\n");
    return;
  }
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  const std::int32_t state = pIf->GetInterfaceState();
  const double mbps = pIf->GetTrafficMbps();

  CSmartPointer<CWlanBssEntry> best;
  const bool alreadyBest = IsConnectedToBest(pIf, entries, facts, &best);
  if (!best) {
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i -- pBestCandidate is NULL!\n", idx,
                state);
    return;
  }
  if (alreadyBest) {
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [already CONNECTED to preferred AP "
                u"- SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO NOTHING\n",
                idx, state, facts.ssid, MAC_ARGS(facts.bssid), facts.quality, mbps);
    return;
  }
  std::int32_t score = pIf->GetScoreFromBssEntry(facts.ssid, facts.bssid, false);
  if (score < 0 && !facts.ssid.empty()) score = pIf->m_backup_score;
  const bool betterPossible = IsBetterCandidatePossible(pIf, entries, score);

  if (IsLinkBusy(*config, mbps)) {
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected][DEFERRED] IF-STATE: %i [CONNECTED to non preferred "
                u"SSID %s, HOWEVER Connected Bitrate too high: %0.3lf > %0.3lf] ...\n",
                idx, state, facts.ssid, mbps, config->m_rate_gate_high.load());
    return;
  }
  const std::int32_t forced = config->m_force_scan_counter;
  if (!betterPossible) {
    const char16_t* outcome = forced > 0 ? u"[Cleared F-COUNTER]" : u"[F-COUNTER already 0]";
    config->m_force_scan_counter = 0;
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s] "
                u"!IsBetterCandidatePossible() - DO NOTHING %s\n",
                idx, state, facts.ssid, outcome);
  } else if (forced != 0) {
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s] F-COUNT %i already "
                u"nonzero\n",
                idx, state, facts.ssid, forced);
  } else {
    LOG_ADAPTER(idx, kFastScanLog,
                u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] CALLING "
                u"SetForceScanCounter(3)\n",
                idx, state, facts.ssid, mbps);
    config->m_force_scan_counter = kForcedScans;
  }
}

}  // namespace corvane
