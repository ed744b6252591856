// What people ask for: a suggestion that was accepted, a connect that a client ordered.

#include <string_view>

#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/policy_log.h"
#include "policy/policy_text.h"
#include "policy/round_watch.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kProfileTimeoutMs = 90000;
constexpr std::uint32_t kPersonTimeoutMs = 600000;
constexpr int kTries = 3;
constexpr std::uint32_t kRetryPauseMs = 2000;
constexpr char kAcceptance[] = "[PASSIVE ACCEPTANCE]";
constexpr char kClientOrder[] = "[UI CONNECT CMD]";

// What comes without a stored profile may ask a person for credentials, which takes its time. Yet
// the wait holds up every other adapter and every client, so one lost completion must not make it
// endless.
std::uint32_t TimeoutOf(const CWlanBssEntry& entry) {
  return entry.HasUsableProfile() ? kProfileTimeoutMs : kPersonTimeoutMs;
}

void LogFailure(const ConnectOutcome& outcome) {
  LOG_ERROR(u"CGlobalQUAYPolicy::FindAndConnectToBssEntry: %S: %S",
            outcome.standard ? "std:exception" : "Exception", outcome.what);
}

// Tries one entry up to three times, until an attempt does not fail; *tries tells how many it took.
ConnectOutcome TryRepeatedly(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                             bool save, const char* tag, int* tries) {
  const int idx = round.idx;
  const MacAddress mac = entry.GetBssid();
  for (*tries = 1;; ++*tries) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i] %S [try=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx, tag,
                *tries, entry.m_SSIDW, MAC_ARGS(mac));
    RoundWatches::Step(idx, RoundStep::kRequestedConnect, &entry);
    ConnectOutcome outcome = TryConnect(round, entry, profileXml, save, TimeoutOf(entry));
    if (!outcome.failed) return outcome;
    LogFailure(outcome);
    if (*tries == kTries) return outcome;
    Os().threads.Sleep(kRetryPauseMs);
  }
}

void LogOrder(int idx, const char* text, const WString& ssid, const WString& bssid,
              std::uint32_t outputs) {
  LogRecord(outputs, "<I>", "[Adapter", idx, text, ssid, " ", bssid);
}

}  // namespace

bool FindAndConnectToBssEntry(const Round& round, const BssEntryList& entries, const WString& ssid,
                              const WString& bssid_text, const WString& profile_xml,
                              bool save_profile, const char* tag) {
  const int idx = round.idx;
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (round.settings.IsMonitorMode()) {
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"[%i] %S [DISABLED IN MONITOR MODE] FindAndConnectToBssEntry: _NOT_ Connecting. to "
        u"ssid='%s', bssid='%s'\n",
        idx, tag, ssid, bssid_text);
    RoundWatches::Step(idx, RoundStep::kMonitorMode);
    return false;
  }
  if (bssid_text.empty()) {
    LOG_ADAPTER(idx, kPolicyLog, u"[%i] %S _NOT_ Connecting. to ssid='%s', bssid='%s'\n", idx, tag,
                ssid, bssid_text);
    config->SetString(value::kConnectStatus, u"error");
    return false;
  }
  const bool isAcceptance = std::string_view(tag) == kAcceptance;
  const WString before =
      isAcceptance && facts.connected
          ? ShortApSummary(SummaryOfConnection(
                round.adapter, facts,
                round.adapter.GetScoreFromBssEntry(facts.ssid, facts.bssid, true)))
          : WString(u"None");

  for (const auto& entry : entries) {
    if (entry->m_BSSIDText != bssid_text) continue;
    int tries = 0;
    const ConnectOutcome outcome =
        TryRepeatedly(round, *entry, profile_xml, save_profile, tag, &tries);
    if (outcome.failed) continue;
    if (isAcceptance && outcome.connected) {
      CountMove(facts.connected && entry->m_SSIDW == facts.ssid);
      NotifyConnectionChange(round.adapter, *config, u"SuggestionAccepted",
                             ShortApSummary(SummaryOf(*entry)), before);
    }
    LOG_ADAPTER(
        idx, kPolicyLog,
        u"[%i] [try=%i] FindAndConnectToBssEntry: Success connecting to %s [STATs: failed=%i, "
        u"good=%i]\n",
        idx, tries, entry->m_SSIDW, entry->m_connect_failed, entry->m_connect_good);
    if (outcome.connected) PublishConnection(round.adapter, *config, *entry);
    return true;
  }
  config->SetString(value::kConnectStatus, u"error");
  return false;
}

bool CheckExecuteConnectFromUI(const Round& round, const UIConnectRequest& request,
                               const BssEntryList& entries) {
  const int idx = round.idx;
  const ConnectionFacts& facts = round.facts;
  if (request.bssid.empty()) return false;

  MacAddress bssid{};
  if (!MacStringToBinary(u'-', request.bssid, &bssid)) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i]GlobalQUAYPolicy::CheckExecuteConnectFromUI: MacStringToBinary() FAILED!: %S",
                idx, Narrow(request.bssid));
  } else {
    const bool same = bssid == facts.bssid;
    LOG_ADAPTER(idx, kPolicyLog,
                u"[%i]GlobalQUAYPolicy::CheckExecuteConnectFromUI: %s: %s, connected %s", idx,
                same ? u"SAME" : u"DIFFERENT", request.bssid, MacText(facts.bssid));
    if (same) return false;
  }
  if (!FindAndConnectToBssEntry(round, entries, request.ssid, request.bssid, request.profile,
                                request.save, kClientOrder)) {
    return false;
  }
  RoundWatches::Step(idx, RoundStep::kClientConnect);
  LogOrder(idx, "] UI Command Connect to: ", request.ssid, request.bssid,
           kLogFile | kLogConsole | kLogMemory);
  return true;
}

bool CheckAcceptSuggestion(const Round& round) {
  const int idx = round.idx;
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (!config->m_accept_suggestion.exchange(false)) return false;

  WString ssid, bssid;
  config->GetString(value::kSuggestedNetworkSSID, &ssid);
  config->GetString(value::kSuggestedNetworkBSSID, &bssid);
  if (FindAndConnectToBssEntry(round, round.candidates, ssid, bssid, {}, false, kAcceptance)) {
    RoundWatches::Step(idx, RoundStep::kSuggestionAccepted);
    LogOrder(idx, "] SUGGESTION ACCEPTED: Connect to ", ssid, bssid, kLogFile | kLogMemory);
    LOG_ADAPTER(idx, kPolicyLog, u"\n[%i]Connect to suggested Network succeeded [%s][%s]\n", idx,
                ssid, bssid);
    return true;
  }
  if (round.settings.IsMonitorMode())
    return false;  // nothing was touched that would need to be restored
  RoundWatches::Step(idx, RoundStep::kSuggestionFailed);
  if (facts.connected && !facts.ssid.empty()) {
    LOG_ADAPTER(idx, kPolicyLog,
                u"\n[%i]Connect to suggested Network [%s] failed, trying to restore %s\n", idx,
                ssid, facts.ssid);
    RoundWatches::Step(idx, RoundStep::kRestore);
    round.adapter.ConnectToNetwork(facts.ssid);
    LOG_ADAPTER(idx, kPolicyLog, u"\n[%i]Restoring %s succeeded\n", idx, facts.ssid);
  } else {
    LOG_ADAPTER(idx, kPolicyLog,
                u"\n[%i]Connect to suggested Network [%s] failed, no current network to restore\n",
                idx, ssid);
  }
  return false;
}

}  // namespace corvane
