#pragma once
// What HostThreads waits with; nobody else includes it. All of it is touched under the mutex of
// HostThreads, unless a field says otherwise.

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <utility>
#include <vector>

#include "platform/linux/host_alerts.h"
#include "platform/linux/host_threads.h"

namespace corvane::platform::linux_host {

// One thread as the host knows it, whether it was made here or is the process's first.
struct HostThreads::Thread {
  static DWORD NextId() {
    static std::atomic<DWORD> last{0};
    return ++last;
  }

  void Wake() {
    wake.notify_all();
    if (alertable) alerts->Wake();
  }

  const DWORD id = NextId();
  DWORD lastError = ERROR_SUCCESS;     // touched by the thread itself only
  std::atomic<bool> abandoned{false};  // set under the mutex
  std::condition_variable wake;        // with the mutex
  // Under the mutex. Alertable: it sleeps in its alerts, not in the condition.
  std::shared_ptr<HostAlerts> alerts = {};
  bool alertable = false;
};

// An event, a semaphore or a thread, as handles name it. It lives while a handle, a wait or its
// thread does.
struct HostThreads::Object {
  Kind kind = Kind::kEvent;
  bool stays = false;  // a wait leaves it signalled: a manual-reset event, a thread
  LONG count = 0;      // above 0: signalled
  LONG maximum = 1;
  DWORD exitCode = 0;                   // of a thread
  std::shared_ptr<Thread> thread = {};  // null once it has ended
  std::vector<Wait*> waits = {};        // in the order in which they came

  bool IsSignalled() const { return count > 0; }
  void Take() {
    if (!stays) --count;
  }
};

// A wait in progress: it lives on the waiting thread's stack, and every object of it points to it.
class HostThreads::Wait {
 public:
  Wait(Thread& thread, bool all) : m_Thread(thread), m_bAll(all) {}

  void Add(ObjectPtr object) { m_Objects.push_back(std::move(object)); }
  bool Has(const ObjectPtr& object) const {
    return std::ranges::find(m_Objects, object) != m_Objects.end();
  }
  bool IsForThreadEnd() const {
    return m_Objects.size() == 1 && m_Objects[0]->kind == Kind::kThread;
  }

  // Takes the first signalled object, or all of them; whether the wait is over.
  bool TryTake() {
    if (m_bOver) return true;
    const auto signalled = [](const ObjectPtr& object) { return object->IsSignalled(); };
    if (m_bAll) {
      m_bOver = std::ranges::all_of(m_Objects, signalled);
      if (m_bOver)
        std::ranges::for_each(m_Objects, [](const ObjectPtr& object) { object->Take(); });
      return m_bOver;
    }
    const auto first = std::ranges::find_if(m_Objects, signalled);
    if (first == m_Objects.end()) return false;
    (*first)->Take();
    m_Index = static_cast<DWORD>(first - m_Objects.begin());
    return m_bOver = true;
  }

  void Enter() {
    for (const ObjectPtr& object : m_Objects) object->waits.push_back(this);
  }
  void Leave() {
    for (const ObjectPtr& object : m_Objects) std::erase(object->waits, this);
  }
  bool IsOver() const { return m_bOver; }
  DWORD Index() const { return m_Index; }
  Thread& GetThread() const { return m_Thread; }

 private:
  Thread& m_Thread;
  const bool m_bAll;
  bool m_bOver = false;
  DWORD m_Index = 0;
  std::vector<ObjectPtr> m_Objects;
};

}  // namespace corvane::platform::linux_host
