// A connected adapter's rounds without fresh scan data: they bump no counters, but may ask for
// scans.

#include "policy/bss_entry_reports.h"
#include "policy/choice_rules.h"
#include "policy/decisions.h"
#include "policy/policy_log.h"
#include "policy/round_watch.h"
#include "policy/standing_suggestion.h"
#include "policy/suggesting.h"
#include "settings/global_config_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kFastScanLog = DBG(3);

RoundStep StepOf(FastScan outcome) {
  switch (outcome) {
    case FastScan::kAlreadySuggested:
      return RoundStep::kAlreadySuggested;
    case FastScan::kBusy:
      return RoundStep::kLinkBusy;
    case FastScan::kNothingBetter:
      return RoundStep::kNothingBetter;
    case FastScan::kAlreadyForced:
    case FastScan::kForceScans:
      break;
  }
  return RoundStep::kBetterPossible;
}

class FastScanRound {
 public:
  explicit FastScanRound(const Round& round)
      : m_Round(round), m_Mbps(round.adapter.GetTrafficMbps()), m_Best(IsConnectedToBest(round)) {}

  void Run() {
    if (!m_Best.entry) {
      LOG_ADAPTER(
          m_Round.idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i -- pBestCandidate is NULL!\n",
          m_Round.idx, State());
      return;
    }
    if (m_Best.isConnected) {
      LOG_ADAPTER(
          m_Round.idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [already CONNECTED to preferred "
          u"AP "
          u"- SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO NOTHING\n",
          m_Round.idx, State(), m_Round.facts.ssid, MAC_ARGS(m_Round.facts.bssid),
          m_Round.facts.quality, m_Mbps);
      RoundWatches::Step(m_Round.idx, RoundStep::kOnBest);
      return;
    }
    Act(JudgeFastScan(Gather()));
  }

 private:
  std::int32_t State() const { return m_Round.adapter.GetInterfaceStateForLog(); }

  FastScanInputs Gather() {
    FastScanInputs in;
    in.matchesSuggestion = MatchesSuggestion();
    std::int32_t score =
        m_Round.adapter.GetScoreFromBssEntry(m_Round.facts.ssid, m_Round.facts.bssid, false);
    if (score < 0 && !m_Round.facts.ssid.empty()) score = m_Round.adapter.m_backup_score;
    in.betterPossible = IsBetterCandidatePossible(m_Round, score);
    in.openSuggestion = IsOpenSuggestion(
        ReadStandingSuggestion(*m_Round.config), m_Best.entry->m_SSIDW, m_Best.entry->m_BSSIDText,
        m_Round.settings.forceAutoConnect, m_Round.adapter.IsConnected());
    if (in.openSuggestion) {
      LOG_ADAPTER(
          m_Round.idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected][BMLS=%i/IBP=1/LSOAL=1] IF-STATE: %i [CONNECTED to "
          u"%s, "
          u"Bitrate: %0.3lf] IGNORE BestMatchesLastSuggestion due to Suggest == Allowlist\n",
          m_Round.idx, in.matchesSuggestion, State(), m_Round.facts.ssid, m_Mbps);
    }
    in.linkBusy = IsLinkBusy(CGlobalConfigContainer::GetInstance().m_rt_audio, m_Mbps,
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
    RoundWatches::Step(m_Round.idx, StepOf(outcome), m_Best.entry.get());
    switch (outcome) {
      case FastScan::kAlreadySuggested:
        LOG_ADAPTER(
            m_Round.idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [not conn'd SAME/NO-REPEAT "
            u"pref-AP SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO "
            u"NOTHING\n",
            m_Round.idx, State(), m_Round.facts.ssid, MAC_ARGS(m_Round.facts.bssid),
            m_Round.facts.quality, m_Mbps);
        return;
      case FastScan::kBusy:
        LOG_ADAPTER(
            m_Round.idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected][DEFERRED] IF-STATE: %i [CONNECTED to non preferred "
            u"SSID %s, HOWEVER Connected Bitrate too high: %0.3lf > %0.3lf] ...\n",
            m_Round.idx, State(), m_Round.facts.ssid, m_Mbps,
            m_Round.config->m_rate_gate_high.load());
        return;
      case FastScan::kNothingBetter:
        m_Round.config->m_force_scan_counter = 0;
        LOG_ADAPTER(
            m_Round.idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"!IsBetterCandidatePossible() - DO NOTHING %s\n",
            m_Round.idx, State(), m_Round.facts.ssid, m_Mbps,
            forced > 0 ? u"[Cleared F-COUNTER]" : u"[F-COUNTER already 0]");
        return;
      case FastScan::kAlreadyForced:
        LOG_ADAPTER(
            m_Round.idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"F-COUNT %i already nonzero\n",
            m_Round.idx, State(), m_Round.facts.ssid, m_Mbps, forced);
        return;
      case FastScan::kForceScans:
        LOG_ADAPTER(
            m_Round.idx, kFastScanLog,
            u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: %0.3lf] "
            u"CALLING SetForceScanCounter(3)\n",
            m_Round.idx, State(), m_Round.facts.ssid, m_Mbps);
        m_Round.config->m_force_scan_counter = kForcedScans;
        return;
    }
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
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [EARLIER already CONNECTED to suggested AP - SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
              round.idx, round.adapter.GetInterfaceStateForLog(), facts.ssid, MAC_ARGS(facts.bssid),
              facts.quality, round.adapter.GetTrafficMbps());
  NotifyAlreadyBestAP(*entry, round.config->m_Etw, true);
  ReportSignalQuality(round, *entry);
}

}  // namespace corvane
