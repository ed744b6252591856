#include "policy/connect_attempt.h"

#include "foundation/log_lines.h"
#include "history/telemetry_memo.h"
#include "policy/round_watch.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint32_t kConnectTimeoutMs = 15000;

// By the facts that a connect leaves behind when it ends well.
bool IsOn(const CWlanInterface& adapter, const CWlanBssEntry& entry) {
  return adapter.IsConnected() &&
         ToMac(adapter.GetConnAttrs().wlanAssociationAttributes.dot11Bssid) == entry.GetBssid();
}

RoundStep StepOf(const ConnectOutcome& outcome) {
  if (outcome.failed) return RoundStep::kConnectFailed;
  return outcome.connected ? RoundStep::kConnected : RoundStep::kCredentialsAsked;
}

}  // namespace

ConnectOutcome TryConnect(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                          bool save, std::uint32_t timeoutMs) {
  ConnectOutcome outcome;
  entry.m_last_reason_code = 0;
  try {
    entry.ConnectSynchronous(&round.adapter, profileXml, save, timeoutMs);
    outcome.connected = IsOn(round.adapter, entry);
  } catch (const Exception& e) {
    outcome.failed = true;
    outcome.what = e.what();
    outcome.code = e.GetCode();
  } catch (const std::exception& e) {
    outcome.failed = true;
    outcome.what = e.what();
    outcome.standard = true;
  }
  RoundWatches::Step(round.idx, StepOf(outcome), &entry);
  entry.m_last_reason_code = outcome.code;
  if (outcome.connected) {
    ++entry.m_connect_good;
    entry.m_ever_connected = true;
  } else if (outcome.failed) {
    round.config->SetString(value::kConnectStatus, u"error");
  }
  return outcome;
}

ConnectOutcome TryConnectCounted(const Round& round, CWlanBssEntry& entry, const char* stage) {
  ConnectOutcome outcome = TryConnect(round, entry, {}, false, kConnectTimeoutMs);
  if (!outcome.failed) return outcome;
  ++entry.m_connect_failed;
  LOG_ERROR(u"[%i]CGlobalQUAYPolicy::MakeChoice:[%S] %S: %S, STATS: failed=%i, good=%i", round.idx,
            stage, outcome.standard ? "std:exception" : "Exception", outcome.what,
            entry.m_connect_failed, entry.m_connect_good);
  return outcome;
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
