// What people ask for: a suggestion that was accepted, a connect that a client ordered.

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

// What comes without a stored profile may ask a person for credentials, which takes its time. Yet
// the wait holds up every other adapter and every client, so one lost completion must not make it
// endless.
std::uint32_t TimeoutOf(const CWlanBssEntry& entry) {
  return entry.HasUsableProfile() ? kProfileTimeoutMs : kPersonTimeoutMs;
}

// Tries one entry up to three times, until an attempt does not fail; *tries tells how many it took.
ConnectOutcome TryRepeatedly(const Round& round, CWlanBssEntry& entry, const ConnectOrder& order,
                             int* tries) {
  for (*tries = 1;; ++*tries) {
    lines::TryingRequest(round, order.origin, entry, *tries);
    const ConnectAttempt attempt =
        TryConnect(round, entry, order.profile, order.save, TimeoutOf(entry));
    if (attempt.outcome != ConnectOutcome::kFailed) return attempt.outcome;
    lines::RequestFailed(attempt.failure);
    if (*tries == kTries) return attempt.outcome;
    Os().threads.Sleep(kRetryPauseMs);
  }
}

bool IsStillConnected(const Round& round) {
  return round.adapter.GetInterfaceStateForLog() == platform::wlan_interface_state_connected;
}

// A refused order has cost the connection.
void RestoreIfLost(const Round& round) {
  if (!round.facts.connected || round.facts.ssid.empty() || IsStillConnected(round)) return;
  RestoreConnection(round);
  round.config->SetString(value::kConnectStatus, u"error");  // of the order
}

}  // namespace

bool FindAndConnectToBssEntry(const Round& round, const BssEntryList& entries,
                              const ConnectOrder& order) {
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (round.settings.IsMonitorMode()) {
    lines::RequestHeldByMonitorMode(round, order);
    if (round.profile.GetHabits().endsOrders) config->SetString(value::kConnectStatus, u"error");
    return false;
  }
  if (order.bssid.empty()) {
    lines::RequestWithoutBssid(round, order);
    config->SetString(value::kConnectStatus, u"error");
    return false;
  }
  const bool isAcceptance = order.origin == ConnectOrigin::kAcceptance;
  const WString before =
      isAcceptance && facts.connected
          ? ShortApSummary(SummaryOfConnection(
                round.adapter, facts,
                round.adapter.GetScoreFromBssEntry(facts.ssid, facts.bssid, true)))
          : WString(u"None");

  for (const auto& entry : entries) {
    if (entry->m_BSSIDText != order.bssid) continue;
    int tries = 0;
    const ConnectOutcome outcome = TryRepeatedly(round, *entry, order, &tries);
    if (outcome == ConnectOutcome::kFailed) continue;
    const bool connected = outcome == ConnectOutcome::kConnected;
    if (isAcceptance && connected) {
      CountMove(facts.connected && entry->m_SSIDW == facts.ssid);
      NotifyConnectionChange(round.adapter, *config, u"SuggestionAccepted",
                             ShortApSummary(SummaryOf(*entry, round.scores)), before);
    }
    lines::RequestConnected(round, *entry, tries);
    if (connected) PublishConnection(round.adapter, *config, *entry);
    return true;
  }
  config->SetString(value::kConnectStatus, u"error");
  if (!isAcceptance && round.profile.GetHabits().restoresAfterOrder) RestoreIfLost(round);
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
    if (same && round.profile.GetHabits().endsOrders)
      round.config->SetString(value::kConnectStatus, u"connected");
    if (same) return false;
  }
  const ConnectOrder order{request, ConnectOrigin::kClient};
  if (!FindAndConnectToBssEntry(round, entries, order)) return false;
  lines::OrderCarriedOut(round, order);
  return true;
}

bool CheckAcceptSuggestion(const Round& round) {
  const auto& config = round.config;
  const ConnectionFacts& facts = round.facts;
  if (!config->m_accept_suggestion.exchange(false)) return false;

  ConnectOrder order;
  order.origin = ConnectOrigin::kAcceptance;
  config->GetString(value::kSuggestedNetworkSSID, &order.ssid);
  config->GetString(value::kSuggestedNetworkBSSID, &order.bssid);
  if (FindAndConnectToBssEntry(round, round.candidates, order)) {
    lines::AcceptanceCarriedOut(round, order);
    return true;
  }
  if (round.settings.IsMonitorMode())
    return false;  // nothing was touched that would need to be restored
  // A suggestion that was gone has cost nothing.
  const bool untouched = round.profile.GetHabits().refusesGoneSuggestion && IsStillConnected(round);
  const bool restores = facts.connected && !facts.ssid.empty() && !untouched;
  lines::AcceptanceFailed(round, order.ssid, restores);
  if (restores) {
    RestoreConnection(round);
    lines::RestoredAfterAcceptance(round);
  }
  return false;
}

}  // namespace corvane
