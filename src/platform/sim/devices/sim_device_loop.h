#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/thread_api.h"

namespace corvane::platform {
class ClockApi;
}

namespace corvane::platform::sim {

class IPcObserver;

// What drives the simulated devices: one lock over all their state, and one thread on which their
// events fall due, in the order of (due time, order of posting), and on which the program is
// notified. It keeps time by the clock of its host alone.
//
// Unless it says otherwise, a function is called with the lock held, that is inside WithLock or
// inside an event.
class SimDeviceLoop {
 public:
  using Work = std::function<void()>;
  using Telling = std::function<void(IPcObserver&)>;

  SimDeviceLoop(ThreadApi& threads, ClockApi& clock);
  ~SimDeviceLoop();  // stops
  SimDeviceLoop(const SimDeviceLoop&) = delete;
  SimDeviceLoop& operator=(const SimDeviceLoop&) = delete;

  // Before Start; null for none.
  void SetObserver(IPcObserver* observer) { m_pObserver = observer; }
  void Start();  // without the lock: time 0 is now
  void Stop();   // without the lock: nothing runs afterwards

  // Runs `f` under the lock, without it before; then tells the observer what happened meanwhile.
  template <class F>
  auto WithLock(F&& f) {
    std::vector<Telling> tellings;
    if constexpr (std::is_void_v<decltype(f())>) {
      {
        Hold hold(m_Threads, m_Lock);
        f();
        tellings.swap(m_Tellings);
      }
      Tell(tellings);
    } else {
      auto result = [&] {
        Hold hold(m_Threads, m_Lock);
        auto inner = f();
        tellings.swap(m_Tellings);
        return inner;
      }();
      Tell(tellings);
      return result;
    }
  }

  // Milliseconds since Start. Never goes back, whatever the host's clock does.
  std::uint64_t NowMs();
  // Wall time, in seconds since 1970.
  std::uint64_t WallSecs();
  // Posts an event; one that lies in the past is due now.
  void At(std::uint64_t dueMs, Work work);
  void In(std::uint64_t delayMs, Work work) { At(NowMs() + delayMs, std::move(work)); }
  // Runs work on the devices' thread with no lock held, after what was given before.
  void Deliver(Work work);
  // Runs `f`, which calls the program back, without the devices' lock. One such call runs at a
  // time.
  template <class F>
  void CallBack(F&& f) {
    Hold hold(m_Threads, m_CallbackLock);
    f();
  }
  // Without the lock: returns once no callback runs, or runs only on the calling thread. Who has
  // left its table before is not called any more.
  void AwaitCallback() {
    CallBack([] {});
  }
  // Tells the observer once the lock is free, on the thread that has it now.
  void Tell(Telling telling) {
    if (m_pObserver) m_Tellings.push_back(std::move(telling));
  }

 private:
  class Hold {
   public:
    Hold(ThreadApi& threads, CRITICAL_SECTION& lock) : m_Threads(threads), m_Lock(lock) {
      threads.EnterCriticalSection(&lock);
    }
    ~Hold() { m_Threads.LeaveCriticalSection(&m_Lock); }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

   private:
    ThreadApi& m_Threads;
    CRITICAL_SECTION& m_Lock;
  };

  static DWORD ThreadProc(void* self);
  void Run();
  void Tell(const std::vector<Telling>& tellings);

  ThreadApi& m_Threads;
  ClockApi& m_Clock;
  IPcObserver* m_pObserver = nullptr;
  CRITICAL_SECTION m_Lock;
  CRITICAL_SECTION m_CallbackLock;  // held around a callback, taken without the other
  HANDLE m_hWake = nullptr;         // an event: the thread's wait is out of date
  HANDLE m_hThread = nullptr;
  bool m_bStarted = false;
  bool m_bStop = false;
  ULONGLONG m_LastTick = 0;
  std::uint64_t m_NowMs = 0;
  std::uint64_t m_Sequence = 0;
  std::map<std::pair<std::uint64_t, std::uint64_t>, Work> m_Works;  // by due time, sequence
  std::deque<Work> m_Deliveries;
  std::vector<Telling> m_Tellings;
};

}  // namespace corvane::platform::sim
