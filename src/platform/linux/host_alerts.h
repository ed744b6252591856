#pragma once
#include <sys/epoll.h>

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/linux/host_time.h"

namespace corvane::platform::linux_host {

// What a thread's alertable wait attends to besides kernel objects: the calls that are queued for
// the thread, and descriptors that others watch through it. Safe for use from every thread; Poll
// and TakeCall are its own thread's.
class HostAlerts {
 public:
  struct Call {
    const void* owner = nullptr;  // by which it can be taken back
    std::function<void()> run = {};
  };
  struct Ready {
    std::uint64_t id;
    std::uint32_t events;
  };

  HostAlerts();
  ~HostAlerts();
  HostAlerts(const HostAlerts&) = delete;
  HostAlerts& operator=(const HostAlerts&) = delete;

  bool IsOpen() const { return m_bOpen; }  // else descriptors or memory have run out

  // The thread need not be woken for a call that it queues itself: it counts them before it sleeps.
  void Queue(Call call, bool wake = true);
  void Forget(const void* owner);
  std::size_t CountCalls() const;
  bool TakeCall(Call* call);  // false: there is none

  // `id` is not 0 and no other descriptor's. `events` are epoll's, told as long as they last.
  // False when the system refuses: the descriptor is told of no more, or as before.
  bool Watch(int descriptor, std::uint64_t id, std::uint32_t events);
  bool Change(int descriptor, std::uint64_t id, std::uint32_t events);
  void Unwatch(int descriptor);

  void Wake();
  // Sleeps until a descriptor is ready, Wake, or the moment in life; `none` for no limit.
  static constexpr HostTime::RealClock::time_point kNone = HostTime::RealClock::time_point::max();
  std::vector<Ready> Poll(HostTime::RealClock::time_point until);

 private:
  const int m_Epoll;
  const int m_Wake;
  const bool m_bOpen;
  mutable std::mutex m_Mutex;  // a leaf: nothing is called under it
  std::deque<Call> m_Calls;
};

}  // namespace corvane::platform::linux_host
