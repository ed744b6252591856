#include "policy/move_lines.h"

#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"

namespace corvane::lines {

namespace {

void Step(const Round& round, RoundStep step, CWlanBssEntry* about = nullptr) {
  RoundWatches::Step(round.idx, step, about);
}

std::int32_t State(const Round& round) { return round.adapter.GetInterfaceStateForLog(); }

RoundStep StepOf(ConnectOutcome outcome) {
  switch (outcome) {
    case ConnectOutcome::kConnected:
      return RoundStep::kConnected;
    case ConnectOutcome::kElsewhere:
      return RoundStep::kElsewhere;
    case ConnectOutcome::kCredentialsAsked:
      return RoundStep::kCredentialsAsked;
    case ConnectOutcome::kFailed:
      break;
  }
  return RoundStep::kConnectFailed;
}

const char* TagOf(ConnectOrigin origin) {
  return origin == ConnectOrigin::kAcceptance ? "[PASSIVE ACCEPTANCE]" : "[UI CONNECT CMD]";
}

}  // namespace

void HeldByMonitorMode(const Round& round, const char* operation, CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  Step(round, RoundStep::kMonitorMode, &entry);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [DISABLED IN MONITOR MODE] %S: _NO_ Connect/Suggest: %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, operation, entry.m_SSIDW, MAC_ARGS(mac));
}

void InhibitedByDialog(const Round& round, const char* operation) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"[%i] CGlobalQUAYPolicy::%S: [***INHIBIT QUAY 5000 ***]\n",
              round.idx, operation);
}

void Asked(const Round& round, CWlanBssEntry& entry, bool byEvent, bool made) {
  Step(round, StepOfSuggestion(byEvent, made), &entry);
}

void Attempted(const Round& round, CWlanBssEntry& entry, ConnectOutcome outcome) {
  Step(round, StepOf(outcome), &entry);
}

void AttemptFailed(const Round& round, const char* stage, const CWlanBssEntry& entry,
                   const std::string& failure) {
  LOG_ERROR(u"[%i]CGlobalQUAYPolicy::MakeChoice:[%S] %S, STATS: failed=%i, good=%i", round.idx,
            stage, failure, entry.m_connect_failed, entry.m_connect_good);
}

// --- A switch

void TargetElsewhere(const Round& round, const CWlanBssEntry& entry, bool ready) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i][%s] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", round.idx,
              ready ? u"_AVOID[READY]_" : u"_AVOID_", entry.m_SSIDW, MAC_ARGS(mac));
}

void TargetNotReady(const Round& round, CWlanBssEntry& entry) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i][NO-READY/SKIP-THIS] IF-STATE: %i [CONNECTED to diff SSID %s][CANDIDATE "
              u"%s(center %u), counter %i][%0.2lf mbps]\n",
              round.idx, State(round), round.facts.ssid, entry.m_SSIDW, entry.GetFrequencyKhz(),
              entry.PeekCandidate(), round.adapter.GetTrafficMbps());
}

void TargetFound(const Round& round, CWlanBssEntry& entry, std::int32_t current) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i] IF-STATE: %i [CONNECTED to diff SSID %s {%02x-%02x-%02x-%02x-%02x-%02x} vs "
              u"preferred %s(center %u)][Scores %i(new) > %i(old)? FTZ %i][%0.2lf mbps]\n",
              round.idx, State(round), round.facts.ssid, MAC_ARGS(round.facts.bssid), entry.m_SSIDW,
              entry.GetFrequencyKhz(), entry.GetScore(false, round.scores), current, 0,
              round.adapter.GetTrafficMbps());
}

void AlreadyThere(const Round& round, CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  Step(round, RoundStep::kAlreadyThere, &entry);
  LOG_ADAPTER(round.idx, kPolicyLog, u"[%i] [__ALREADY?__] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, entry.m_SSIDW, MAC_ARGS(mac));
}

void RoamVetoed(const Round& round, const CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [ABORT ROAMING-SWITCH ON CURRENT %s SUGGESTION] %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, round.settings.popup ? u"POPUP" : u"ETW", entry.m_SSIDW, MAC_ARGS(mac));
}

void Suggesting(const Round& round, const CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i] Clearing candidate counters & suggesting: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
      round.idx, entry.m_SSIDW, MAC_ARGS(mac));
}

void Suggested(const Round& round, const ApSummary& current, const ApSummary& suggested) {
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "[Adapter", round.idx,
            "] SUGGEST AP: Current = ", BriefText(current), ", Suggestion: ", BriefText(suggested));
}

void Switching(const Round& round, CWlanBssEntry& entry, bool roam) {
  const MacAddress mac = entry.GetBssid();
  Step(round, RoundStep::kSwitch, &entry);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [roam=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", round.idx, roam,
              entry.m_SSIDW, MAC_ARGS(mac));
}

void SwitchConnected(const Round& round, const CWlanBssEntry& entry, bool roam) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [roam=%i] Success connecting to %s [STATs: failed=%i, good=%i]\n", round.idx,
              roam, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
}

void Switched(const Round& round, const ApSummary& before, const ApSummary& after) {
  LogInfo(
      Format(u"[Adapter%i] AUTOSWITCH: %s --> %s", round.idx, BriefText(before), BriefText(after)));
}

// --- A first connect

void FirstIsElsewhere(const Round& round, const CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [SKIP DUE TO CONN ON OTHER-IF] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, entry.m_SSIDW, MAC_ARGS(mac));
}

void FirstWasUnavailable(const Round& round, const CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [SKIP DUE TO 'WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE'] %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, entry.m_SSIDW, MAC_ARGS(mac));
}

void FirstNotAutomatic(const Round& round, const CWlanBssEntry& entry) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [AUTO=%i][AutOnly=%i] NOT connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, entry.m_AutoConnect, true, entry.m_SSIDW, MAC_ARGS(mac));
}

namespace {

void TakingFirst(const Round& round, const CWlanBssEntry& entry, bool autoOnly,
                 const char16_t* how) {
  const MacAddress mac = entry.GetBssid();
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] [allowAutoConnectOutOfSleep=%i/%i][AUTO=%i][AutOnly=%i] %s %s "
              u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
              round.idx, 0, 0, entry.m_AutoConnect, autoOnly, how, entry.m_SSIDW, MAC_ARGS(mac));
}

}  // namespace

void SuggestingFirst(const Round& round, const CWlanBssEntry& entry, bool autoOnly) {
  TakingFirst(round, entry, autoOnly, u"SUGGESTING");
}

void ConnectingFirst(const Round& round, CWlanBssEntry& entry, bool autoOnly) {
  Step(round, RoundStep::kFirstConnect, &entry);
  TakingFirst(round, entry, autoOnly, u"Connecting to");
}

void FirstConnected(const Round& round, const CWlanBssEntry& entry) {
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i] ConnectToBestNoDebounce: Success connecting to %s [STATs: failed=%i, good=%i]\n",
      round.idx, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
}

void ConnectedByItself(const Round& round, const ApSummary& after) {
  LogInfo(Format(u"[Adapter%i] AUTOCONNECT (from disconnnected adapter): %s", round.idx,
                 BriefText(after)));
}

void NoneEligible(const Round& round) { Step(round, RoundStep::kNoneEligible); }

// --- A request

void RequestHeldByMonitorMode(const Round& round, const ConnectOrder& order) {
  Step(round, RoundStep::kMonitorMode);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] %S [DISABLED IN MONITOR MODE] FindAndConnectToBssEntry: _NOT_ Connecting. to "
              u"ssid='%s', bssid='%s'\n",
              round.idx, TagOf(order.origin), order.ssid, order.bssid);
}

void RequestWithoutBssid(const Round& round, const ConnectOrder& order) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"[%i] %S _NOT_ Connecting. to ssid='%s', bssid='%s'\n",
              round.idx, TagOf(order.origin), order.ssid, order.bssid);
}

void TryingRequest(const Round& round, ConnectOrigin origin, CWlanBssEntry& entry, int tries) {
  const MacAddress mac = entry.GetBssid();
  Step(round, RoundStep::kRequestedConnect, &entry);
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i] %S [try=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", round.idx,
              TagOf(origin), tries, entry.m_SSIDW, MAC_ARGS(mac));
}

void RequestFailed(const std::string& failure) {
  LOG_ERROR(u"CGlobalQUAYPolicy::FindAndConnectToBssEntry: %S", failure);
}

void RequestConnected(const Round& round, const CWlanBssEntry& entry, int tries) {
  LOG_ADAPTER(
      round.idx, kPolicyLog,
      u"[%i] [try=%i] FindAndConnectToBssEntry: Success connecting to %s [STATs: failed=%i, "
      u"good=%i]\n",
      round.idx, tries, entry.m_SSIDW, entry.m_connect_failed, entry.m_connect_good);
}

void OrderNotUnderstood(const Round& round, const WString& bssid) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i]GlobalQUAYPolicy::CheckExecuteConnectFromUI: MacStringToBinary() FAILED!: %S",
              round.idx, Narrow(bssid));
}

void OrderUnderstood(const Round& round, const WString& bssid, bool isConnectedOne) {
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"[%i]GlobalQUAYPolicy::CheckExecuteConnectFromUI: %s: %s, connected %s", round.idx,
              isConnectedOne ? u"SAME" : u"DIFFERENT", bssid, MacText(round.facts.bssid));
}

void OrderCarriedOut(const Round& round, const ConnectOrder& order) {
  Step(round, RoundStep::kClientConnect);
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "[Adapter", round.idx,
            "] UI Command Connect to: ", order.ssid, " ", order.bssid);
}

void AcceptanceCarriedOut(const Round& round, const ConnectOrder& order) {
  Step(round, RoundStep::kSuggestionAccepted);
  LogRecord(kLogFile | kLogMemory, "<I>", "[Adapter", round.idx,
            "] SUGGESTION ACCEPTED: Connect to ", order.ssid, " ", order.bssid);
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i]Connect to suggested Network succeeded [%s][%s]\n",
              round.idx, order.ssid, order.bssid);
}

void AcceptanceFailed(const Round& round, const WString& ssid, bool restores) {
  Step(round, RoundStep::kSuggestionFailed);
  if (restores) {
    Step(round, RoundStep::kRestore);
    LOG_ADAPTER(round.idx, kPolicyLog,
                u"\n[%i]Connect to suggested Network [%s] failed, trying to restore %s\n",
                round.idx, ssid, round.facts.ssid);
    return;
  }
  LOG_ADAPTER(round.idx, kPolicyLog,
              u"\n[%i]Connect to suggested Network [%s] failed, no current network to restore\n",
              round.idx, ssid);
}

void RestoredAfterAcceptance(const Round& round) {
  LOG_ADAPTER(round.idx, kPolicyLog, u"\n[%i]Restoring %s succeeded\n", round.idx,
              round.facts.ssid);
}

}  // namespace corvane::lines
