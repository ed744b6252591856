#include "policy/connect_attempt.h"

#include "foundation/guarded.h"
#include "history/telemetry_memo.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/move_lines.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kConnectTimeoutMs = 15000;

// By the facts that a connect leaves behind when it ends well.
bool IsOn(const CWlanInterface& adapter, const CWlanBssEntry& entry) {
  return adapter.IsConnected() &&
         ToMac(adapter.GetConnAttrs().wlanAssociationAttributes.dot11Bssid) == entry.GetBssid();
}

// Of an attempt without a failure.
ConnectOutcome OutcomeOf(CWlanInterface& adapter, const CWlanBssEntry& entry,
                         const WString& profileXml) {
  if (IsOn(adapter, entry)) return ConnectOutcome::kConnected;
  WString unused;
  const bool hasProfile =
      !profileXml.empty() || entry.HasUsableProfile() ||
      (entry.m_bHasTempProfile && adapter.GetTempProfile(entry.m_SSIDW, &unused));
  return hasProfile ? ConnectOutcome::kElsewhere : ConnectOutcome::kCredentialsAsked;
}

}  // namespace

ConnectAttempt TryConnect(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                          bool save, std::uint32_t timeoutMs) {
  ConnectAttempt attempt;
  std::uint32_t code = 0;
  entry.m_last_reason_code = 0;
  const auto connect = [&] {
    entry.ConnectSynchronous(&round.adapter, profileXml, save, timeoutMs);
    attempt.outcome = OutcomeOf(round.adapter, entry, profileXml);
  };
  Contained(connect, [&](const Failure& failure) {
    attempt.failure = FormatA("%s: %s", failure.Kind(), failure.what);
    code = failure.code;
  });
  lines::Attempted(round, entry, attempt.outcome);
  entry.m_last_reason_code = code;
  if (attempt.outcome == ConnectOutcome::kConnected) {
    round.profile.OnConnected(entry.GetBssid(), entry.GetLQ(), Os().clock.GetTickCount64());
    ++entry.m_connect_good;
    entry.m_ever_connected = true;
  } else if (attempt.outcome == ConnectOutcome::kFailed) {
    round.profile.OnConnectFailed(entry.GetBssid(), entry.GetLQ(), Os().clock.GetTickCount64());
    round.config->SetString(value::kConnectStatus, u"error");
  }
  return attempt;
}

ConnectOutcome TryConnectCounted(const Round& round, CWlanBssEntry& entry, const char* stage) {
  const ConnectAttempt attempt = TryConnect(round, entry, {}, false, kConnectTimeoutMs);
  if (attempt.outcome == ConnectOutcome::kFailed) {
    ++entry.m_connect_failed;
    lines::AttemptFailed(round, stage, entry, attempt.failure);
  }
  return attempt.outcome;
}

void RestoreConnection(const Round& round) {
  const ConnectionFacts& facts = round.facts;
  CSmartPointer<CWlanBssEntry> entry;
  if (round.profile.GetHabits().restoresTransmitter &&
      round.adapter.FindBssEntry(facts.ssid, facts.bssid, &entry) &&
      TryConnect(round, *entry, {}, false, kConnectTimeoutMs).outcome == ConnectOutcome::kConnected)
    return;
  round.adapter.ConnectToNetwork(facts.ssid);
}

void CountMove(bool withinNetwork) {
  CTelemetryMemo& memo = CTelemetryMemo::GetInstance();
  if (withinNetwork) {
    memo.IncrementAp();
  } else {
    memo.IncrementNet();
  }
  memo.SaveToRegistry();
}

}  // namespace corvane
