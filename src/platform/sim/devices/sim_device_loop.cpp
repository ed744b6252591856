#include "platform/sim/devices/sim_device_loop.h"

#include <algorithm>

#include "platform/clock_api.h"

namespace corvane::platform::sim {

SimDeviceLoop::SimDeviceLoop(ThreadApi& threads, ClockApi& clock)
    : m_Threads(threads), m_Clock(clock) {
  m_Threads.InitializeCriticalSection(&m_Lock, "simulated devices", 0);
  m_Threads.InitializeCriticalSection(&m_CallbackLock, "simulated devices' callback", 0);
}

SimDeviceLoop::~SimDeviceLoop() {
  Stop();
  m_Threads.DeleteCriticalSection(&m_CallbackLock);
  m_Threads.DeleteCriticalSection(&m_Lock);
}

void SimDeviceLoop::Start() {
  WithLock([this] {
    m_LastTick = m_Clock.GetTickCount64();
    m_bStarted = true;
  });
  m_hWake = m_Threads.CreateEventW(FALSE, FALSE, "simulated devices' wake");
  m_hThread = m_Threads.CreateThread(&ThreadProc, this, "simulated devices", nullptr);
}

void SimDeviceLoop::Stop() {
  if (!m_hThread) return;
  WithLock([this] { m_bStop = true; });
  m_Threads.SetEvent(m_hWake);
  m_Threads.WaitForSingleObject(m_hThread, INFINITE);
  m_Threads.CloseHandle(m_hThread);
  m_Threads.CloseHandle(m_hWake);
  m_hThread = m_hWake = nullptr;
}

// A clock that is set back adds nothing, so that events fall due as if it had stood still.
std::uint64_t SimDeviceLoop::NowMs() {
  const ULONGLONG tick = m_Clock.GetTickCount64();
  if (m_bStarted && tick > m_LastTick) m_NowMs += tick - m_LastTick;
  m_LastTick = tick;
  return m_NowMs;
}

std::uint64_t SimDeviceLoop::WallSecs() {
  constexpr std::uint64_t kUnitsPerSecond = 10'000'000;
  constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;
  FILETIME now;
  m_Clock.GetSystemTimeAsFileTime(&now);
  const std::uint64_t units = std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime;
  return units / kUnitsPerSecond - kSecondsFrom1601To1970;
}

void SimDeviceLoop::At(std::uint64_t dueMs, Work work) {
  const bool first = m_Works.empty() || dueMs < m_Works.begin()->first.first;
  m_Works.emplace(std::pair(dueMs, m_Sequence++), std::move(work));
  if (first && m_hWake) m_Threads.SetEvent(m_hWake);
}

void SimDeviceLoop::Deliver(Work work) {
  m_Deliveries.push_back(std::move(work));
  if (m_hWake) m_Threads.SetEvent(m_hWake);
}

void SimDeviceLoop::Tell(const std::vector<Telling>& tellings) {
  for (const Telling& telling : tellings) telling(*m_pObserver);
}

DWORD SimDeviceLoop::ThreadProc(void* self) {
  static_cast<SimDeviceLoop*>(self)->Run();
  return 0;
}

// What an event has to say is delivered before the next event falls due.
void SimDeviceLoop::Run() {
  constexpr std::uint64_t kLongestWaitMs = 3'600'000;
  for (;;) {
    bool stop = false;
    bool wait = false;
    DWORD waitMs = INFINITE;
    Work delivery;
    WithLock([&] {
      stop = m_bStop;
      if (stop) return;
      if (!m_Deliveries.empty()) {
        delivery = std::move(m_Deliveries.front());
        m_Deliveries.pop_front();
        return;
      }
      const std::uint64_t now = NowMs();
      const auto next = m_Works.begin();
      if (next != m_Works.end() && next->first.first <= now) {
        const Work work = std::move(next->second);
        m_Works.erase(next);
        work();
        return;
      }
      wait = true;
      if (next != m_Works.end()) {
        waitMs = static_cast<DWORD>(std::min(next->first.first - now, kLongestWaitMs));
      }
    });
    if (stop) return;
    if (delivery) delivery();
    if (wait) m_Threads.WaitForSingleObject(m_hWake, waitMs);
  }
}

}  // namespace corvane::platform::sim
