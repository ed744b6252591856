#include "engine/driver_link.h"

#include "engine/driver_device.h"
#include "engine/engine_bits.h"
#include "engine/engine_state.h"
#include "engine/engine_trace.h"
#include "foundation/log_lines.h"
#include "platform/driver_api.h"

namespace corvane {

using namespace platform;

LBHandshakeOutcome OutcomeOf(std::uint32_t answer) {
  switch (answer) {
    case handshake_answer::kNotYet:
      return {engine_state::kNotYet, ERROR_SUCCESS};
    case handshake_answer::kRevision:
      return {engine_state::kRefused, ERROR_REVISION_MISMATCH};
    case handshake_answer::kBadRecord:
      return {engine_state::kRefused, ERROR_INVALID_PARAMETER};
    default:
      return {engine_state::kDriverReady, ERROR_SUCCESS};
  }
}

DWORD LBDriverHandshake(CLBEngineState& state, bool first) {
  if (first) state.ReadSettings();
  CLBDriverDevice device;
  if (!device.Open()) {
    LB_TRACE(state, u"handshake: no device");
    const CCritSecLock lock(state.m_EngineLock);
    state.ClearState(engine_state::kHandshake);
    state.SetState(engine_state::kNoDevice);
    return ERROR_CANNOT_DETECT_DRIVER_FAILURE;
  }
  {
    const CCritSecLock lock(state.m_EngineLock);
    state.SetState(engine_state::kHandshake);
    state.ClearState(engine_state::kNoDevice);
  }
  LBHandshake record;
  record.table = reinterpret_cast<std::uintptr_t>(state.Table());
  record.links = reinterpret_cast<std::uintptr_t>(state.LinkRecords());
  const DWORD error =
      device.Control(control::kHandshake, &record, sizeof(record), &record, sizeof(record));
  const LBHandshakeOutcome outcome =
      error == ERROR_SUCCESS ? OutcomeOf(record.answer)
                             : LBHandshakeOutcome{engine_state::kControlFailed, ERROR_SUCCESS};
  LB_TRACE(state, u"handshake: err=%lu, answer=%lu, result=%lu", error, record.answer,
           outcome.result);
  const CCritSecLock lock(state.m_EngineLock);
  state.SetState(outcome.setBits);
  state.ClearState(engine_state::kHandshake);
  return outcome.result;
}

DWORD LBSendStart(CLBEngineState& state) {
  {
    const CCritSecLock lock(state.m_EngineLock);
    if ((state.StateWord() & engine_state::kDriverReady) == 0) {
      state.m_OwedWord.fetch_or(kStartOwed);
      LB_TRACE(state, u"start: owed");
      return ERROR_SUCCESS;
    }
    state.m_OwedWord.fetch_and(~kStartOwed);
  }
  CLBDriverDevice device;
  const DWORD error = device.Open() ? device.Control(control::kStart) : ERROR_SUCCESS;
  LB_TRACE(state, u"start: err=%lu", error);
  return error;
}

DWORD LBSendNotification(const LBDeviceNotification& notification) {
  CLBDriverDevice device;
  if (!device.Open()) return ERROR_CANNOT_DETECT_DRIVER_FAILURE;
  const DWORD error = device.Control(control::kNotify, &notification, sizeof(notification));
  if (error != ERROR_SUCCESS) {
    LOG_ERROR(u"  Device SendDeviceStateNotification to Callout failed with err=0x%x DevId =%d\n",
              error, static_cast<std::int32_t>(notification.device));
  }
  return error;
}

}  // namespace corvane
