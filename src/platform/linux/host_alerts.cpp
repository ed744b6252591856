#include "platform/linux/host_alerts.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace corvane::platform::linux_host {

namespace {

constexpr std::uint64_t kWakeId = 0;
constexpr std::size_t kMostAtOnce = 64;
constexpr std::chrono::milliseconds kLongestSleep{3'600'000};

epoll_event Event(std::uint64_t id, std::uint32_t events) {
  epoll_event event{};
  event.events = events;
  event.data.u64 = id;
  return event;
}

// What epoll takes: -1 for no limit. A moment that is near is slept to its end.
int Milliseconds(HostTime::RealClock::time_point until) {
  if (until == HostAlerts::kNone) return -1;
  const auto now = HostTime::RealClock::now();
  if (until <= now) return 0;  // however long ago: a difference has room for half of all times
  const auto whole = std::chrono::ceil<std::chrono::milliseconds>(until - now);
  return static_cast<int>(std::min(whole, kLongestSleep).count());
}

}  // namespace

HostAlerts::HostAlerts()
    : m_Epoll(epoll_create1(EPOLL_CLOEXEC)),
      m_Wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      m_bOpen(m_Epoll >= 0 && m_Wake >= 0 && Watch(m_Wake, kWakeId, EPOLLIN)) {}

HostAlerts::~HostAlerts() {
  if (m_Epoll >= 0) close(m_Epoll);
  if (m_Wake >= 0) close(m_Wake);
}

void HostAlerts::Queue(Call call, bool wake) {
  {
    const std::lock_guard lock(m_Mutex);
    m_Calls.push_back(std::move(call));
  }
  if (wake) Wake();
}

void HostAlerts::Forget(const void* owner) {
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Calls, [owner](const Call& call) { return call.owner == owner; });
}

std::size_t HostAlerts::CountCalls() const {
  const std::lock_guard lock(m_Mutex);
  return m_Calls.size();
}

bool HostAlerts::TakeCall(Call* call) {
  const std::lock_guard lock(m_Mutex);
  if (m_Calls.empty()) return false;
  *call = std::move(m_Calls.front());
  m_Calls.pop_front();
  return true;
}

bool HostAlerts::Watch(int descriptor, std::uint64_t id, std::uint32_t events) {
  epoll_event event = Event(id, events);
  return epoll_ctl(m_Epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

bool HostAlerts::Change(int descriptor, std::uint64_t id, std::uint32_t events) {
  epoll_event event = Event(id, events);
  return epoll_ctl(m_Epoll, EPOLL_CTL_MOD, descriptor, &event) == 0;
}

// Fails for a descriptor that is not watched, which is what is wanted.
void HostAlerts::Unwatch(int descriptor) {
  epoll_event unused{};
  epoll_ctl(m_Epoll, EPOLL_CTL_DEL, descriptor, &unused);
}

// A count that is full already wakes as well.
void HostAlerts::Wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(m_Wake, &one, sizeof one);
}

std::vector<HostAlerts::Ready> HostAlerts::Poll(HostTime::RealClock::time_point until) {
  std::array<epoll_event, kMostAtOnce> events{};
  const int count =
      epoll_wait(m_Epoll, events.data(), static_cast<int>(events.size()), Milliseconds(until));
  std::vector<Ready> ready;
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = events[static_cast<std::size_t>(i)];
    if (event.data.u64 != kWakeId) {
      ready.push_back({event.data.u64, event.events});
      continue;
    }
    std::uint64_t total = 0;
    [[maybe_unused]] const ssize_t read = ::read(m_Wake, &total, sizeof total);
  }
  return ready;
}

}  // namespace corvane::platform::linux_host
