#include "notify/notification_manager.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"

namespace corvane {

namespace {

constexpr std::uint32_t kDestructorMs = 1000;

}  // namespace

// Keeps the manager, which is counted so that a thread that was given up finds it alive.
class CNotificationManagerSingleton::Holder {
 public:
  Holder() : m_pManager(CNotificationManagerSingleton::CreateObject()) {}
  ~Holder() {
    if (m_pManager) m_pManager->Shutdown(kDestructorMs);
  }

  CSmartPointer<CNotificationManagerSingleton> m_pManager;  // null once dropped
};

CNotificationManagerSingleton& CNotificationManagerSingleton::GetInstance() {
  Holder& holder = Singleton<Holder>::GetInstance();
  if (!holder.m_pManager) holder.m_pManager = CNotificationManagerSingleton::CreateObject();
  return *holder.m_pManager;
}

void CNotificationManagerSingleton::DropInstance() {
  Singleton<Holder>::GetInstance().m_pManager.reset();
}

CNotificationManagerSingleton::CNotificationManagerSingleton()
    : SmartObjEx("notification manager"), CThread("notifications") {
  m_pWorkerEvent.CreateObject();
  m_pWorkerEvent->SetDebugName("notifications");
}

CNotificationManagerSingleton::~CNotificationManagerSingleton() { StopThread(kDestructorMs); }

CSmartPointer<CWinEvent> CNotificationManagerSingleton::WorkerEvent() {
  const CCritSecLock lock(m_ProviderLock);
  return m_pWorkerEvent;
}

void CNotificationManagerSingleton::AddProvider(INotificationProvider* provider) {
  const CCritSecLock lock(m_ProviderLock);
  m_Providers.emplace_back(provider);
}

void CNotificationManagerSingleton::QueueNotification(CNotificationEvent* event) {
  const CCritSecLock lock(m_QueueLock);
  const auto workerEvent = WorkerEvent();
  if (!workerEvent) return;
  m_Queue.emplace_back(event);
  m_QueuedText += event->GetTextSize();
  while (m_Queue.size() > kQueuedEvents || m_QueuedText > kQueuedText) {
    LOG_ERROR(
        u"CNotificationManagerSingleton::QueueNotification: too many events wait, %s.%s.%s is "
        u"dropped",
        m_Queue.front()->m_Namespace, m_Queue.front()->m_Category, m_Queue.front()->m_Type);
    DropFront();
  }
  try {
    workerEvent->SetEvent();
  } catch (const Exception& e) {
    // The event stays queued; the next one wakes the thread for both.
    LOG_ERROR(u"CNotificationManagerSingleton::QueueNotification: Exception: %S", e.what());
  }
}

// Takes no queue lock: a thread that is stuck in a delivery holds it.
void CNotificationManagerSingleton::Shutdown(std::uint32_t timeoutMs) {
  m_bRun = false;  // before the signal, so that the thread does not wait again
  if (const auto workerEvent = WorkerEvent()) {
    try {
      workerEvent->SetExitEvent();
    } catch (const Exception& e) {
      LOG_ERROR(u"CNotificationManagerSingleton::Shutdown: Exception: %S", e.what());
    }
  }
  StopThread(timeoutMs);
  std::list<CSmartPointer<INotificationProvider>> providers;
  CSmartPointer<CWinEvent> workerEvent;
  const CCritSecLock lock(m_ProviderLock);
  m_Providers.swap(providers);
  m_pWorkerEvent.Swap(workerEvent);
}

void CNotificationManagerSingleton::RunThreadLoop() {
  ContainedAt("CNotificationManagerSingleton::RunThreadLoop", [this] {
    if (const auto workerEvent = WorkerEvent()) WorkThreadProc(*workerEvent);
  });
}

void CNotificationManagerSingleton::WorkThreadProc(CWinEvent& workerEvent) {
  while (m_bRun) {
    if (workerEvent.WaitOnEvent(platform::INFINITE)) {
      Deliver();
    } else {
      LOG_DEBUG(DBG(47), u"CNotificationManagerSingleton::WorkThreadProc: Got EXIT event...");
    }
  }
}

void CNotificationManagerSingleton::Deliver() {
  std::list<CSmartPointer<INotificationProvider>> providers;
  {
    const CCritSecLock lock(m_ProviderLock);
    providers = m_Providers;
  }
  const CCritSecLock lock(m_QueueLock);
  while (!m_Queue.empty() && m_bRun) {
    for (const auto& provider : providers) provider->SendNotification(m_Queue.front().get());
    DropFront();
  }
}

void CNotificationManagerSingleton::DropFront() {
  m_QueuedText -= m_Queue.front()->GetTextSize();
  m_Queue.pop_front();
}

void QueueNotification(WStringView nameSpace, WStringView category, WStringView type,
                       WStringView data1, WStringView data2, WStringView data3, WStringView data4,
                       WStringView data5) {
  const auto event = CNotificationEvent::CreateObject();
  event->Set(nameSpace, category, type, true);
  event->m_Data1 = data1;
  event->m_Data2 = data2;
  event->m_Data3 = data3;
  event->m_Data4 = data4;
  event->m_Data5 = data5;
  CNotificationManagerSingleton::GetInstance().QueueNotification(event.get());
}

}  // namespace corvane
