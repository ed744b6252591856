#pragma once
#include <list>

#include "notify/notification_event.h"
#include "pipe/named_pipe_listener_json.h"

namespace corvane {

// The notification pipe: a client's first message makes it a subscriber, whatever the answer, and
// from then on it gets every event. Nobody waits for a subscriber: one whose buffer is still full
// when the next event comes is closed.
//
// Events are written on the listener's thread; the notification thread only hands them over.
class CNamedPipeListenerNotificationsJson
    : public SmartObjEx<CNamedPipeListenerNotificationsJson, CNamedPipeListenerJson>,
      public INotificationProvider {
 public:
  // Events that wait for the listener's thread. Beyond either bound the oldest is dropped; both are
  // only met when the thread is held up.
  static constexpr std::size_t kPendingEvents = 1000;
  static constexpr std::size_t kPendingBytes = 16'000'000;

  WString RespondToPipeMessage(WStringView request, PipeInstanceCtx& record) override;
  // On the notification thread.
  void SendNotification(CNotificationEvent* event) override;

 protected:
  void OnAllWritten() override { DeliverPending(); }

 private:
  static void DeliverRoutine(std::uintptr_t self);
  void DeliverPending();
  void Deliver(WStringView text);
  void CloseStalled();
  bool TakePending(WString* text);
  void BoundPending();

  std::list<WString> m_Pending;  // under the object lock
  std::size_t m_PendingBytes = 0;
};

}  // namespace corvane
