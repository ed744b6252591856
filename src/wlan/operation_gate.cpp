#include "wlan/operation_gate.h"

#include <algorithm>

#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/wlan_types.h"

namespace corvane {

NotificationOwner OwnerOfNotification(bool busy, WlanOperation kind, platform::DWORD code) {
  if (!busy) return {};
  const bool isDisconnect = code == platform::wlan_notification_acm_disconnecting ||
                            code == platform::wlan_notification_acm_disconnected;
  if (!isDisconnect) return {kind == WlanOperation::kConnect, false};
  return {kind == WlanOperation::kDisconnect, kind == WlanOperation::kConnect};
}

namespace {

// Of a wait that began at this tick; ticks that went back leave all of it.
std::uint32_t TimeLeft(std::uint32_t timeoutMs, std::uint64_t began) {
  const std::uint64_t now = Os().clock.GetTickCount64();
  if (timeoutMs == platform::INFINITE || now < began) return timeoutMs;
  return timeoutMs - static_cast<std::uint32_t>(std::min<std::uint64_t>(now - began, timeoutMs));
}

}  // namespace

void OperationGate::Initialize() {
  m_pConnectSyncEvent.CreateObject()->SetDebugName("WlanInterface's connect sync event");
  m_pScanSyncEvent.CreateObject()->SetDebugName("WlanInterface's scan sync event");
}

CWinEvent& OperationGate::EventOf(WlanOperation kind) {
  return kind == WlanOperation::kScan ? *m_pScanSyncEvent : *m_pConnectSyncEvent;
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

OperationGate::Result OperationGate::Await(WlanOperation kind, std::uint32_t timeoutMs) {
  try {
    const std::uint64_t began = Os().clock.GetTickCount64();
    for (std::uint32_t left = timeoutMs;; left = TimeLeft(timeoutMs, began)) {
      bool timedOut = false;
      const bool signalled = EventOf(kind).WaitOnEvent(left, &timedOut);
      const CCritSecLock lock(m_Lock);
      if (!m_op_waiting) {
        m_bCallerInside = false;
        return {End::kDone, m_Outcome};
      }
      if (signalled) continue;  // the late signal of an operation that is over
      m_op_waiting = m_bCallerInside = false;
      if (timedOut || kind != WlanOperation::kDisconnect) m_State = {};
      return {timedOut ? End::kTimeout : End::kExit, {}};
    }
  } catch (...) {
    Abort();
    throw;
  }
}

void OperationGate::Abort() {
  const CCritSecLock lock(m_Lock);
  m_State = {};
  m_op_waiting = m_bCallerInside = false;
}

bool OperationGate::Complete(WlanOperation kind, platform::DWORD code, std::int32_t reason) {
  {
    const CCritSecLock lock(m_Lock);
    if (!m_State.m_op_busy || m_State.m_op_kind != kind) return false;
    m_State = {};
    if (!m_op_waiting) return false;
    m_op_waiting = false;
    m_Outcome = {code, reason};
  }
  EventOf(kind).SetEvent();
  return true;
}

void OperationGate::SignalExit() {
  for (CWinEvent* event : {m_pConnectSyncEvent.get(), m_pScanSyncEvent.get()}) {
    try {
      if (event) event->SetExitEvent();
    } catch (const std::exception& e) {
      LOG_ERROR(u"CWlanInterface::Detach: Exception: %S", e.what());
    }
  }
}

}  // namespace corvane
