#include "policy/connect_attempt.h"

#include "history/telemetry_memo.h"
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
  lines::Attempted(round, entry, outcome);
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
  lines::AttemptFailed(round, stage, entry, outcome);
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
