#pragma once
#include <cstdint>
#include <list>

#include "foundation/singleton.h"
#include "foundation/thread.h"
#include "foundation/win_event.h"
#include "notify/notification_event.h"

namespace corvane {

// The queue of notification events and the thread that hands each of them to every provider, in the
// order of queueing.
class CNotificationManagerSingleton : public SmartObjEx<CNotificationManagerSingleton, SmartObj<>>,
                                      public CThread<CNotificationManagerSingleton> {
 public:
  // Events that wait for their delivery, and characters of their texts. Beyond either bound the
  // oldest is dropped: clients can post events, and a thread that died takes none.
  static constexpr std::size_t kQueuedEvents = 1000;
  static constexpr std::size_t kQueuedText = 8'000'000;

  static CNotificationManagerSingleton& GetInstance();
  // Drops the instance, which a later use makes anew; after Shutdown, when no other thread of the
  // program runs any more.
  static void DropInstance();
  const char* GetClassName() const override { return "CNotificationManagerSingleton"; }

  void AddProvider(INotificationProvider* provider);
  // Any thread. Waits while a delivery runs. Without a provider the event is dropped at delivery.
  void QueueNotification(CNotificationEvent* event);
  // Ends the thread within `timeoutMs` or gives it up; lets the providers go. What is still queued
  // is not delivered, and later events are dropped.
  void Shutdown(std::uint32_t timeoutMs);

  void RunThreadLoop();

 private:
  class Holder;

  CNotificationManagerSingleton();
  ~CNotificationManagerSingleton() override;
  friend SmartObjEx;
  void WorkThreadProc(CWinEvent& workerEvent);
  void Deliver();
  void DropFront();
  CSmartPointer<CWinEvent> WorkerEvent();

  CCritSec m_ProviderLock{"notification providers", LockRank::kLeaf};  // and the worker event
  std::list<CSmartPointer<INotificationProvider>> m_Providers;
  CSmartPointer<CWinEvent> m_pWorkerEvent;  // null after Shutdown
  CCritSec m_QueueLock{"notification queue", LockRank::kNotifyQueue};
  std::list<CSmartPointer<CNotificationEvent>> m_Queue;
  std::size_t m_QueuedText = 0;
};

// Queues an event of the program itself: state true, stamped now.
void QueueNotification(WStringView nameSpace, WStringView category, WStringView type,
                       WStringView data1 = {}, WStringView data2 = {}, WStringView data3 = {},
                       WStringView data4 = {}, WStringView data5 = {});

}  // namespace corvane
