#include "pipe/named_pipe_listener_notifications_json.h"

#include <algorithm>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "pipe/answer_guard.h"
#include "pipe/reply_text.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "settings/global_config_container.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint64_t kEventLog = DBG(47);

std::size_t BytesOf(const WString& text) { return text.size() * sizeof(char16_t); }

WString Subscribe(const CClientRequest& request) {
  WString word;
  if (!request.GetString("cmd", &word)) return FailureReply(kReplyNoCommand, request.GetText());
  if (word != u"Subscribe") return FailureReply(kReplyUnknownCommand, request.GetText());
  // The adapters' workers tell the present state.
  for (const int index : {0, 1}) {
    if (const auto config = CGlobalConfigContainer::GetInstance().FindIFConfig(index))
      config->m_bReportStatusPending = true;
  }
  return EchoReply(request.GetText());
}

}  // namespace

WString CNamedPipeListenerNotificationsJson::RespondToPipeMessage(WStringView request,
                                                                  PipeInstanceCtx& record) {
  record.state->subscribed = true;
  return AnswerGuarded("CNamedPipeListenerNotificationsJson::RespondToPipeMessage", request, [&] {
    return AnswerJson(request, [](const CClientRequest& parsed, const std::string&) {
      return Subscribe(parsed);
    });
  });
}

void CNamedPipeListenerNotificationsJson::SendNotification(CNotificationEvent* event) {
  const CSmartPointer<CNotificationEvent> held(event);
  if (!held) return;
  LOG_DEBUG(kEventLog,
            u"CNamedPipeListenerNotificationsJson::SendNotification:got it! %s.%s.%s: "
            u"[%s][%s][%s][%s]\n",
            held->m_Namespace, held->m_Category, held->m_Type, held->m_Data1, held->m_Data2,
            held->m_Data3, held->m_Data4);
  WString text = held->GetJson();
  // A NUL ends a message: behind it nobody would read on.
  text.resize(std::min(text.size(), text.find(u'\0')));
  if (text.size() >= kPipeUnits) {
    LOG_INFO(
        u"CNamedPipeListenerNotificationsJson::SendNotification: abort due to reply.length() = %zu "
        u"being too big\n",
        text.size());
    return;
  }
  const CCritSecLock lock(ObjectLock());
  if (!IsRunning()) return;  // and nobody will ever write it
  m_PendingBytes += BytesOf(text);
  m_Pending.push_back(std::move(text));
  BoundPending();
  if (!Os().pipes.QueueUserAPC(&DeliverRoutine, ThreadHandle(),
                               reinterpret_cast<std::uintptr_t>(this))) {
    // The event stays; the next one brings it along.
    LOG_ERROR(u"CNamedPipeListenerNotificationsJson::SendNotification: QueueUserAPC() failed: %lu",
              Os().threads.GetLastError());
  }
}

void CNamedPipeListenerNotificationsJson::BoundPending() {
  while (m_Pending.size() > kPendingEvents || m_PendingBytes > kPendingBytes) {
    LOG_ERROR(
        u"CNamedPipeListenerNotificationsJson::SendNotification: too many events wait, the "
        u"oldest is dropped");
    m_PendingBytes -= BytesOf(m_Pending.front());
    m_Pending.pop_front();
  }
}

bool CNamedPipeListenerNotificationsJson::TakePending(WString* text) {
  const CCritSecLock lock(ObjectLock());
  if (m_Pending.empty()) return false;
  m_PendingBytes -= BytesOf(m_Pending.front());
  text->swap(m_Pending.front());
  m_Pending.pop_front();
  return true;
}

// Runs on the listener's thread, which keeps the listener alive.
void CNamedPipeListenerNotificationsJson::DeliverRoutine(std::uintptr_t self) {
  auto* const listener = reinterpret_cast<CNamedPipeListenerNotificationsJson*>(self);
  Guarded("CNamedPipeListenerNotificationsJson", "SendNotification", false, [&] {
    listener->DeliverPending();
    return true;
  });
}

// One event at a time: the reply buffers hold the one before until each write's completion routine
// has run.
void CNamedPipeListenerNotificationsJson::DeliverPending() {
  for (;;) {
    {
      const CCritSecLock lock(ObjectLock());
      if (m_Pending.empty()) return;
    }
    CloseStalled();
    if (WritesInFlight() != 0) return;  // the last of their routines calls again
    WString text;
    if (TakePending(&text)) Deliver(text);
  }
}

void CNamedPipeListenerNotificationsJson::Deliver(WStringView text) {
  const CCritSecLock lock(ObjectLock());
  for (auto at = m_mapPipeInstanceCtxs.begin(); at != m_mapPipeInstanceCtxs.end();) {
    PipeInstanceCtx* const record = (at++)->first;
    if (!record->state->subscribed) continue;
    PutReply(*record, text);
    if (StartWrite(*record)) continue;
    LOG_INFO(
        u"CNamedPipeListenerNotificationsJson::SendNotification: calling DisconnectAndClose()");
    DisconnectAndClose(record);
  }
}

void CNamedPipeListenerNotificationsJson::CloseStalled() {
  if (WritesInFlight() == 0) return;
  const CCritSecLock lock(ObjectLock());
  for (auto at = m_mapPipeInstanceCtxs.begin(); at != m_mapPipeInstanceCtxs.end();) {
    PipeInstanceCtx* const record = (at++)->first;
    if (!record->state->writing || HasOverlappedIoCompleted(*record)) continue;
    LOG_INFO(
        u"CNamedPipeListenerNotificationsJson::SendNotification: a subscriber does not read, "
        u"calling DisconnectAndClose()");
    DisconnectAndClose(record);
  }
}

}  // namespace corvane
