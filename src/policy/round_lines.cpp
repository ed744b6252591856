#include "policy/round_lines.h"

#include "model/base_netname.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "settings/global_config_container.h"

namespace corvane::lines {

namespace {

constexpr std::uint64_t kScoreLog = DBG(37);
constexpr std::uint64_t kFastScanLog = DBG(3);

void Step(const Round& round, RoundStep step, CWlanBssEntry* about = nullptr) {
  RoundWatches::Step(round.idx, step, about);
}

std::int32_t State(const Round& round) { return round.adapter.GetInterfaceStateForLog(); }

// "" in autoswitch; else the last suggestion, with its SSID or without.
WString LastSuggestionText(const Round& round, bool withSsid) {
  if (!round.settings.passive) return {};
  const PolicyMemory& memory = round.memory;
  const WString ssid = withSsid ? memory.m_last_suggested_ssid + u" " : WString();
  return Format(u"[last %s: %s%s, pos: %i]", round.settings.popup ? u"pop" : u"etw", ssid,
                memory.m_last_suggested_bssid, memory.m_last_suggested_pos);
}

}  // namespace

void Settings(const Round& round) {
  const PolicyMemory& memory = round.memory;
  const CQUAYInterfaceConfig& config = *round.config;
  const RoundSettings& s = round.settings;
  const auto points = static_cast<std::int32_t>(config.m_APScoreThreshold.load());
  const int latch = config.m_LatchToPrivate;
  if (!s.passive) {
    LOG_ADAPTER(round.idx, kPolicyLog,
                u"[%i] LQCT %lu, NS %i, Pref Priv %i, Latch to Priv %i, SD %i, avg qbss scores: %i "
                u"[2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
                round.idx, s.qualityThreshold, s.networkSwitching, s.preferPrivate, latch, points,
                config.m_AvgQBSSScore2.load(), config.m_AvgQBSSScore5.load(),
                memory.m_consec_disconnects, round.facts.connected);
    return;
  }
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i][PASSIVE - %s] LQCT %lu, NS %i, SD %i, Pref Priv %i, Latch to Priv %i, avg qbss "
      u"scores: %i [2Ghz], %i [5Ghz], consec disc %lu, connected=%i\n\n",
      round.idx,
      memory.m_last_suggested_pos < 0 ? WString(u"no suggestion")
                                      : u"last '" + memory.m_last_suggested_ssid + u"'",
      s.qualityThreshold, s.networkSwitching, points, s.preferPrivate, latch,
      config.m_AvgQBSSScore2.load(), config.m_AvgQBSSScore5.load(), memory.m_consec_disconnects,
      round.facts.connected);
}

void ConnectedNotInRange(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] CGlobalQUAYPolicy::ExecutePolicies: ERROR! %s not found in list of in-range "
              u"candidates\n",
              round.idx, round.facts.ssid);
}

void Sorted(const Round& round, const BssEntryList& entries, const char* list) {
  const log::Open open(round.idx, kCandidateDetailLog);
  if (!open) return;
  for (const auto& entry : entries)
    LOG_ADAPTER(round.idx, kCandidateDetailLog, u"%s", SortLine(round, *entry, list));
}

void RowNotAdded(const Round& round) { LOG_ERROR(u"[%i] -->FALIED to add to CSV\n", round.idx); }

void RowsNotPublished(const Round& round, const char16_t* value) {
  LOG_ERROR(u"[%i] ===========> SetRegistry_%s() FAILED!\n", round.idx, value);
}

void Scores(const Round& round) {
  const log::Open open(round.idx, kScoreLog);
  if (!open) return;
  for (const auto& entry : round.candidates) {
    const MacAddress mac = entry->GetBssid();
    LOG_ADAPTER(round.idx, kScoreLog,
                u"[%i] SCORE LOG: [% 16s] {%02x-%02x-%02x-%02x-%02x-%02x} ++ %hs%hs\n", round.idx,
                entry->m_SSIDW, MAC_ARGS(mac), entry->ScoreLog(), entry->FinalScoreLog());
  }
}

void SkippedChoice(const Round& round, const char16_t* why) {
  const RoundSettings& s = round.settings;
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i][Pilot=%i][SKIP CHOICE - %s][ENABLED %i/%i][ROAM-E %i/%i]\n", round.idx,
              s.pilot, why, s.enabled, s.serviceEnabled, s.roaming, s.gatewayRoaming);
}

void NotPegged(int idx, const char* tag) {
  LOG_ADAPTER(idx, kPolicyLog,
              u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: NOT CONNECTED: set "
              u"PEG=false, assoc SQ=-1, last BSS SQ=-1\n",
              idx, tag);
}

void Pegged(int idx, const char* tag, std::uint32_t from, std::uint32_t to) {
  LOG_ADAPTER(idx, kPolicyLog,
              u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: SET PEG BEACON-SQ: change "
              u"%lu --to--> %lu\n",
              idx, tag, from, to);
}

void PegCleared(int idx, const char* tag, std::uint32_t quality) {
  LOG_ADAPTER(idx, kPolicyLog,
              u"\n[%i]CGlobalQUAYPolicy::UpdateAssociateLQPegging[%S]: CLEAR PEG SQ [USE "
              u"ASSOCIATION SQ]: keep %lu\n",
              idx, tag, quality);
}

// --- The choice

void Disabled(const Round& round) {
  const RoundSettings& s = round.settings;
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i][Pilot=%i][_DISABLED MODE_][ENABLED %i/%i][ROAM-E %i/%i]\n", round.idx,
              s.pilot, s.enabled, s.serviceEnabled, s.roaming, s.gatewayRoaming);
}

void LeavingDenied(const Round& round) {
  Step(round, RoundStep::kDeniedLeft);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"\n[%i] IF-STATE: %i [Disconnecting DENYLIST AP: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
      round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid));
}

void LeftDenied(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] IF-STATE: %i - Extra sleep after Denylist disconnect...\n", round.idx,
              State(round));
}

void NotLeftDenied(const Round& round, const char* kind, const char* what) {
  LOG_ERROR(u"CGlobalQUAYPolicy::MakeChoice:[disconn denylist] %S: %S, SSID=%s", kind, what,
            round.facts.ssid);
}

void NoCandidates(const Round& round) {
  Step(round, RoundStep::kNoCandidates);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] CGlobalQUAYPolicy::MakeChoice:BssEntriesList [SORTED LIST] is empty... abort! "
              u"[%s]",
              round.idx, round.facts.ssid);
}

void RoamingInhibited(const Round& round, std::uint64_t since) {
  Step(round, RoundStep::kRoamingInhibit);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"\n[%i] [SKIP CHOICE] - ROAMING INHIBITED %I64u ticks [age: %0.2lf secs][disconnected "
      u"%0.2lf secs]\n",
      round.idx, since, static_cast<double>(round.config->GetRoamingInhibitAgeMs()) / 1000.0,
      static_cast<double>(round.adapter.Link().DisconnectedAgeMs()) / 1000.0);
}

void SuggestionWithdrawn(const Round& round) { Step(round, RoundStep::kSuggestionWithdrawn); }

void RedNetworksSeen(const Round& round, RedNetworks verdict, std::size_t networks,
                     std::int32_t forced) {
  switch (verdict) {
    case RedNetworks::kFew:
      LOG_ADAPTER(
          round.idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::MakeChoice:[ONLY %u RED NETWORK(s) FOUND] F-COUNTER = %i\n",
          round.idx, networks, forced);
      return;
    case RedNetworks::kAlreadyForced:
      LOG_ADAPTER(
          round.idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] F-COUNTER already %i\n",
          round.idx, networks, forced);
      return;
    case RedNetworks::kForceScans:
      Step(round, RoundStep::kSurroundingsChanged);
      LOG_ADAPTER(
          round.idx, kPolicyLog,
          u"[%i] CGlobalQUAYPolicy::MakeChoice:[%u RED NETWORK(s) FOUND] SET F-COUNTER to 3\n",
          round.idx, networks);
      return;
  }
}

void FoundStale(const Round& round) { Step(round, RoundStep::kStale); }

void SkippedStale(const Round& round, std::uint32_t intervalSecs) {
  const CWlanInterface& adapter = round.adapter;
  const RoundSettings& s = round.settings;
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i][Pilot=%i][SKIP CHOICE & STALE: scanLoop %i][interval %lu, F-COUNTER %i, "
              u"%I64u secs][ifstate %i][LQ %lu >= %lu][ENABLED %i/%i][ROAM-E %i/%i]%s\n",
              round.idx, s.pilot, adapter.IsScanFresh(), intervalSecs,
              round.config->m_force_scan_counter.load(),
              (Os().clock.GetTickCount64() - round.memory.m_last_score_notify_tick) / 1000,
              State(round), round.facts.quality, s.qualityThreshold, s.enabled, s.serviceEnabled,
              s.roaming, s.gatewayRoaming, LastSuggestionText(round, true));
}

void WeakConnection(const Round& round, Emergency verdict, std::int32_t forced) {
  switch (verdict) {
    case Emergency::kNone:
      return;
    case Emergency::kForceScans:
      Step(round, RoundStep::kWeakConnection);
      LOG_ADAPTER(
          round.idx, kPolicyLog,
          u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
          u"%lu] CALLING SetForceScanCounter(3)\n",
          round.idx, State(round), round.facts.ssid, round.facts.quality,
          round.settings.qualityThreshold);
      return;
    case Emergency::kAlreadyForced:
      LOG_ADAPTER(
          round.idx, kPolicyLog,
          u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s][EMERGENCY: LQ %lu < "
          u"%lu] F-COUNT %i already nonzero\n",
          round.idx, State(round), round.facts.ssid, round.facts.quality,
          round.settings.qualityThreshold, forced);
      return;
  }
}

void Deciding(const Round& round) {
  const RoundSettings& s = round.settings;
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"\n[%i][Pilot=%i][IF-State %i][wk %i][%s][LQ %lu vs %lu][ENABLED %i/%i][ROAM-E %i/%i]"
      u"[ALLOWSTALE=%i]%s\n",
      round.idx, s.pilot, State(round),
      WeekSince(CGlobalConfigContainer::GetInstance().m_InstallTime, platform::UnixSecondsNow()),
      s.passive ? u"MAKE CHOICE - PASSIVE" : u"MAKE CHOICE", round.facts.quality,
      s.qualityThreshold, s.enabled, s.serviceEnabled, s.roaming, s.gatewayRoaming, 0,
      LastSuggestionText(round, false));
}

void StateUnclear(const Round& round, std::int32_t state) {
  Step(round, RoundStep::kStateUnclear);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [no normal decision check]..............\n", round.idx,
              state);
}

void AfterDeny(const Round& round, DenyDeferral deferral, std::uint64_t until, std::uint64_t now) {
  switch (deferral) {
    case DenyDeferral::kNone:
      return;
    case DenyDeferral::kWait:
      Step(round, RoundStep::kDeniedJustLeft);
      LOG_ADAPTER(round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRING DECISION due to "
                  u"prior Denylist disconnect, expire tick time=%I64u, now=%I64u",
                  round.idx, until, now);
      return;
    case DenyDeferral::kOver:
      LOG_ADAPTER(round.idx, kPolicyLog,
                  u"[%i] CGlobalQUAYPolicy::MakeChoice:[disconnected] DEFERRMENT NOT ENFORCED... "
                  u"expire time=%I64u, now=%I64u",
                  round.idx, until, now);
      return;
  }
}

void DecidesDisconnected(const Round& round, std::uint32_t count) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] CGlobalQUAYPolicy::MakeChoice: _CALLING_ MakeChoice_disconnected() [consec "
              u"discon %lu == %lu]\n",
              round.idx, count, count);
}

void CountsDisconnects(const Round& round, std::uint32_t count) {
  Step(round, RoundStep::kCountsDisconnects);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] CGlobalQUAYPolicy::MakeChoice: _DEFER_ MakeChoice_disconnected() [consec "
              u"discon %lu < %lu]\n",
              round.idx, count, kDisconnectsForDecision);
}

void DisconnectedButDisabled(const Round& round) {
  Step(round, RoundStep::kDisabled);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i]Interface is disconnected, but _WE ARE DISABLED_: %i/%i\n", round.idx,
              round.settings.enabled, round.settings.serviceEnabled);
}

void WiredLan(const Round& round, std::uint32_t lans) {
  Step(round, RoundStep::kWiredLan);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i]Interface is disconnected, BUT we have %u CONNECTED LAN(s)... _____>>> do nothing "
      u"<_____\n",
      round.idx, lans);
}

void SwitchingOff(const Round& round) {
  Step(round, RoundStep::kSwitchingOff);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i]Interface is disconnected with Networking Switching is disabled ... do nothing\n",
      round.idx);
}

// --- With a connection

// Shows beside each entry whether its network looks like a band of the connected one.
void FirstLetters(const Round& round) {
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

void UsingBackupScore(const Round& round, std::int32_t score) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] MakeChoice_connected: IF-STATE: %i [Connected to SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}] USING BACKUP SCORE: %i ____________________\n",
              round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid), score);
}

void OnBest(const Round& round, double mbps) {
  Step(round, RoundStep::kOnBest);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [already CONNECTED to preferred AP - SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
              round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid),
              round.facts.quality, mbps);
}

void OnUnlisted(const Round& round, double mbps) {
  Step(round, RoundStep::kOnUnlisted);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [CONNECTED to only AP - SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] Channel Unknown\n",
              round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid),
              round.facts.quality, mbps);
}

void LinkBusy(const Round& round, double mbps) {
  Step(round, RoundStep::kLinkBusy);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"\n[%i][DEFERRED] IF-STATE: %i [CONNECTED to non preferred SSID %s, HOWEVER Connected "
      u"Bitrate too high: %0.3lf > %0.3lf] ...\n",
      round.idx, State(round), round.facts.ssid, mbps, round.config->m_rate_gate_high.load());
}

void Ripening(const Round& round, CWlanBssEntry& entry, std::int32_t current, double mbps) {
  Step(round, RoundStep::kRipening, &entry);
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to diff SSID %s vs preferred "
      u"%s(center %u)(or other), waiting: counter %i ++> %i]\n",
      round.idx, State(round), mbps, round.facts.ssid, entry.m_SSIDW, entry.GetFrequencyKhz(),
      entry.PeekCandidate(), round.Required(entry, current));
}

void NoQualifier(const Round& round, double mbps) {
  Step(round, RoundStep::kNoQualifier);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] [DEFERRED] IF-STATE: %i [%0.2lf mbps][CONNECTED to SSID %s with NO Other "
              u"Qualifying AP]\n",
              round.idx, State(round), mbps, round.facts.ssid);
}

void MoveSucceeded(const Round& round) {
  if (round.settings.passive) return;
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i] Connection to new preferred Network succeeded\n",
              round.idx);
}

void Restoring(const Round& round) {
  Step(round, RoundStep::kRestore);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] Connection to preferred Network failed, trying to restore %s\n", round.idx,
              round.facts.ssid);
}

void Restored(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i] Restoring %s succeeded\n", round.idx,
              round.facts.ssid);
}

void ForcedScansCleared(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i] Clear Force Counter\n", round.idx);
}

// --- Stale rounds with a connection

void FastScanWithoutBest(const Round& round) {
  LOG_ADAPTER(round.idx, kFastScanLog,
              u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i -- pBestCandidate is NULL!\n",
              round.idx, State(round));
}

void FastScanOnBest(const Round& round, double mbps) {
  Step(round, RoundStep::kOnBest);
  LOG_ADAPTER(
      round.idx, kFastScanLog,
      u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [already CONNECTED to preferred AP "
      u"- SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO NOTHING\n",
      round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid), round.facts.quality,
      mbps);
}

void IgnoresOldSuggestion(const Round& round, bool matches, double mbps) {
  LOG_ADAPTER(
      round.idx, kFastScanLog,
      u"\n[%i][EnabledFastScan_connected][BMLS=%i/IBP=1/LSOAL=1] IF-STATE: %i [CONNECTED to %s, "
      u"Bitrate: %0.3lf] IGNORE BestMatchesLastSuggestion due to Suggest == Allowlist\n",
      round.idx, matches, State(round), round.facts.ssid, mbps);
}

void FastScanEnded(const Round& round, FastScan outcome, CWlanBssEntry& best, double mbps,
                   std::int32_t forced) {
  const WString& ssid = round.facts.ssid;
  switch (outcome) {
    case FastScan::kAlreadySuggested:
      Step(round, RoundStep::kAlreadySuggested, &best);
      LOG_ADAPTER(
          round.idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected] INTERFACE STATE: %i [not conn'd SAME/NO-REPEAT "
          u"pref-AP SSID: %s {%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps] - DO NOTHING\n",
          round.idx, State(round), ssid, MAC_ARGS(round.facts.bssid), round.facts.quality, mbps);
      return;
    case FastScan::kBusy:
      Step(round, RoundStep::kLinkBusy, &best);
      LOG_ADAPTER(
          round.idx, kFastScanLog,
          u"\n[%i][EnabledFastScan_connected][DEFERRED] IF-STATE: %i [CONNECTED to non preferred "
          u"SSID %s, HOWEVER Connected Bitrate too high: %0.3lf > %0.3lf] ...\n",
          round.idx, State(round), ssid, mbps, round.config->m_rate_gate_high.load());
      return;
    case FastScan::kNothingBetter:
      Step(round, RoundStep::kNothingBetter, &best);
      LOG_ADAPTER(round.idx, kFastScanLog,
                  u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: "
                  u"%0.3lf] !IsBetterCandidatePossible() - DO NOTHING %s\n",
                  round.idx, State(round), ssid, mbps,
                  forced > 0 ? u"[Cleared F-COUNTER]" : u"[F-COUNTER already 0]");
      return;
    case FastScan::kAlreadyForced:
      Step(round, RoundStep::kBetterPossible, &best);
      LOG_ADAPTER(round.idx, kFastScanLog,
                  u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: "
                  u"%0.3lf] F-COUNT %i already nonzero\n",
                  round.idx, State(round), ssid, mbps, forced);
      return;
    case FastScan::kForceScans:
      Step(round, RoundStep::kBetterPossible, &best);
      LOG_ADAPTER(round.idx, kFastScanLog,
                  u"\n[%i][EnabledFastScan_connected] IF-STATE: %i [CONNECTED to %s, Bitrate: "
                  u"%0.3lf] CALLING SetForceScanCounter(3)\n",
                  round.idx, State(round), ssid, mbps);
      return;
  }
}

void OnSuggestedEarlier(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] INTERFACE STATE: %i [EARLIER already CONNECTED to suggested AP - SSID: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}][LQ %lu][%0.2lf mbps]\n",
              round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid),
              round.facts.quality, round.adapter.GetTrafficMbps());
}

}  // namespace corvane::lines
