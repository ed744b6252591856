#include "wlan/operation_gate.h"

#include "platform/wlan_types.h"

namespace corvane {

NotificationOwner OwnerOfNotification(bool busy, WlanOperation kind, platform::DWORD code) {
  if (!busy) return {};
  const bool isDisconnect = code == platform::wlan_notification_acm_disconnecting ||
                            code == platform::wlan_notification_acm_disconnected;
  if (!isDisconnect) return {kind == WlanOperation::kConnect, false};
  return {kind == WlanOperation::kDisconnect, kind == WlanOperation::kConnect};
}

OperationGate::State OperationGate::Get() const {
  const CCritSecLock lock(m_Lock);
  return m_State;
}

bool OperationGate::TryBegin(WlanOperation kind) {
  const CCritSecLock lock(m_Lock);
  if (m_State.m_op_busy || m_bCallerInside) return false;
  m_State = {true, kind};
  m_Outcome = {};
  m_op_waiting = m_bCallerInside = true;
  return true;
}

OperationGate::Outcome OperationGate::TakeOutcome() {
  const CCritSecLock lock(m_Lock);
  m_bCallerInside = false;
  return m_Outcome;
}

bool OperationGate::Withdraw() {
  const CCritSecLock lock(m_Lock);
  if (!m_op_waiting) return false;
  m_State = {};
  m_op_waiting = m_bCallerInside = false;
  return true;
}

void OperationGate::Abort() {
  const CCritSecLock lock(m_Lock);
  m_State = {};
  m_op_waiting = m_bCallerInside = false;
}

void OperationGate::LeaveBusy() {
  const CCritSecLock lock(m_Lock);
  m_op_waiting = m_bCallerInside = false;
}

bool OperationGate::Complete(WlanOperation kind, platform::DWORD code, std::int32_t reason) {
  const CCritSecLock lock(m_Lock);
  if (!m_State.m_op_busy || m_State.m_op_kind != kind) return false;
  m_State = {};
  if (!m_op_waiting) return false;
  m_op_waiting = false;
  m_Outcome = {code, reason};
  return true;
}

}  // namespace corvane
