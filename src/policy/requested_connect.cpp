// What people ask for: a suggestion that was accepted, a connect that a client ordered.

#include <string_view>

#include "platform/platform.h"
#include "platform/thread_api.h"
#include "policy/connect_attempt.h"
#include "policy/decisions.h"
#include "policy/move_lines.h"
#include "policy/policy_text.h"
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

// Tries one entry up to three times, until an attempt does not fail; *tries tells how many it took.
ConnectOutcome TryRepeatedly(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                             bool save, const char* tag, int* tries) {
  for (*tries = 1;; ++*tries) {
    lines::TryingRequest(round, tag, entry, *tries);
    ConnectOutcome outcome = TryConnect(round, entry, profileXml, save, TimeoutOf(entry));
    if (!outcome.failed) return outcome;
    lines::RequestFailed(outcome);
    if (*tries == kTries) return outcome;
    Os().threads.Sleep(kRetryPauseMs);
  }
}

}  // namespace

bool FindAndConnectToBssEntry(const Round& round, const BssEntryList& entries, const WString& ssid,
                              const WString& bssid_text, const WString& profile_xml,
                              bool save_profile, const char* tag) {
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (round.settings.IsMonitorMode()) {
    lines::RequestHeldByMonitorMode(round, tag, ssid, bssid_text);
    return false;
  }
  if (bssid_text.empty()) {
    lines::RequestWithoutBssid(round, tag, ssid, bssid_text);
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
    lines::RequestConnected(round, *entry, tries);
    if (outcome.connected) PublishConnection(round.adapter, *config, *entry);
    return true;
  }
  config->SetString(value::kConnectStatus, u"error");
  return false;
}

bool CheckExecuteConnectFromUI(const Round& round, const UIConnectRequest& request,
                               const BssEntryList& entries) {
  const ConnectionFacts& facts = round.facts;
  if (request.bssid.empty()) return false;

  MacAddress bssid{};
  if (!MacStringToBinary(u'-', request.bssid, &bssid)) {
    lines::OrderNotUnderstood(round, request.bssid);
  } else {
    const bool same = bssid == facts.bssid;
    lines::OrderUnderstood(round, request.bssid, same);
    if (same) return false;
  }
  if (!FindAndConnectToBssEntry(round, entries, request.ssid, request.bssid, request.profile,
                                request.save, kClientOrder)) {
    return false;
  }
  lines::OrderCarriedOut(round, request.ssid, request.bssid);
  return true;
}

bool CheckAcceptSuggestion(const Round& round) {
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (!config->m_accept_suggestion.exchange(false)) return false;

  WString ssid, bssid;
  config->GetString(value::kSuggestedNetworkSSID, &ssid);
  config->GetString(value::kSuggestedNetworkBSSID, &bssid);
  if (FindAndConnectToBssEntry(round, round.candidates, ssid, bssid, {}, false, kAcceptance)) {
    lines::AcceptanceCarriedOut(round, ssid, bssid);
    return true;
  }
  if (round.settings.IsMonitorMode())
    return false;  // nothing was touched that would need to be restored
  const bool restores = facts.connected && !facts.ssid.empty();
  lines::AcceptanceFailed(round, ssid, restores);
  if (restores) {
    round.adapter.ConnectToNetwork(facts.ssid);
    lines::RestoredAfterAcceptance(round);
  }
  return false;
}

}  // namespace corvane
