#include "select/policy/connect_attempt.h"

#include "config/store/value_names.h"
#include "core/log/log.h"
#include "select/policy/round_watch.h"
#include "telemetry/history/telemetry_memo.h"

namespace corvane {

namespace {

constexpr std::uint32_t kConnectTimeoutMs = 15000;

}  // namespace

ConnectOutcome TryConnect(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry,
                          const WString& profileXml, bool save, std::uint32_t timeoutMs) {
  ConnectOutcome outcome;
  entry.m_last_reason_code = 0;
  try {
    entry.ConnectSynchronous(&adapter, profileXml, save, timeoutMs);
    outcome.connected = true;
  } catch (const Exception& e) {
    outcome.what = e.what();
    outcome.code = e.GetCode();
  } catch (const std::exception& e) {
    outcome.what = e.what();
    outcome.standard = true;
  }
  RoundWatches::Step(adapter.GetConfigIdx(), outcome.connected ? RoundStep::kConnected : RoundStep::kConnectFailed,
                     &entry);
  entry.m_last_reason_code = outcome.code;
  if (outcome.connected) {
    ++entry.m_connect_good;
    entry.m_ever_connected = true;
  } else {
    config.SetString(value::kConnectStatus, u"error");
  }
  return outcome;
}

bool TryConnectCounted(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry,
                       const char* stage) {
  const ConnectOutcome outcome = TryConnect(adapter, config, entry, {}, false, kConnectTimeoutMs);
  if (outcome.connected) return true;
  ++entry.m_connect_failed;
  LOG_ERROR(u"[%i]CGlobalQUAYPolicy::MakeChoice:[%S] %S: %S, STATS: failed=%i, good=%i",
            adapter.GetConfigIdx(), stage, outcome.standard ? "std:exception" : "Exception", outcome.what,
            entry.m_connect_failed, entry.m_connect_good);
  return false;
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
